#include "tree/proc/level_index.h"

CExecutionBlock* LevelIndex::Find(unsigned level, std::uint64_t threadKey) const {
  const auto entry = m_nodes[level].find(KeyAt(level, threadKey));
  return entry == m_nodes[level].end() ? nullptr : entry->second;
}

void LevelIndex::Add(unsigned level, std::uint64_t threadKey, CExecutionBlock& node) {
  m_nodes[level].emplace(KeyAt(level, threadKey), &node);
}

void LevelIndex::Clear() {
  m_slots.fill({});
  for (auto& nodes : m_nodes) nodes.clear();
}
