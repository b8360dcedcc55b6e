// The window of a trace file without windows, as the view that comes back sees it: list and tree
// over fakes, a line of filter text, and panes that are names.
//
// Owner    Borrows the document, and owns its views of it.
#pragma once

#include <algorithm>
#include <memory>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "listview/rows/trace_view.h"
#include "shell/filterline/frame_filter.h"
#include "shell/views/viewed_frame.h"
#include "support/fake_filter_line.h"
#include "support/fake_row_list.h"
#include "support/fake_tree_control.h"
#include "tree/proc/proc_view.h"

class FakeViewedFrame final : public ViewedFrame {
 public:
  // A window before its list exists.
  FakeViewedFrame() = default;
  // The document is loaded.
  explicit FakeViewedFrame(CTraceDoc& document)
      : m_list(std::make_unique<CTraceView>(
            document, [](RowListOwner& owner) { return std::make_unique<FakeRowList>(owner); })),
        m_tree(std::make_unique<CProcView>(document, [](TreeControlOwner& owner) {
          return std::make_unique<FakeTreeControl>(owner);
        })) {
    m_list->OnInitialUpdate();
  }

  CTraceView* ListView() const override { return m_list.get(); }
  TracePane* ShownPane() const override {
    if (m_treeShown) return m_tree.get();
    return m_list.get();
  }
  FrameFilter& Filter() override { return m_filter; }
  bool IsTreeShown() const override { return m_treeShown; }
  bool ToggleTree() override {
    if (!m_list || std::exchange(m_cancels, false)) return false;
    TracePane& from = *ShownPane();
    TracePane& to = m_treeShown ? static_cast<TracePane&>(*m_list) : *m_tree;
    if (!from.FinishFilter() || !to.SetFilter(from.m_filter, true) || !to.Build()) return false;
    m_treeShown = !m_treeShown;
    return true;
  }
  std::vector<std::string> OpenPanes() const override { return {m_open.begin(), m_open.end()}; }
  std::vector<std::string> OpenPanes(const std::vector<std::string>& names) override {
    if (!m_list) return names;
    std::vector<std::string> unknown = names;
    m_open.clear();
    for (const char* kind : {"Details", "Marks"})
      if (std::erase(unknown, kind) > 0) m_open.insert(kind);
    return unknown;
  }
  void ShowNotice(const std::string& notice) override { m_notice = notice; }

  bool m_cancels = false;  // the user cancels the next toggle
  std::string m_notice;

 private:
  std::unique_ptr<CTraceView> m_list;
  std::unique_ptr<CProcView> m_tree;
  bool m_treeShown = false;
  std::set<std::string> m_open;
  FakeFilterLine* m_line = nullptr;
  FrameFilter m_filter{
      [this](FilterLine& line) { return std::make_unique<FakeFilterLine>(line, m_line); },
      [this] { return ShownPane(); }};
};
