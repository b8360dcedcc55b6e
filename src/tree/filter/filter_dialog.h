// "Filter": one view's filter as a tree of three-state boxes.
//
// The view calls CTraceFilter::MergeDocumentNames first, so that the tree has every id in the
// document. If DoModal returns kIdOk the marks may have changed, and the view rebuilds its rows.
//
// Owner    Borrows the filter and the document's names. An id without a name gets an empty entry in
//          the names. REQUIRES: while the dialog is open nothing removes entries from the filter.
//          An id that is added meanwhile has no node and keeps its mark.
// Threads  Interface thread.
#pragma once

#include <functional>
#include <memory>

#include "docview/dialogs/dialog.h"
#include "tree/filter/filter_tree.h"
#include "tree/filter/trace_filter.h"

class CFilterDialog : public CDialog {
 public:
  static constexpr const char* kCaption = "Filter";
  const char* HelpTopic() const override { return "filter"; }
  static constexpr const char* kText =
      "Check the types you want to include in the trace output (selecting a node automatically "
      "includes all child nodes):";
  static constexpr unsigned kTree = 1112;  // the control's id
  // "As Text": the button, and what DoModal returns then.
  static constexpr int kIdAsText = 1222;
  // The branches with names below them.
  static constexpr const char *kComponents = "All Components", *kCategories = "All Categories",
                              *kApplications = "All Applications", *kThreads = "All Threads";
  // The first children of the root have fixed nodes; those branches come after them.
  static constexpr std::size_t kBranchesWithoutNames = 2;

  CFilterDialog(Host& host, CTraceFilter& filter, NameMap& names);

  // Takes what the tree shows as a text. False and a reason: the dialog says it and stays. Without
  // one there is no such button.
  std::function<bool(const CTraceFilter& chosen, std::string* why)> m_takeAsText;

  // Makes the tree, with nothing expanded.
  void OnInitDialog() override;
  // Writes the marks, then ends with kIdOk.
  void OnOK() override;
  // Hands out what OK would leave, then ends with kIdAsText. The marks stay.
  void OnAsText();

  // A click on the tree: `node` is the node at that point, or null. It is selected wherever in its
  // row the click was; a click on its box also toggles it. Returns true: the control must do
  // nothing.
  bool OnTreeClick(FilterNode* node, bool onStateIcon);
  // The keyboard moved the selection. The toggle key counts as a click on the selected node's box.
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
