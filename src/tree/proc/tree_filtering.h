// A filter text that is being applied to a procedure tree.
//
// Shape    The tree of the text before stays until the new one is whole. It follows ticks and trims
//          and the user's hands, so a cancel has nothing to bring back. Then the trace that was
//          selected is looked for in the new tree, which is in force already. A second text begins
//          with the tree that is shown; the text before stays the one that was in force.
// Owner    Owned by the view.
// Threads  Interface thread.
#pragma once

#include <memory>
#include <optional>

#include "tree/proc/node_reach.h"
#include "tree/proc/tree_pass.h"

struct TreeFiltering {
  // `utc`: the zone of the shown tree.
  TreeFiltering(const CTraceFilter& filter, bool changed, bool utc)
      : before(filter), changedBefore(changed), utcBefore(utc) {}

  void EndSearch() {
    reach.reset();
    wanted = nullptr;
  }

  CTraceFilter before;  // of the shown tree, until the new one is whole
  const bool changedBefore, utcBefore;
  std::unique_ptr<TreePass> pass;        // null: the new tree is shown
  std::unique_ptr<ProcModel> old;        // the tree that was shown: its end takes a step of its own
  const TraceEvent_i* wanted = nullptr;  // to be selected in the new tree, or the nearest one
  std::optional<NodeReach> reach;
  TreePass::Clock::time_point painted = TreePass::Clock::now();
};
