#include "statistics/stat_table.h"

std::uint32_t StatTable::NumberOf(std::string_view key, std::uint64_t hash) {
  if (const auto known = m_keys.Find(key, hash)) return *known;
  if (m_keys.Size() >= m_bounds.keys || m_keys.Bytes() + key.size() > m_bounds.bytes) {
    m_isFull = true;
    return kOthers;
  }
  m_tallies.emplace_back();
  return m_keys.Insert(key, hash);
}

void StatTable::ClearTallies() {
  m_tallies.assign(m_tallies.size(), {});
  m_others = m_all = {};
}

void StatTable::Join(const StatPart& part) {
  for (const StatPart::Entry& entry : part.entries) {
    const std::uint32_t number = NumberOf(part.KeyOf(entry), entry.hash);
    (number == kOthers ? m_others : m_tallies[number]).Join(entry.tally);
    m_all.Join(entry.tally);
  }
}
