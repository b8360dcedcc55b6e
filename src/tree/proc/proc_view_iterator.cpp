#include "tree/proc/proc_view_iterator.h"

#include <algorithm>

CProcViewIterator::CProcViewIterator(CProcView& view, TreeItem item) : m_view(view), m_item(item) {
  if (const CTraceEvent* const node = m_view.NodeOf(item)) current = node->event;
  m_view.m_iterators.push_back(this);
}

CProcViewIterator::~CProcViewIterator() {
  std::erase(m_view.m_iterators, this);
}

TreeItem CProcViewIterator::Place() const {
  return m_item ? m_item : m_view.Tree().SelectedItem();
}

void CProcViewIterator::Next() {
  const TreeItem place = Place();
  cancelled = place && m_view.Lacks(place) && !m_view.FillWatched(place);
  if (!cancelled) MoveTo(place ? m_view.NextTreeItem(place) : 0);
}

void CProcViewIterator::Prev() {
  const TreeItem place = Place();
  cancelled = place && !FillBefore(place);
  if (!cancelled) MoveTo(place ? m_view.PrevTreeItem(place) : 0);
}

bool CProcViewIterator::HasNext() const {
  const TreeItem place = Place();
  if (!place) return false;
  const TreeControl& tree = m_view.Tree();
  if (m_view.Lacks(place) && !tree.Walk(place, TreeStep::FirstChild)) {
    // One item is enough to answer.
    m_view.FillOf(place).DoPart();
  }
  return tree.Walk(place, TreeStep::FirstChild) || m_view.NextTreeItem(place);
}

bool CProcViewIterator::HasPrev() const {
  const TreeItem place = Place();
  const TreeControl& tree = m_view.Tree();
  return place &&
         (tree.Walk(place, TreeStep::PreviousSibling) || tree.Walk(place, TreeStep::Parent));
}

// False: cancelled.
bool CProcViewIterator::FillBefore(TreeItem place) {
  TreeItem last = m_view.Tree().Walk(place, TreeStep::PreviousSibling);
  for (; last; last = m_view.Tree().Walk(last, TreeStep::LastChild))
    if (m_view.Lacks(last) && !m_view.FillWatched(last)) return false;
  return true;
}

void CProcViewIterator::MoveTo(TreeItem item) {
  m_item = item;
  const CTraceEvent* const node = m_view.NodeOf(item);
  current = node ? node->event : nullptr;
  if (!item) return;
  m_view.Show(item);
  m_view.Follow(current);
}

void CProcViewIterator::OnTracesGone(const CTraceHint& hint) {
  if (std::find(hint.m_events.begin(), hint.m_events.end(), current) != hint.m_events.end())
    current = nullptr;
}

// An item is deleted only together with all items below it.
void CProcViewIterator::OnItemGone(TreeItem item) {
  if (item == m_item) m_item = 0;
}

void CProcViewIterator::OnItemsGone() {
  m_item = 0;
  current = nullptr;
}
