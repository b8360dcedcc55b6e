#include "quor/hub/stream_gap.h"

#include <utility>

void StreamGap::Add(const std::shared_ptr<Source>& source, std::uint64_t lost) {
  const auto [place, isNew] = m_places.try_emplace(source.get());
  if (isNew) place->second = m_lost.insert(m_lost.end(), {source, 0, 0});
  place->second->lost += lost;
}

void StreamGap::Forget(const std::shared_ptr<Source>& source, bool spokenOf) {
  const auto place = m_places.find(source.get());
  const std::uint64_t lost = place != m_places.end() ? place->second->lost : 0;
  // The sum stands for a source of which nothing but losses was ever told.
  if (spokenOf || source->firstSerial != 0 || lost != source->serial) {
    m_forgotten.push_back(source);
    return;
  }
  AddToSum(*source);
  if (place == m_places.end()) return;
  m_lost.erase(place->second);
  m_places.erase(place);
}

void StreamGap::AddToSum(const Source& source) {
  if (source.serial == 0) return;
  if (!m_sum) {
    m_sum = std::make_shared<Source>(source);
    m_sum->way = std::make_shared<char>();
    m_sum->noteHandedOn = nullptr;
    return;
  }
  m_sum->serial += source.serial;
  m_sum->pid.clear();
  if (m_sum->app != source.app) m_sum->app.clear();
  if (m_sum->machine != source.machine) m_sum->machine.clear();
}

SharedBatch StreamGap::Take(HubNames& names, bool oneSourceEach, const char* reason) {
  if (const auto sum = std::exchange(m_sum, nullptr)) {
    Add(sum, sum->serial);
    m_forgotten.push_back(sum);
  }
  BatchBuilder builder(names);
  while (!m_lost.empty() && !builder.IsFull()) {
    const SourceDelta& gap = m_lost.front();
    const std::size_t room =
        gap.source->machine.size() + gap.source->app.size() + gap.source->pid.size() + 1024;
    if (!builder.IsEmpty() && (oneSourceEach || !builder.HasRoom(1024, room))) break;
    if (gap.lost != 0) builder.AppendLoss(gap.source, gap.lost, reason);
    m_places.erase(gap.source.get());
    m_lost.pop_front();
  }
  // Behind the last word on them.
  if (m_lost.empty())
    for (const auto& source : std::exchange(m_forgotten, {})) builder.AppendForgotten(source);
  return builder.Seal();
}
