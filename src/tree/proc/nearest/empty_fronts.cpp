#include "tree/proc/nearest/empty_fronts.h"

std::size_t EmptyFronts::CountedOf(const CExecutionBlock& node) const {
  if (m_counts.empty()) return 0;
  const auto counted = m_counts.find(&node);
  return counted == m_counts.end() ? 0 : counted->second;
}

// The block has no content and will never have any.
bool EmptyFronts::IsEmpty(const CExecutionBlock& block) const {
  if (!block.closed) return false;
  return block.children.empty() || CountedOf(block) == block.children.size();
}

std::size_t EmptyFronts::Count(const CExecutionBlock& node) {
  const ChildList& children = node.children;
  const std::size_t counted = CountedOf(node);
  std::size_t position = counted;
  while (position < children.size() && children.BlockAt(position) &&
         IsEmpty(*children.BlockAt(position)))
    ++position;
  if (position > counted) m_counts[&node] = static_cast<std::uint32_t>(position);
  return position;
}

void EmptyFronts::OnErased(const CExecutionBlock& owner, std::size_t position) {
  if (m_counts.empty()) return;
  const auto counted = m_counts.find(&owner);
  if (counted == m_counts.end() || position >= counted->second) return;
  if (--counted->second == 0) m_counts.erase(counted);
}
