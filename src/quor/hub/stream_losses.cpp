#include "quor/hub/stream_losses.h"

#include <algorithm>
#include <utility>
#include <vector>

void StreamLosses::Add(const std::shared_ptr<Source>& source, std::uint64_t lost,
                       std::uint64_t withheld) {
  const auto [place, isNew] = m_places.try_emplace(source.get());
  if (isNew) place->second = m_lost.insert(m_lost.end(), SourceDelta{source});
  place->second->lost += lost;
  place->second->withheld += withheld;
}

// Stores, for each source in a sum, that its part has arrived, when the sum has arrived. Each note
// lives as long as the source's file is kept.
class StreamLosses::Notes {
 public:
  void Add(const std::shared_ptr<Source>& source) {
    if (m_sources.size() >= m_room) {
      std::erase_if(m_sources, [](const auto& one) { return one.expired(); });
      m_room = std::max(m_room, 2 * m_sources.size());
    }
    m_sources.push_back(source);
  }
  void OnForwarded() {
    for (const auto& one : std::exchange(m_sources, {})) {
      const std::shared_ptr<Source> source = one.lock();
      if (!source) continue;
      source->forwarded = source->serial;
      if (source->noteForwarded) source->noteForwarded(source->forwarded);
    }
  }

 private:
  std::vector<std::weak_ptr<Source>> m_sources;
  std::size_t m_room = 64;
};

void StreamLosses::Forget(const std::shared_ptr<Source>& source, bool spokenOf) {
  const auto place = m_places.find(source.get());
  const std::uint64_t lost = place != m_places.end() ? place->second->lost : 0;
  const std::uint64_t withheld = place != m_places.end() ? place->second->withheld : 0;
  // The sum represents a source of which no trace was ever sent.
  const bool isOwn = source->firstSerial == 0 && lost + withheld == source->serial;
  if (spokenOf || (!isOwn && m_forgotten.size() < kReportedSinglyMax)) {
    m_forgotten.push_back(source);
    return;
  }
  AddToSum(source, lost, withheld);
  if (place == m_places.end()) return;
  m_lost.erase(place->second);
  m_places.erase(place);
}

void StreamLosses::AddToSum(const std::shared_ptr<Source>& source, std::uint64_t lost,
                            std::uint64_t withheld) {
  if (source->serial == 0) return;
  m_sumLost += lost;
  m_sumWithheld += withheld;
  if (m_sum) {
    m_sum->serial += source->serial;
    m_sum->pid.clear();
    if (m_sum->app != source->app) m_sum->app.clear();
    if (m_sum->machine != source->machine) m_sum->machine.clear();
  } else {
    m_sum = std::make_shared<Source>(*source);
    m_sum->way = std::make_shared<char>();
    m_sum->firstSerial = 0;
    m_sum->noteForwarded = nullptr;
  }
  if (source->noteForwarded) NoteSourceOfSum(source);
}

void StreamLosses::NoteSourceOfSum(const std::shared_ptr<Source>& source) {
  if (!m_notes) m_notes = std::make_shared<Notes>();
  m_notes->Add(source);
  // One ledger line reports the whole sum.
  m_sum->noteForwarded = [notes = m_notes](std::uint64_t) { notes->OnForwarded(); };
}

void StreamLosses::ReportSum() {
  const auto sum = std::exchange(m_sum, nullptr);
  m_notes = nullptr;
  const std::uint64_t lost = std::exchange(m_sumLost, 0);
  const std::uint64_t withheld = std::exchange(m_sumWithheld, 0);
  if (!sum) return;
  Add(sum, lost, withheld);
  m_forgotten.push_back(sum);
}

SharedBatch StreamLosses::Take(HubNames& names, bool oneSourceEach, const char* reason) {
  ReportSum();
  BatchBuilder builder(names);
  while (!m_lost.empty() && !builder.IsFull()) {
    const SourceDelta& gap = m_lost.front();
    const std::size_t room =
        gap.source->machine.size() + gap.source->app.size() + gap.source->pid.size() + 1024;
    if (!builder.IsEmpty() && (oneSourceEach || !builder.HasRoom(1024, room))) break;
    if (gap.lost != 0) builder.AppendLoss(gap.source, gap.lost, reason);
    builder.CountWithheld(gap.source, gap.withheld);
    m_places.erase(gap.source.get());
    m_lost.pop_front();
  }
  // After the last ledger line about them.
  for (; m_lost.empty() && !m_forgotten.empty() && !builder.IsFull(); m_forgotten.pop_front())
    builder.AppendForgotten(m_forgotten.front());
  return builder.Seal();
}
