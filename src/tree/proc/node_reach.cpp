#include "tree/proc/node_reach.h"

#include "tree/proc/proc_view.h"

namespace {

constexpr int kThousandthsForSearch = 500;

}  // namespace

bool NodeReach::DoPart() {
  if (!m_arrived) {
    if (m_search.DoPart()) Arrive();
    return m_arrived && m_closed.empty();
  }
  if (m_fill) {
    if (m_fill->DoPart()) m_fill.reset();
    return false;
  }
  if (m_closed.empty()) return true;
  CTraceEvent* const node = m_closed.back();
  // Only once for each node, because an insertion may fail.
  if (!node->treeItem || node == m_filled || !m_view.Lacks(node->treeItem)) {
    m_closed.pop_back();
    return m_closed.empty();
  }
  m_fill.emplace(m_view.FillOf(node->treeItem));
  m_filled = node;
  return false;
}

// From the top down, and not by recursion, because blocks may nest 100,000 deep.
void NodeReach::Arrive() {
  m_arrived = true;
  const NodePosition place = m_search.Place();
  if (!place) return;
  m_node = place.Node();
  if (m_node->treeItem) return;
  for (CTraceEvent* each = m_node->parent; each; each = each->parent) {
    m_closed.push_back(each);
    if (each->treeItem) break;
  }
}

void NodeReach::FinishSearch() {
  ForgetFill();
  while (!m_arrived)
    if (m_search.DoPart()) Arrive();
}

void NodeReach::ForgetFill() {
  m_fill.reset();
  m_filled = nullptr;
}

std::optional<int> NodeReach::Progress() const {
  const auto half = [](const LongWork& work) { return work.Progress().value_or(0) / 2; };
  if (!m_arrived) return half(m_search);
  return kThousandthsForSearch + (m_fill ? half(*m_fill) : 0);
}
