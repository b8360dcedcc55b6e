#include "tree/filter/filter_tree.h"

#include <algorithm>

#include "base/text.h"

FilterNode& FilterNode::Insert(std::string label, int& mark) {
  m_children.push_back(std::make_unique<FilterNode>(std::move(label), mark, this));
  m_children.back()->m_place = m_children.size() - 1;
  return *m_children.back();
}

void FilterNode::SortChildren() {
  const auto before = [](const auto& a, const auto& b) {
    const int order = CompareIgnoringCase(a->m_label, b->m_label);
    return order != 0 ? order < 0 : a->m_label < b->m_label;
  };
  std::stable_sort(m_children.begin(), m_children.end(), before);
  for (std::size_t place = 0; place < m_children.size(); ++place)
    m_children[place]->m_place = place;
}

FilterState FilterNode::Refresh() {
  if (m_state == FilterState::Checked || m_children.empty()) return m_state;
  bool unchecked = false, checked = false, partial = false;
  for (const auto& child : m_children) {
    switch (child->Refresh()) {
      case FilterState::Unchecked:
        unchecked = true;
        break;
      case FilterState::Checked:
        checked = true;
        break;
      case FilterState::Partial:
        partial = true;
        break;
    }
  }
  if (partial || (checked && unchecked))
    m_state = FilterState::Partial;
  else
    m_state = checked ? FilterState::Checked : FilterState::Unchecked;
  return m_state;
}

void FilterNode::SetBelow(FilterState state) {
  m_state = state;
  for (const auto& child : m_children) child->SetBelow(state);
}

void FilterNode::WriteMarks() const {
  m_mark = m_state == FilterState::Checked ? 1 : 0;
  for (const auto& child : m_children) child->WriteMarks();
}

void FilterNode::AddMarks(std::vector<int>& marks) const {
  marks.push_back(m_mark);
  for (const auto& child : m_children) child->AddMarks(marks);
}

// Gives the place behind the last one that it has taken.
const int* FilterNode::SetMarks(const int* marks) const {
  m_mark = *marks++;
  for (const auto& child : m_children) marks = child->SetMarks(marks);
  return marks;
}

std::vector<int> FilterTree::Marks() const {
  std::vector<int> marks;
  m_root.AddMarks(marks);
  return marks;
}

void FilterTree::Toggle(FilterNode& node) {
  node.SetBelow(node.m_state == FilterState::Checked ? FilterState::Unchecked
                                                     : FilterState::Checked);
  // The pass stops at a checked node, so the parents must not be checked.
  for (FilterNode* above = node.m_parent; above; above = above->m_parent)
    above->m_state = FilterState::Unchecked;
  Refresh();
}
