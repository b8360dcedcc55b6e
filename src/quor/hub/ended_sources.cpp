#include "quor/hub/ended_sources.h"

#include <algorithm>

std::shared_ptr<Source> EndedSources::Keep(const std::shared_ptr<Source>& source) {
  const bool earlier = source->firstSerial != 0;
  Sources& ended = earlier ? m_earlier : m_ended;
  ended.push_back(source);
  if (ended.size() <= (earlier ? kEarlierKept : kEndedKept)) return nullptr;
  std::shared_ptr<Source> oldest = ended.front();
  ended.pop_front();
  return oldest;
}

std::shared_ptr<Source> EndedSources::Take(const Source& source) {
  for (Sources* const ended : {&m_ended, &m_earlier}) {
    const auto known = std::find_if(ended->begin(), ended->end(), [&source](const auto& entry) {
      return entry->instance == source.instance && entry->account == source.account;
    });
    if (known == ended->end()) continue;
    std::shared_ptr<Source> taken = *known;
    ended->erase(known);
    return taken;
  }
  return nullptr;
}

bool EndedSources::HasAnothers(const Source& source) const {
  for (const Sources* const ended : {&m_ended, &m_earlier})
    for (const auto& entry : *ended)
      if (entry->instance == source.instance && entry->account != source.account) return true;
  return false;
}

void EndedSources::AppendTo(std::vector<std::shared_ptr<Source>>& all) const {
  all.insert(all.end(), m_ended.begin(), m_ended.end());
  all.insert(all.end(), m_earlier.begin(), m_earlier.end());
}

void EndedSources::CountForgotten(const Source& source) {
  m_forgotten += source.serial;
  if (source.account) m_forgottenOf[*source.account] += source.serial;
}

std::uint64_t EndedSources::Forgotten(std::optional<uid_t> ofAccount) const {
  if (!ofAccount) return m_forgotten;
  const auto known = m_forgottenOf.find(*ofAccount);
  return known == m_forgottenOf.end() ? 0 : known->second;
}
