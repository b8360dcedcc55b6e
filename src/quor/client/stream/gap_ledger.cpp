#include "quor/client/stream/gap_ledger.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "base/fail_with.h"

namespace {

constexpr std::size_t kInstanceBytes = 16;
// No source has produced so many traces, and sums of such counts cannot wrap.
constexpr std::uint64_t kSerialMax = std::uint64_t{1} << 56;
// More than a machine traces in a second, including all losses and what a slow stream had not read
// yet.
constexpr std::uint64_t kGapPerSecond = 100'000'000;
constexpr int kSlackSeconds = 60;

}  // namespace

void GapLedger::BeginStream(const std::string& service) {
  ++m_stream;
  m_silentSince = m_lastLedger;
  m_believed = 0;
  if (m_run != 0 && service == m_service) return;
  ++m_run;
  m_service = service;
  m_forgotten = 0;
}

void GapLedger::ForgetOldest() {
  std::erase_if(m_sources, [](const auto& entry) { return entry.second.forgotten; });
  if (m_sources.size() <= kSourcesMax / 2) return;
  std::vector<std::uint64_t> words;
  words.reserve(m_sources.size());
  for (const auto& [instance, source] : m_sources) words.push_back(source.heard);
  const auto middle = words.begin() + static_cast<std::ptrdiff_t>(words.size() / 2);
  std::nth_element(words.begin(), middle, words.end());
  const std::uint64_t oldest = *middle;
  std::erase_if(m_sources, [oldest](const auto& entry) { return entry.second.heard < oldest; });
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
  for (const auto& word : ledger.sources())
    if (!TakeSource(word, gap, why)) return false;
  if (ledger.has_forgotten() && !TakeForgotten(ledger.forgotten(), gap, why)) return false;
  for (const auto& word : ledger.forgotten_sources())
    if (!TakeForgotten(word, why)) return false;
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

bool GapLedger::TakeForgotten(const quor::wire::Ledger::Source& word, std::string* why) {
  if (word.instance().size() != kInstanceBytes || word.serial() > kSerialMax - m_forgotten)
    return FailWith(why, "a ledger's forgotten source cannot be");
  m_forgotten += word.serial();
  const auto known = m_sources.find(word.instance());
  if (known != m_sources.end()) known->second.forgotten = true;
  return true;
}

bool GapLedger::TakeSource(const quor::wire::Ledger::Source& word, std::uint64_t* gap,
                           std::string* why) {
  if (word.instance().size() != kInstanceBytes)
    return FailWith(why, "a ledger's source has no instance");
  if (word.serial() > kSerialMax || word.delivered() > word.serial() ||
      word.lost() > word.serial() - word.delivered())
    return FailWith(why, "a ledger counts more than there was");
  if (m_sources.size() >= kSourcesMax && !m_sources.contains(word.instance())) ForgetOldest();
  const auto [entry, isNew] = m_sources.try_emplace(word.instance());
  Source& source = entry->second;
  source.heard = ++m_words;
  source.run = m_run;
  const bool anew = std::exchange(source.forgotten, false);
  const std::uint64_t began = word.serial() - word.delivered() - word.lost();
  const bool falls = word.delivered() < source.delivered || word.lost() < source.lost;
  if (source.stream != m_stream || anew || (falls && began >= source.serial)) {
    // Compares where the new stream began with where the old one ended. A source that was unknown
    // then began after that; but on the first stream it may be older than this monitor.
    const bool isGap = began > source.serial && (!isNew || m_stream > 1);
    if (isGap && CanHaveBeen(began - source.serial)) *gap += began - source.serial;
    source.delivered = source.lost = 0;
    source.stream = m_stream;
  } else if (word.serial() < source.serial) {
    return FailWith(why, "a ledger's serial falls");
  } else if (falls) {
    return FailWith(why, "a ledger's count falls");
  }
  m_delivered += word.delivered() - source.delivered;
  m_lost += word.lost() - source.lost;
  source.serial = std::max(source.serial, word.serial());
  source.delivered = word.delivered();
  source.lost = word.lost();
  return true;
}
