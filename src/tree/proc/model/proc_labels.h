// The texts of the procedure tree's nodes, made anew each time, and the word to the items that a
// text has changed.
//
// A block's label is the text of its first child behind the seventh character, so behind "Begin: ",
// and the time of the block. What a trimmed trace has given to a label is kept in the node.
//
// Owner    Borrows names and items. Threads  Interface thread.
#pragma once

#include <string>
#include <vector>

#include "records/name_map.h"
#include "tree/proc/nodes/nodes.h"

class ProcItems;

class ProcLabels {
 public:
  ProcLabels(const NameMap& names, ProcItems* items) : m_names(names), m_items(items) {}

  void SetItems(ProcItems& items) { m_items = &items; }
  std::string Of(const CTraceEvent& node) const;
  // Tells of the node's item now; at the next SetWaiting, once. Without an item: nothing.
  void Set(CTraceEvent& node);
  void SetLater(CExecutionBlock& node);
  void SetWaiting();
  // Names that came since the last call may be those of level nodes: tells of the shown ones.
  void SetLevels(CRoot& root);
  // The node is about to go.
  void Forget(CExecutionBlock& node);
  void Clear() { m_waiting.clear(); }

  // Before a block loses its last child, and before its own trace goes.
  static void KeepLabel(CExecutionBlock& block);
  static void KeepText(CExecutionBlock& block);

 private:
  const NameMap& m_names;
  ProcItems* m_items;
  std::vector<CExecutionBlock*> m_waiting;
  std::size_t m_namesSeen = 0;
};
