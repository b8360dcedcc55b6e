#include "tree/proc/nearest/thread_walks.h"

#include <algorithm>

namespace {

constexpr std::size_t kNodesPerPart = 8192;

}  // namespace

std::optional<NodePosition> ThreadWalks::Through(CExecutionBlock& thread) {
  const auto same = [&](const auto& walk) { return walk.first == &thread; };
  const auto done = std::find_if(m_done.begin(), m_done.end(), same);
  if (done != m_done.end()) return done->second;
  if (m_way == Way::InParts) {
    if (std::none_of(m_left.begin(), m_left.end(), same))
      m_left.emplace_back(&thread, NodeWalk(thread, m_event));
    return std::nullopt;
  }
  m_done.emplace_back(&thread, FindNodeByWalk(thread, m_event));
  return m_done.back().second;
}

void ThreadWalks::DoPart() {
  if (m_left.empty()) return;
  auto& [thread, walk] = m_left.back();
  m_visited += kNodesPerPart;
  if (!walk.Go(kNodesPerPart)) return;
  m_done.emplace_back(thread, walk.Found());
  m_left.pop_back();
}
