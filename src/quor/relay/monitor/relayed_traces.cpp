#include "quor/relay/monitor/relayed_traces.h"

#include <openssl/sha.h>

#include <algorithm>
#include <utility>

#include "quor/protocol/frames.h"
#include "records/raw_trace.h"
#include "records/trc_walk.h"

namespace {

using Instance = std::array<std::uint8_t, 16>;

// Monitors accept no larger number.
constexpr std::uint64_t kSerialMax = std::uint64_t{1} << 56;
constexpr std::size_t kKnownMax = 65536;
constexpr std::size_t kNameBytesMax = 16u << 20;  // of one source
constexpr std::chrono::seconds kBetweenTroubles{10};

// Machines and applications are under the control of whoever may publish there. So none of them
// can take the identity of a source of another one.
Instance InstanceOf(const RelayOrigin& origin) {
  const std::string text = std::to_string(origin.machine.size()) + ' ' +
                           std::to_string(origin.app.size()) + ' ' + origin.machine + origin.app +
                           origin.instance;
  std::uint8_t digest[SHA256_DIGEST_LENGTH];
  SHA256(reinterpret_cast<const std::uint8_t*>(text.data()), text.size(), digest);
  Instance instance{};
  std::copy_n(digest, instance.size(), instance.begin());
  return instance;
}

// Does a trace of the message report a loss?
class Reports final : public DataSink {
 public:
  explicit Reports(Bytes body) { ReadDataBody(body, *this, nullptr); }
  void OnName(HubNameId, std::string_view) override {}
  void OnTrace(const std::uint8_t* record, std::size_t) override {
    m_any = m_any || RawHubTrace(record).SequenceNumber() == kNoSequenceNumber;
  }
  bool Any() const { return m_any; }

 private:
  bool m_any = false;
};

}  // namespace

// The records of one message, behind those that were accounted for before.
class RelayedTraces::Records final : public DataSink {
 public:
  Records(Hub& hub, Open& to, const RelayMessage& message)
      : m_hub(hub),
        m_to(to),
        m_left(message.skipped),
        m_lost(message.Lost()),
        m_skips(message.skipped + message.skippedLost > 0) {}
  void OnName(HubNameId id, std::string_view utf8) override {
    const AppNameId own{IdNumber(id)};  // of the message, and of its source here
    if (!m_to.names.Knows(own) || m_to.names.TextOf(own) != utf8) m_to.names.Enter(own, utf8);
  }
  void OnTrace(const std::uint8_t* record, std::size_t bytes) override {
    const bool isNumbered = RawHubTrace(record).SequenceNumber() != kNoSequenceNumber;
    if (m_left > 0 && isNumbered) {
      --m_left;
      return;
    }
    // The reports in front of the first trace that counts are of losses that were told.
    if (m_skips && !isNumbered) return;
    m_skips = false;
    m_hub.CountLost(m_to.source, isNumbered ? 0 : std::exchange(m_lost, 0));
    m_hub.Take(m_to.source, m_to.names, Bytes(record, bytes), {});
  }
  // That nothing has reported.
  void TellLoss() {
    if (m_lost > 0)
      m_hub.Lose(m_to.source, std::exchange(m_lost, 0),
                 "they were lost before they could be stored");
  }

 private:
  Hub& m_hub;
  Open& m_to;
  std::uint64_t m_left, m_lost;
  bool m_skips;
};

RelayedTraces::RelayedTraces(Hub& hub, const std::string& where) : m_hub(hub) {
  Source source;
  source.machine = where;
  source.app = "Quor";
  m_notes = m_hub.AddSource(std::move(source));
}

void RelayedTraces::SetKnown(const quor::wire::Subscribe& subscribe) {
  for (const auto& line : subscribe.known()) {
    Instance instance{};
    if (line.instance().size() != instance.size() || line.serial() > kSerialMax) continue;
    std::copy(line.instance().begin(), line.instance().end(), instance.begin());
    if (instance != m_notes->instance) Remember(instance, line.serial());
  }
}

void RelayedTraces::Remember(const Instance& instance, std::uint64_t serial) {
  if (m_known.size() < kKnownMax || m_known.contains(instance)) m_known[instance] = serial;
}

void RelayedTraces::Note(const std::string& text) {
  m_hub.Lose(m_notes, 0, text);
}

void RelayedTraces::NoteTrouble(std::uint64_t messages, const std::string& what) {
  m_troubles += messages;
  m_trouble = what;
  Look(m_now);
}

void RelayedTraces::Look(RelayMessage::Time now) {
  m_now = now;
  if (m_troubles == 0 || (m_toldAt && now - *m_toldAt < kBetweenTroubles)) return;
  m_toldAt = now;
  const std::uint64_t messages = std::exchange(m_troubles, 0);
  Note((messages == 1 ? "A stored message was"
                      : std::to_string(messages) + " stored messages were") +
       " not taken: " + m_trouble);
}

std::optional<std::uint64_t> RelayedTraces::Known(const RelayOrigin& origin) {
  const auto known = m_known.find(InstanceOf(origin));
  if (known == m_known.end()) return {};
  return known->second;
}

void RelayedTraces::OnBegin(std::uint64_t id, const RelayOrigin& origin, std::uint64_t serial) {
  Source source;
  source.instance = InstanceOf(origin);
  source.machine = origin.machine;
  source.app = origin.app;
  source.pid = origin.pid == 0 ? std::string() : std::to_string(origin.pid);
  source.serial = serial;
  m_open[id].source = m_hub.AddSource(std::move(source));
}

void RelayedTraces::OnMessage(std::uint64_t id, const RelayMessage& message) {
  Open& to = m_open.at(id);
  const Envelope& envelope = message.envelope;
  if (to.source->pid.empty() && envelope.pid != 0) to.source->pid = std::to_string(envelope.pid);
  if (to.names.TextBytes() > kNameBytesMax) to.names = SourceNames();
  const Bytes traces = envelope.traces;
  const Bytes body = traces.size() > kTrcHeaderBytes ? traces.subspan(kTrcHeaderBytes) : Bytes();
  Records records(m_hub, to, message);
  // In front: a publisher lost them before it got the traces.
  if (message.Lost() > 0 && !Reports(body).Any()) records.TellLoss();
  ReadDataBody(body, records, nullptr);
  records.TellLoss();  // the report is of traces that were accounted for before
}

void RelayedTraces::OnLost(std::uint64_t id, std::uint64_t lost) {
  if (lost > 0) m_hub.Lose(m_open.at(id).source, lost, "not in the stream");
}

void RelayedTraces::OnEnd(std::uint64_t id) {
  const auto open = m_open.find(id);
  const std::shared_ptr<Source> source = open->second.source;
  Remember(source->instance, source->serial);
  m_open.erase(open);
  m_hub.EndSource(source);
}

void RelayedTraces::OnTrouble(RelayTrouble trouble, const std::string& what) {
  if (trouble == RelayTrouble::Forgotten)
    Note(what);
  else
    NoteTrouble(1, what);
}
