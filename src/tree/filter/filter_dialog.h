// "Filter": one view's filter as a tree of three-state boxes.
//
// The view runs CTraceFilter::MergeDocumentNames first, so that the tree has every id that the
// document has seen, and rebuilds what it shows when DoModal gives kIdOk. Only then did marks
// change.
//
// Owner    Borrows the filter and the document's names, which gain a default entry for an id that
//          they lack. REQUIRES: while the dialog is open nothing takes entries out of the filter.
//          An id that enters it meanwhile has no node and keeps its mark.
// Threads  Interface thread.
#pragma once

#include <memory>

#include "docview/dialog.h"
#include "tree/filter/filter_tree.h"
#include "tree/filter/trace_filter.h"

class CFilterDialog : public CDialog {
 public:
  static constexpr const char* kCaption = "Filter";
  static constexpr const char* kText =
      "Check the types you want to include in the trace output (selecting a node automatically "
      "includes all child nodes):";
  static constexpr unsigned kTree = 1112;  // the control's id
  // The branches that have names below.
  static constexpr const char *kComponents = "All Components", *kCategories = "All Categories",
                              *kApplications = "All Applications", *kThreads = "All Threads";
  // The first of the root's children have fixed nodes; behind them stand those branches.
  static constexpr std::size_t kBranchesWithoutNames = 2;

  CFilterDialog(Host& host, CTraceFilter& filter, NameMap& names);

  // Makes the tree, nothing expanded.
  void OnInitDialog() override;
  // Writes the marks, then ends with kIdOk.
  void OnOK() override;

  // A click on the tree: `node` is the one at that point, null when there is none. It is selected
  // wherever the click lay; one on its box toggles it. True: the control does nothing by itself.
  bool OnTreeClick(FilterNode* node, bool onStateIcon);
  // The keyboard moved the selection. The key that toggles is a click on the selected node's box.
  void OnTreeSelect(FilterNode* node) { m_selected = node; }

  // REQUIRES: OnInitDialog has run.
  FilterTree& Tree() const { return *m_tree; }
  FilterNode* Selected() const { return m_selected; }

 private:
  void InsertNames(FilterNode& parent, std::map<NameId, int>& marks, const char* prefix);
  void InsertThreads(FilterNode& root);
  std::string LabelOf(NameId id);

  std::unique_ptr<FilterTree> m_tree;
  CTraceFilter& m_filter;
  NameMap& m_nameMap;
  FilterNode* m_selected = nullptr;
};
