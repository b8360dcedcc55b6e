#include "quor/client/stream/gap_ledger.h"

#include <algorithm>
#include <functional>
#include <utility>
#include <vector>

#include "base/fail_with.h"

namespace {

constexpr std::size_t kInstanceBytes = 16;
// No source has produced so many traces, and sums of such counts cannot wrap.
constexpr std::uint64_t kSerialMax = std::uint64_t{1} << 56;
// Of all sources together: many lines of a lying service could wrap a sum, too.
constexpr std::uint64_t kAllMax = std::uint64_t{1} << 60;
// More than a machine traces in a second, including all losses and what a slow stream had not read
// yet.
constexpr std::uint64_t kGapPerSecond = 100'000'000;
constexpr int kSlackSeconds = 60;

}  // namespace

void GapLedger::BeginStream(const std::string& service, bool isRelay) {
  ++m_stream;
  m_isRelay = isRelay;
  m_silentSince = m_lastLedger;
  m_believed = 0;
  m_mayWithhold = false;
  if (m_run != 0 && service == m_service) return;
  ++m_run;
  m_service = service;
  m_forgotten = 0;
}

void GapLedger::ForgetOldest() {
  std::erase_if(m_sources, [](const auto& entry) { return entry.second.forgotten; });
  if (m_sources.size() <= kSourcesMax / 2) return;
  std::vector<std::uint64_t> lines;
  lines.reserve(m_sources.size());
  for (const auto& [instance, source] : m_sources) lines.push_back(source.lastLine);
  const auto middle = lines.begin() + static_cast<std::ptrdiff_t>(lines.size() / 2);
  std::nth_element(lines.begin(), middle, lines.end());
  const std::uint64_t oldest = *middle;
  std::erase_if(m_sources, [oldest](const auto& entry) { return entry.second.lastLine < oldest; });
}

bool GapLedger::CanHaveBeen(std::uint64_t gap) {
  const auto silent =
      std::chrono::duration_cast<std::chrono::seconds>(Clock::now() - m_silentSince);
  const auto most = static_cast<std::uint64_t>(silent.count() + kSlackSeconds) * kGapPerSecond;
  if (gap > most - std::min(most, m_believed)) return false;
  m_believed += gap;
  return true;
}

bool GapLedger::Take(const quor::wire::Ledger& ledger, std::uint64_t* gap, std::string* why) {
  m_lastLedger = Clock::now();
  for (const auto& line : ledger.sources())
    if (!TakeSource(line, gap, why)) return false;
  if (ledger.has_forgotten() && !TakeForgotten(ledger.forgotten(), gap, why)) return false;
  for (const auto& line : ledger.forgotten_sources())
    if (!TakeForgotten(line, why)) return false;
  return true;
}

// Processes the sum in the first ledger of a stream. Sources that the ledger does not name were
// forgotten since the last stream, if this run of the service knew them at all.
bool GapLedger::TakeForgotten(std::uint64_t sum, std::uint64_t* gap, std::string* why) {
  if (sum > kSerialMax || sum < m_forgotten)
    return FailWith(why, "a ledger's sum of forgotten sources cannot be");
  std::uint64_t known = m_forgotten;
  for (auto& [instance, source] : m_sources) {
    if (source.stream == m_stream || source.run != m_run || source.forgotten) continue;
    source.forgotten = true;
    known += source.serial;
  }
  // On the first stream all earlier traces are older than this monitor.
  if (m_stream > 1 && sum > known && CanHaveBeen(sum - known)) *gap += sum - known;
  m_forgotten = sum;
  return true;
}

bool GapLedger::TakeForgotten(const quor::wire::Ledger::Source& line, std::string* why) {
  if (line.instance().size() != kInstanceBytes || line.serial() > kSerialMax - m_forgotten)
    return FailWith(why, "a ledger's forgotten source cannot be");
  m_forgotten += line.serial();
  const auto known = m_sources.find(line.instance());
  if (known != m_sources.end()) known->second.forgotten = true;
  return true;
}

bool GapLedger::CanBe(const quor::wire::Ledger::Source& line, std::string* why) const {
  if (line.instance().size() != kInstanceBytes)
    return FailWith(why, "a ledger's source has no instance");
  // None of the three may wrap the sum.
  if (line.serial() > kSerialMax || line.delivered() > line.serial() ||
      line.lost() > line.serial() - line.delivered() ||
      line.withheld() > line.serial() - line.delivered() - line.lost())
    return FailWith(why, "a ledger counts more than there was");
  if (line.withheld() > 0 && !m_mayWithhold)
    return FailWith(why, "a ledger withholds traces, and no filter was asked for");
  return true;
}

void GapLedger::Count(const quor::wire::Ledger::Source& line, Source& source) {
  m_delivered += line.delivered() - source.delivered;
  m_withheld += line.withheld() - source.withheld;
  m_lost += line.lost() - source.lost;
  source.serial = std::max(source.serial, line.serial());
  source.delivered = line.delivered();
  source.withheld = line.withheld();
  source.lost = line.lost();
}

void GapLedger::PutKnown(std::size_t most, quor::wire::Subscribe* subscribe) const {
  std::vector<std::pair<std::uint64_t, const std::string*>> latest;
  latest.reserve(m_sources.size());
  for (const auto& [instance, source] : m_sources) latest.push_back({source.lastLine, &instance});
  if (latest.size() > most) {
    const auto end = latest.begin() + static_cast<std::ptrdiff_t>(most);
    std::nth_element(latest.begin(), end, latest.end(), std::greater<>());
    latest.resize(most);
  }
  for (const auto& [line, instance] : latest) {
    auto* const known = subscribe->add_known();
    known->set_instance(*instance);
    known->set_serial(m_sources.at(*instance).serial);
  }
}

bool GapLedger::TakeSource(const quor::wire::Ledger::Source& line, std::uint64_t* gap,
                           std::string* why) {
  if (!CanBe(line, why)) return false;
  if (m_sources.size() >= kSourcesMax && !m_sources.contains(line.instance())) ForgetOldest();
  const auto [entry, isNew] = m_sources.try_emplace(line.instance());
  Source& source = entry->second;
  source.lastLine = ++m_lines;
  source.run = m_run;
  const bool anew = std::exchange(source.forgotten, false);
  const std::uint64_t began = line.serial() - line.delivered() - line.withheld() - line.lost();
  const bool falls = line.delivered() < source.delivered || line.withheld() < source.withheld ||
                     line.lost() < source.lost;
  if (source.stream != m_stream || anew || (falls && began >= source.serial)) {
    // Compares where the new stream began with where the old one ended. A source that was unknown
    // then began after that; but on the first stream it may be older than this monitor.
    const bool isGap = began > source.serial && (!isNew || (m_stream > 1 && !m_isRelay));
    if (isGap && CanHaveBeen(began - source.serial)) *gap += began - source.serial;
    source.delivered = source.withheld = source.lost = 0;
    source.stream = m_stream;
  } else if (line.serial() < source.serial) {
    return FailWith(why, "a ledger's serial falls");
  } else if (falls) {
    return FailWith(why, "a ledger's count falls");
  }
  const std::uint64_t more = (line.delivered() - source.delivered) +
                             (line.withheld() - source.withheld) + (line.lost() - source.lost);
  if (more > kAllMax - (m_delivered + m_withheld + m_lost))
    return FailWith(why, "the ledgers count more than there can be");
  Count(line, source);
  return true;
}
