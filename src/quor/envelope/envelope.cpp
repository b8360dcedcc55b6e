#include "quor/envelope/envelope.h"

#include <zstd.h>

#include <memory>
#include <optional>
#include <unordered_map>

#include "base/fail_with.h"
#include "quor/envelope/envelope.pb.h"
#include "quor/protocol/frames.h"
#include "records/raw_trace.h"
#include "records/trc_walk.h"

namespace {

using quor::relay::EnvelopeMessage;

constexpr std::uint32_t kFormat = 1;
constexpr std::size_t kInstanceBytes = 16;
constexpr int kLevel = 1;

bool IsName(const std::string& name) {
  return name.size() <= kLongestText && name.find('\0') == name.npos;
}

// What holds for an envelope whose traces were not looked at.
bool IsSound(const Envelope& envelope, std::string* why) {
  if (envelope.instance.size() != kInstanceBytes)
    return FailWith(why, "the identity of its source has not 16 bytes");
  if (!IsName(envelope.machine) || !IsName(envelope.app))
    return FailWith(why, "a name that cannot be one");
  if (envelope.delivered > envelope.serial || envelope.lost > envelope.serial - envelope.delivered)
    return FailWith(why, "it counts more traces than there were");
  if (envelope.traces.empty() && envelope.delivered > 0)
    return FailWith(why, "its traces are missing");
  if (envelope.traces.size() > kEnvelopeTracesBytes) return FailWith(why, "it has too many traces");
  return true;
}

// Each name comes once, before what uses it; and all is of one application.
class EnvelopeCheck final : public DataSink {
 public:
  explicit EnvelopeCheck(const Envelope& envelope) : m_envelope(envelope) {}
  void OnName(HubNameId id, std::string_view utf8) override {
    m_isGood &= m_names.try_emplace(id, utf8).second;
    m_last.reset();
  }
  void OnTrace(const std::uint8_t* record, std::size_t) override {
    const RawHubTrace trace(record);
    const auto ids = std::pair(trace.MachineId(), trace.AppId());
    if (m_last != ids)
      m_isGood &= TextOf(ids.first) == m_envelope.machine && TextOf(ids.second) == m_envelope.app;
    m_last = ids;
    if (trace.SequenceNumber() != kNoSequenceNumber) ++m_numbered;
  }
  bool IsGood() const { return m_isGood && m_numbered == m_envelope.delivered; }

 private:
  std::string_view TextOf(HubNameId id) const {
    const auto found = m_names.find(id);
    return found == m_names.end() ? std::string_view() : found->second;
  }

  const Envelope& m_envelope;
  std::unordered_map<HubNameId, std::string_view> m_names;
  std::optional<std::pair<HubNameId, HubNameId>> m_last;
  std::uint64_t m_numbered = 0;
  bool m_isGood = true;
};

bool CheckTraces(const Envelope& envelope, std::string* why) {
  if (envelope.traces.empty()) return true;
  const Bytes all = envelope.traces;
  if (all.size() < kTrcHeaderBytes || std::memcmp(all.data(), kTrcHeader, kTrcHeaderBytes) != 0)
    return FailWith(why, "its traces are no trace file");
  EnvelopeCheck check(envelope);
  return ReadDataBody(all.subspan(kTrcHeaderBytes), check, why) &&
         (check.IsGood() || FailWith(why, "its traces are not what it says"));
}

// A compressor keeps its memory for the next message.
bool Compress(Bytes from, std::string& to) {
  struct Free {
    void operator()(ZSTD_CCtx* context) const { ZSTD_freeCCtx(context); }
  };
  thread_local const std::unique_ptr<ZSTD_CCtx, Free> context(ZSTD_createCCtx());
  if (!context) return false;
  to.resize(ZSTD_compressBound(from.size()));
  const std::size_t size =
      ZSTD_compressCCtx(context.get(), to.data(), to.size(), from.data(), from.size(), kLevel);
  if (ZSTD_isError(size) || size >= from.size()) return false;
  to.resize(size);
  return true;
}

// Memory is taken for what the message says that it has, which is bounded, and what it has must be
// that.
bool Unpack(const EnvelopeMessage& message, std::vector<std::uint8_t>& traces, std::string* why) {
  const std::string& packed = message.traces();
  if (message.unpacked() > kEnvelopeTracesBytes) return FailWith(why, "it has too many traces");
  if (message.encoding() == EnvelopeMessage::NONE) {
    if (packed.size() != message.unpacked())
      return FailWith(why, "its traces have another size than it says");
    traces.assign(packed.begin(), packed.end());
    return true;
  }
  if (message.encoding() != EnvelopeMessage::ZSTD)
    return FailWith(why, "its traces are packed in an unknown way");
  if (ZSTD_getFrameContentSize(packed.data(), packed.size()) != message.unpacked() ||
      ZSTD_findFrameCompressedSize(packed.data(), packed.size()) != packed.size())
    return FailWith(why, "its traces have another size than it says");
  traces.resize(message.unpacked());
  const std::size_t size =
      ZSTD_decompress(traces.data(), traces.size(), packed.data(), packed.size());
  return (!ZSTD_isError(size) && size == message.unpacked()) ||
         FailWith(why, "its traces cannot be unpacked");
}

bool Put(const google::protobuf::MessageLite& from, std::vector<std::uint8_t>& to,
         std::string* why) {
  const std::size_t size = from.ByteSizeLong();
  if (size > kEnvelopeBytes) return FailWith(why, "a message would be too large");
  to.resize(size);
  return from.SerializeToArray(to.data(), static_cast<int>(size)) ||
         FailWith(why, "a message cannot be written");
}

bool Parse(Bytes message, google::protobuf::MessageLite& to, std::string* why) {
  if (message.empty() || message.size() > kEnvelopeBytes)
    return FailWith(why, "it has a size that none has");
  return to.ParseFromArray(message.data(), static_cast<int>(message.size())) ||
         FailWith(why, "it is malformed");
}

}  // namespace

bool WriteEnvelope(const Envelope& envelope, std::vector<std::uint8_t>& message, std::string* why) {
  if (!IsSound(envelope, why)) return false;
  EnvelopeMessage to;
  to.set_format(kFormat);
  to.set_instance(envelope.instance);
  to.set_machine(envelope.machine);
  to.set_app(envelope.app);
  to.set_pid(envelope.pid);
  to.set_serial(envelope.serial);
  to.set_delivered(envelope.delivered);
  to.set_lost(envelope.lost);
  to.set_unpacked(static_cast<std::uint32_t>(envelope.traces.size()));
  if (!envelope.traces.empty() && Compress(envelope.traces, *to.mutable_traces()))
    to.set_encoding(EnvelopeMessage::ZSTD);
  else
    to.mutable_traces()->assign(envelope.traces.begin(), envelope.traces.end());
  return Put(to, message, why);
}

bool ReadEnvelope(Bytes message, Envelope& envelope, std::string* why) {
  EnvelopeMessage from;
  if (!Parse(message, from, why)) return false;
  if (from.format() != kFormat) return FailWith(why, "it is of a newer version");
  envelope = {from.instance(), from.machine(),   from.app(),  from.pid(),
              from.serial(),   from.delivered(), from.lost(), {}};
  if (Unpack(from, envelope.traces, why) && IsSound(envelope, why) && CheckTraces(envelope, why))
    return true;
  envelope = {};
  return false;
}

bool WriteWord(const MachineWord& word, std::vector<std::uint8_t>& message, std::string* why) {
  quor::relay::WordMessage to;
  to.set_format(kFormat);
  to.set_machine(word.machine);
  for (const SourceWord& source : word.sources) {
    auto* const line = to.add_sources();
    line->set_instance(source.instance);
    line->set_app(source.app);
    line->set_serial(source.serial);
    line->set_ended(source.ended);
  }
  return Put(to, message, why);
}

bool ReadWord(Bytes message, MachineWord& word, std::string* why) {
  quor::relay::WordMessage from;
  if (!Parse(message, from, why)) return false;
  if (from.format() != kFormat) return FailWith(why, "it is of a newer version");
  if (!IsName(from.machine())) return FailWith(why, "a name that cannot be one");
  word = {from.machine(), {}};
  for (const auto& line : from.sources()) {
    if (line.instance().size() != kInstanceBytes)
      return FailWith(why, "the identity of a source has not 16 bytes");
    if (!IsName(line.app())) return FailWith(why, "a name that cannot be one");
    word.sources.push_back({line.instance(), line.app(), line.serial(), line.ended()});
  }
  return true;
}
