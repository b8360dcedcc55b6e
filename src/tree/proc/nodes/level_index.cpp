#include "tree/proc/nodes/level_index.h"

#include <utility>

CExecutionBlock* LevelIndex::Find(unsigned level, std::uint64_t threadKey) const {
  const auto entry = m_nodes[level].find(KeyAt(level, threadKey));
  return entry == m_nodes[level].end() ? nullptr : entry->second.get();
}

CExecutionBlock& LevelIndex::Add(unsigned level, std::uint64_t threadKey,
                                 std::unique_ptr<CExecutionBlock> node) {
  return *m_nodes[level].emplace(KeyAt(level, threadKey), std::move(node)).first->second;
}

void LevelIndex::Clear() {
  m_slots.fill({});
  for (auto& nodes : m_nodes) nodes.clear();
}
