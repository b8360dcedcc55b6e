#include "tree/proc/nearest/two_runs.h"

#include "tree/proc/nearest/find_node.h"

TwoRuns::TwoRuns(const CProcessThread& thread) {
  for (const CExecutionBlock* open = thread.currentBlock;; open = open->parent) {
    m_before[open] = static_cast<std::uint32_t>(open->children.size());
    if (open == &thread) return;
  }
}

std::size_t TwoRuns::FirstRunOf(const CExecutionBlock& node) const {
  const auto before = m_before.find(&node);
  return before == m_before.end() ? node.children.size() : before->second;
}

CExecutionBlock* TwoRuns::OpenIn(const CExecutionBlock& node) const {
  const std::size_t first = FirstRunOf(node);
  CExecutionBlock* const last = first > 0 ? node.children.BlockAt(first - 1) : nullptr;
  return last && WasOpen(*last) ? last : nullptr;
}

// The nearest open node above has the block, or an ancestor of it, on one side of its bar.
bool TwoRuns::IsOfFirstRun(const CExecutionBlock& block) const {
  const CExecutionBlock* child = &block;
  while (!WasOpen(*child) && !WasOpen(*child->parent)) child = child->parent;
  if (WasOpen(*child)) return true;
  const ChildList& children = child->parent->children;
  const std::size_t above =
      FirstAbove(children, child->sequenceNumber, 0, FirstRunOf(*child->parent));
  return above > 0 && children.BlockAt(above - 1) == child;
}

void TwoRuns::OnErased(const CExecutionBlock& owner, std::size_t position) {
  const auto before = m_before.find(&owner);
  if (before != m_before.end() && position < before->second) --before->second;
}
