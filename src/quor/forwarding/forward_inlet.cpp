#include "quor/forwarding/forward_inlet.h"

#include <openssl/sha.h>

#include <algorithm>

#include "base/fail_with.h"
#include "quor/log/log.h"
#include "quor/protocol/frames.h"
#include "records/raw_trace.h"

namespace {

constexpr std::size_t kIdBytes = 16;
constexpr std::size_t kNameBytesMax = 16u << 20;
constexpr std::uint64_t kSerialMax = std::uint64_t{1} << 56;
constexpr std::uint64_t kInUse = ~std::uint64_t{0};

// The same after a restart, and different for every forwarder and application of this machine: a
// peer that knows an instance could otherwise spoil its numbers.
std::array<std::uint8_t, kIdBytes> InstanceHere(const std::string& peer,
                                                const std::string& instance) {
  const std::string text = peer + '\0' + instance;
  std::uint8_t digest[SHA256_DIGEST_LENGTH];
  SHA256(reinterpret_cast<const std::uint8_t*>(text.data()), text.size(), digest);
  std::array<std::uint8_t, kIdBytes> here{};
  std::copy_n(digest, kIdBytes, here.begin());
  return here;
}

// The oldest entry of the peer that has the most: a peer with many ids only takes its own place.
template <class Map, class Age>
auto OldestOfMost(Map& map, Age age) {
  auto best = map.begin();
  std::size_t most = 0;
  for (auto entry = map.begin(); entry != map.end();) {
    auto oldest = entry;
    std::size_t count = 0;
    const std::string& peer = entry->first.first;
    for (; entry != map.end() && entry->first.first == peer; ++entry, ++count)
      if (age(entry->second) < age(oldest->second)) oldest = entry;
    if (count > most && age(oldest->second) != kInUse) {
      most = count;
      best = oldest;
    }
  }
  return best;
}

}  // namespace

// The records of one data frame, in order.
struct ForwardInlet::Stream::Frame final : DataSink {
  explicit Frame(SourceNames& to) : names(to) {}
  void OnName(HubNameId id, std::string_view utf8) override {
    if (names.TextBytes() + utf8.size() > kNameBytesMax) return;
    names.Enter(AppNameId{IdNumber(id)}, utf8);  // the other hub's ids are this source's own
  }
  void OnTrace(const std::uint8_t* record, std::size_t bytes) override {
    traces.push_back(Bytes(record, bytes));
    if (RawHubTrace(record).SequenceNumber() != kNoSequenceNumber) ++numbered;
  }
  SourceNames& names;
  std::vector<Bytes> traces;
  std::uint64_t numbered = 0;
};

std::shared_ptr<ForwardInlet::Stream> ForwardInlet::Open(const std::string& peer,
                                                         const std::string& id,
                                                         const std::string& machine,
                                                         std::string* why) {
  if (id.size() != kIdBytes || machine.size() > 255)
    return FailWith(why, "a forwarded stream needs an id of 16 bytes and the name of a machine",
                    nullptr);
  std::shared_ptr<Stream>& entry = m_streams[{peer, id}];
  if (!entry) entry.reset(new Stream(*this, peer, machine));
  std::shared_ptr<Stream> opened = entry;
  opened->m_turn = ++m_uses;
  opened->Break();
  if (m_streams.size() > kStreamsMax) ForgetOldestStream();
  return opened;
}

// Only streams that nobody uses. A stream in use would come again, with frames that it has sent,
// and would not be known. That is worse than one stream more, and connections are limited in
// number.
void ForwardInlet::ForgetOldestStream() {
  const auto oldest = OldestOfMost(m_streams, [](const std::shared_ptr<Stream>& stream) {
    return stream.use_count() == 1 ? stream->m_turn : kInUse;
  });
  if (oldest->second.use_count() == 1) m_streams.erase(oldest);
}

std::shared_ptr<Source> ForwardInlet::SourceFor(const Key& key, std::uint64_t serial,
                                                const std::string& machine) {
  if (m_sources.size() >= kSourcesMax && !m_sources.contains(key)) ForgetOldestSource();
  Known& known = m_sources[key];
  known.used = ++m_uses;
  if (known.source) return known.source;
  Source source;
  source.instance = InstanceHere(key.first, key.second);
  source.machine = machine;
  source.serial = serial;
  known.source = m_hub.AddSource(std::move(source));
  return known.source;
}

void ForwardInlet::ForgetOldestSource() {
  const auto oldest = OldestOfMost(m_sources, [](const Known& known) { return known.used; });
  m_hub.EndSource(oldest->second.source);
  m_sources.erase(oldest);
}

std::uint64_t ForwardInlet::LimitLosses(const std::string& peer, std::uint64_t losses) {
  Claims& claims = m_claims[peer];
  const Clock::time_point now = Clock::now();
  const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(now - claims.until);
  claims.until += seconds;
  claims.left += static_cast<std::uint64_t>(seconds.count()) * kLossesPerSecond;
  const std::uint64_t believed = std::min(losses, claims.left);
  claims.left -= believed;
  if (believed < losses && !std::exchange(claims.reported, true))
    Log(LogLevel::Warning, peer + " tells of " + std::to_string(losses) +
                               " lost traces: more than can have been is not counted");
  return believed;
}

bool ForwardInlet::Stream::TakeData(Bytes body, std::string* why) {
  if (!m_held.empty()) return FailWith(why, "a data frame without a ledger after it");
  if (body.empty()) return FailWith(why, "an empty data frame");
  m_held.assign(body.begin(), body.end());
  return true;
}

bool ForwardInlet::Stream::TakeLedger(const quor::wire::Ledger& ledger, std::string* why) {
  Frame frame(m_names);
  const bool completes = !m_held.empty();
  if (completes && !ReadDataBody(m_held, frame, why)) return false;
  if (completes && ledger.sources_size() != 1)
    return FailWith(why, "a data frame of more than one source");
  for (const auto& line : ledger.sources())
    if (!TakeLine(line, completes ? &frame : nullptr, why)) return false;
  m_inlet.m_hub.Deliver();
  m_held.clear();
  if (completes) ++m_taken;
  return true;
}

bool ForwardInlet::Stream::TakeLine(const quor::wire::Ledger::Source& line, const Frame* frame,
                                    std::string* why) {
  if (line.instance().size() != kIdBytes || line.serial() > kSerialMax ||
      line.delivered() > line.serial() || line.lost() > line.serial() - line.delivered())
    return FailWith(why, "a ledger counts more than there was");
  if (line.withheld() > 0) return FailWith(why, "a forwarded stream withholds traces");
  const bool isNew = !m_counts.contains(line.instance());
  Counts& before = m_counts[line.instance()];
  if (line.delivered() < before.delivered || line.lost() < before.lost ||
      line.delivered() - before.delivered != (frame ? frame->numbered : 0))
    return FailWith(why, "a ledger does not count what came");
  // The serial of the source on this stream before this line.
  const std::uint64_t stands =
      line.serial() - (line.delivered() - before.delivered) - (line.lost() - before.lost);
  const std::shared_ptr<Source> source =
      m_inlet.SourceFor({m_peer, line.instance()}, stands, m_machine);
  // Monitors would accept no larger number, and then no other source of this stream either.
  if (std::max(source->serial, stands) > kSerialMax - (line.serial() - stands))
    return FailWith(why, "its ledgers count more than there can be");
  if (frame && !frame->traces.empty()) {
    const RawAppTrace first(frame->traces.front().data());
    source->machine = m_names.TextOf(first.MachineId());
    source->app = m_names.TextOf(first.AppId());
    source->pid = m_names.TextOf(first.PidId());
  }
  Hub& hub = m_inlet.m_hub;
  const bool leaps = isNew || stands > before.serial;
  if (leaps && stands > source->serial)
    hub.Lose(source, m_inlet.LimitLosses(m_peer, stands - source->serial),
             "the trace service of " + m_machine + " ended before it could hand them on");
  if (frame)
    for (const Bytes trace : frame->traces) hub.Take(source, m_names, trace, {});
  // A trace already reports this loss.
  hub.CountLost(source, m_inlet.LimitLosses(m_peer, line.lost() - before.lost));
  before = {line.delivered(), line.lost(), line.serial()};
  return true;
}
