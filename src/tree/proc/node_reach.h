// Looks for the node of a trace, or for the nearest one, and makes the items that are missing on
// the way to it, in parts.
//
// Owner    Borrows the view and the trace. REQUIRES: while it lives nothing is removed from the
//          tree, and before something is added FinishSearch is called.
// Errors   A failed insertion ends it: the node has no item.
// Threads  Interface thread.
#pragma once

#include <optional>
#include <vector>

#include "tree/proc/item_fill.h"
#include "tree/proc/model/node_search.h"

class CProcView;

class NodeReach final : public LongWork {
 public:
  NodeReach(CProcView& view, ProcModel& model, const TraceEvent_i& event)
      : m_view(view), m_search(model, event) {}

  bool DoPart() override;
  std::optional<int> Progress() const override;
  void FinishSearch();
  // Somebody else makes items.
  void ForgetFill();
  // When all is done. Null: none is near.
  CTraceEvent* Node() const { return m_node; }

 private:
  void Arrive();

  CProcView& m_view;
  NodeSearch m_search;
  bool m_arrived = false;  // the search is done
  CTraceEvent* m_node = nullptr;
  std::vector<CTraceEvent*> m_closed;  // nodes whose children have no items, innermost first
  CTraceEvent* m_filled = nullptr;     // the one of them whose children get items
  std::optional<ItemFill> m_fill;
};
