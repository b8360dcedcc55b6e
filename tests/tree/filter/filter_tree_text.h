// The filter dialog's tree as text: "[x] All Traces", two blanks deeper per level; "[ ]" is
// unchecked, "[-]" partial.
#pragma once

#include <string>

#include "tree/filter/filter_dialog.h"

inline const char* BoxText(FilterState state) {
  if (state == FilterState::Checked) return "[x] ";
  return state == FilterState::Partial ? "[-] " : "[ ] ";
}

inline std::string TreeText(const FilterNode& node, std::size_t depth = 0) {
  std::string text(depth * 2, ' ');
  text += BoxText(node.State()) + node.Label() + "\n";
  for (std::size_t place = 0; place < node.ChildCount(); ++place)
    text += TreeText(node.Child(place), depth + 1);
  return text;
}

// The node at these labels below the root. REQUIRES: it exists.
inline FilterNode& NodeAt(CFilterDialog& dialog, const std::vector<std::string>& labels) {
  FilterNode* node = &dialog.Tree().Root();
  for (const std::string& label : labels) {
    std::size_t place = 0;
    while (node->Child(place).Label() != label) ++place;
    node = &node->Child(place);
  }
  return *node;
}
