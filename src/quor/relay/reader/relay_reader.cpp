#include "quor/relay/reader/relay_reader.h"

#include <algorithm>
#include <utility>

namespace {

// No source has produced so many traces. Monitors accept no larger number.
constexpr std::uint64_t kSerialMax = std::uint64_t{1} << 56;

// The parts of the key are texts of strangers, so their lengths stand in front.
std::string KeyOf(const RelayOrigin& origin) {
  return std::to_string(origin.machine.size()) + ' ' + std::to_string(origin.app.size()) + ' ' +
         origin.machine + origin.app + origin.instance;
}

void Add(SourceCounts& sum, const SourceCounts& counts) {
  sum.delivered += counts.delivered;
  sum.lost += counts.lost;
  sum.twice += counts.twice;
  sum.late += counts.late;
}

}  // namespace

void RelayReader::Take(const std::string& machine, const std::string& app, RelayMessage message,
                       Time now) {
  m_now = std::max(m_now, now);
  const Envelope& envelope = message.envelope;
  if (envelope.machine != machine || envelope.app != app)
    return m_user.OnTrouble(RelayTrouble::WrongSubject, machine + "/" + app + " has a message of " +
                                                            envelope.machine + "/" + envelope.app);
  if (envelope.serial > kSerialMax || envelope.delivered > envelope.serial ||
      envelope.lost > envelope.serial - envelope.delivered)
    return m_user.OnTrouble(RelayTrouble::Torn, machine + "/" + app + " counts what cannot be");
  const RelayOrigin origin{machine, app, envelope.instance, envelope.pid};
  Source& source = SourceOf(origin, message.From(), false);
  source.origin.pid = envelope.pid;
  if (!CanBe(machine, source, message)) return;
  Put(source, std::move(message));
  GiveOut(source);
  Bound(source);
  EndIfDone(source);
  LookLater(KeyOf(origin), source);
}

void RelayReader::TakeWord(const std::string& machine, const MachineWord& word, Time now) {
  m_now = std::max(m_now, now);
  if (word.machine != machine)
    return m_user.OnTrouble(RelayTrouble::WrongSubject, machine + " has a word of " + word.machine);
  for (const SourceWord& line : word.sources) {
    const RelayOrigin origin{machine, line.app, line.instance, 0};
    if (line.serial > kSerialMax) {
      m_user.OnTrouble(RelayTrouble::Torn, machine + "/" + line.app + " counts what cannot be");
      continue;
    }
    Source& source = SourceOf(origin, line.serial, true);
    const std::uint64_t settled = source.ledger.Settled();
    if (line.serial > settled && line.serial - settled > CreditOf(machine)) {
      m_user.OnTrouble(RelayTrouble::Torn, machine + "/" + line.app + " counts what cannot be");
      continue;
    }
    source.ledger.Reach(line.serial);
    if (line.ended) source.endsAt = line.serial;
    if (!source.reached && line.serial > settled) source.reached = {m_now, line.serial};
    EndIfDone(source);
    LookLater(KeyOf(origin), source);
  }
}

RelayReader::Source& RelayReader::SourceOf(const RelayOrigin& origin, std::uint64_t begins,
                                           bool byWord) {
  const std::string key = KeyOf(origin);
  const auto known = m_sources.find(key);
  if (known != m_sources.end()) {
    Source& source = known->second;
    source.used = ++m_uses;
    if (source.isProvisional && !byWord && begins < source.began) {
      const std::uint64_t reached = source.began;
      source.ledger = SourceLedger(source.began = source.told = begins);
      source.ledger.Reach(reached);
    }
    if (!byWord) source.isProvisional = false;
    return source;
  }
  if (m_sources.size() >= m_limits.sources) ForgetOldest();
  Source& source = m_sources[key];
  source.origin = origin;
  source.used = ++m_uses;
  const std::optional<std::uint64_t> ended = m_user.Known(origin);
  source.isKnown = ended.has_value();
  source.isProvisional = byWord && !ended;
  source.began = source.told = ended ? *ended : begins;
  source.ledger = SourceLedger(source.began);
  return source;
}

// A message that leaps or overlaps is dropped as a whole. What it covered becomes a loss, unless
// another message comes for it.
bool RelayReader::CanBe(const std::string& machine, const Source& source,
                        const RelayMessage& message) {
  const std::uint64_t settled = source.ledger.Settled(), credit = CreditOf(machine);
  const std::uint64_t from = std::max(settled, message.From()), to = message.envelope.serial;
  const bool leaps = from - settled > credit || message.envelope.lost > credit;
  if (!leaps && (to <= from || !source.held.Contradicts(from, to))) return true;
  m_user.OnTrouble(RelayTrouble::Torn,
                   machine + "/" + source.origin.app + " contradicts its earlier messages");
  return false;
}

void RelayReader::Put(Source& source, RelayMessage message) {
  const std::uint64_t settled = source.ledger.Settled(), serial = message.envelope.serial;
  if (message.From() == serial) {
    // Traces without numbers: no serial tells whether they came before.
    if (serial == settled && !message.envelope.traces.empty()) {
      Begin(source);
      m_user.OnMessage(source.id, message);
    }
    return;
  }
  if (serial <= source.began) {
    if (!source.isKnown) m_counts.late += message.envelope.delivered;
    return;
  }
  if (serial > settled) message.Skip(settled);
  const auto verdict = source.ledger.Take(serial, message.Delivered(), message.Lost());
  if (verdict != SourceLedger::Verdict::Deliver) return;
  m_heldBytes += message.Bytes();
  source.held.Hold(std::move(message), m_now);
}

void RelayReader::Begin(Source& source) {
  source.isProvisional = false;
  if (std::exchange(source.isOpen, true)) return;
  source.id = ++m_ids;
  m_user.OnBegin(source.id, source.origin, source.told);
}

void RelayReader::GiveOut(Source& source) {
  while (source.told < source.ledger.Settled()) {
    const std::optional<RelayMessage> message = source.held.TakeAt(source.told);
    if (!message) break;
    m_heldBytes -= message->Bytes();
    Begin(source);
    LimitLosses(source.origin.machine, message->Lost());
    source.told = message->envelope.serial;
    m_user.OnMessage(source.id, *message);
  }
  if (!source.reached || source.told < source.reached->second) return;
  // A later word may have told of more.
  source.reached.reset();
  if (source.ledger.HasHole()) source.reached = {m_now, source.ledger.High()};
}

void RelayReader::GiveUpHole(Source& source) {
  Begin(source);
  const std::uint64_t lost = source.ledger.GiveUpFirstHole();
  source.told += lost;
  m_user.OnLost(source.id, LimitLosses(source.origin.machine, lost));
  GiveOut(source);
}

void RelayReader::Bound(Source& source) {
  while (source.ledger.HasHole() &&
         (source.held.Bytes() > m_limits.heldOfSource || source.ledger.MustGiveUp()))
    GiveUpHole(source);
  while (m_heldBytes > m_limits.held && !m_looks.empty()) {
    const std::string key = m_looks.begin()->second;
    Source& oldest = m_sources.at(key);
    if (oldest.ledger.HasHole()) GiveUpHole(oldest);
    EndIfDone(oldest);
    LookLater(key, oldest);
  }
}

// Nothing waits for longer than the time of a hold, however its hole gets smaller meanwhile.
void RelayReader::LookLater(const std::string& key, Source& source) {
  std::optional<Time> since;
  if (source.reached) since = source.reached->first;
  if (!source.held.IsEmpty()) since = std::min(since.value_or(Time::max()), source.held.Since());
  if (since) since = *since + m_limits.hold;
  if (since == source.look) return;
  if (source.look) m_looks.erase({*source.look, key});
  if (since) m_looks.insert({*since, key});
  source.look = since;
}

void RelayReader::Look(Time now) {
  m_now = std::max(m_now, now);
  while (!m_looks.empty() && m_looks.begin()->first <= m_now) {
    const std::string key = m_looks.begin()->second;
    Source& source = m_sources.at(key);
    if (source.ledger.HasHole()) GiveUpHole(source);
    EndIfDone(source);
    LookLater(key, source);
  }
}

std::optional<RelayReader::Time> RelayReader::NextLook() const {
  if (m_looks.empty()) return {};
  return m_looks.begin()->first;
}

void RelayReader::EndIfDone(Source& source) {
  if (!source.isOpen || !source.endsAt || source.told < *source.endsAt || source.ledger.HasHole())
    return;
  source.isOpen = false;
  source.endsAt.reset();
  m_user.OnEnd(source.id);
}

void RelayReader::Flush(Source& source) {
  while (source.ledger.HasHole()) GiveUpHole(source);
}

void RelayReader::Finish() {
  for (auto& [key, source] : m_sources) {
    Flush(source);
    EndIfDone(source);
    LookLater(key, source);
  }
}

// One that has ended first.
void RelayReader::ForgetOldest() {
  const auto oldest =
      std::min_element(m_sources.begin(), m_sources.end(), [](const auto& one, const auto& other) {
        const Source &a = one.second, &b = other.second;
        return std::pair(a.isOpen, a.used) < std::pair(b.isOpen, b.used);
      });
  Source& source = oldest->second;
  Flush(source);
  if (source.isOpen) {
    m_user.OnTrouble(RelayTrouble::Forgotten,
                     source.origin.machine + "/" + source.origin.app +
                         " is not followed any more: there are more than " +
                         std::to_string(m_limits.sources) + " sources");
    m_user.OnEnd(source.id);
  }
  if (source.look) m_looks.erase({*source.look, oldest->first});
  Add(m_counts, source.ledger.Counts());
  m_sources.erase(oldest);
}

std::uint64_t& RelayReader::CreditOf(const std::string& machine) {
  if (m_claims.size() > 2 * m_limits.sources && !m_claims.contains(machine)) m_claims.clear();
  const auto [entry, isNew] = m_claims.try_emplace(machine);
  Claims& claims = entry->second;
  if (isNew) claims = {m_limits.lossesAtFirst, m_now};
  const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(m_now - claims.until);
  claims.until += seconds;
  claims.left += static_cast<std::uint64_t>(seconds.count()) * m_limits.lossesPerSecond;
  return claims.left;
}

std::uint64_t RelayReader::LimitLosses(const std::string& machine, std::uint64_t lost) {
  if (lost == 0) return 0;
  std::uint64_t& left = CreditOf(machine);
  const std::uint64_t believed = std::min(lost, left);
  left -= believed;
  return believed;
}

SourceCounts RelayReader::Counts() const {
  SourceCounts counts = m_counts;
  for (const auto& [key, source] : m_sources) Add(counts, source.ledger.Counts());
  return counts;
}

std::optional<EngineMoment> RelayReader::OldestHeld() const {
  std::optional<EngineMoment> oldest;
  for (const auto& [key, source] : m_sources)
    if (!source.held.IsEmpty())
      oldest = std::min(oldest.value_or(EngineMoment::max()), source.held.OldestArrival());
  return oldest;
}
