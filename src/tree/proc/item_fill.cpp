#include "tree/proc/item_fill.h"

namespace {

constexpr std::size_t kChildrenPerPart = 4096;

}  // namespace

bool ItemFill::DoPart() {
  for (std::size_t i = 0; i < kChildrenPerPart; ++i) {
    if (!m_counted) {
      m_counted = m_next == 0 || m_children[m_next - 1]->treeItem;
      if (!m_counted) --m_next;
    } else {
      if (m_next == m_children.size() || !m_items.InsertTreeItem(m_item, *m_children[m_next]))
        return true;
      ++m_next;
    }
  }
  return false;
}

std::optional<int> ItemFill::Progress() const {
  if (!m_counted) return 0;
  return Thousandths(m_next, m_children.size());
}
