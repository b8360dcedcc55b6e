// The text form of a tree for the export: a line for each item, with "|   " for each level above
// it, then "+- " before a closed item with items below it and "|- " before any other.
//
// Threads  One at a time.
#pragma once

#include <functional>
#include <limits>
#include <string>
#include <string_view>

#include "controls/tree/tree_control.h"
#include "listview/export/export_run.h"
#include "tree/proc/model/proc_model.h"

// Appends a line, without its end.
void AppendTreeLine(std::string& out, int depth, bool closed, std::string_view text);

// The lines of a control's item, 0 for none, and of the visible items below it.
class TreeLines final : public ExportText {
 public:
  TreeLines(const TreeControl& tree, TreeItem item, TreeControlOwner& texts)
      : m_tree(tree), m_texts(texts), m_rows(item ? tree.RowsOf(item) : 0), m_item(item) {}

  bool Next(std::string& out) override;
  std::optional<int> Progress() const override;

 private:
  void Step(bool open);

  const TreeControl& m_tree;
  TreeControlOwner& m_texts;
  const std::int64_t m_rows;
  std::int64_t m_written = 0;
  TreeItem m_item;  // of the next line
  int m_depth = 0;
};

// Receives a line; false ends the visit.
using TreeLineTaker = std::function<bool(int depth, bool closed, const std::string& text)>;

// The lines that a control would show for a node if the first `levels` levels were open.
constexpr int kAllLevels = std::numeric_limits<int>::max();
void VisitNodes(const ProcModel& model, const CTraceEvent& top, int levels,
                const TreeLineTaker& take);
