// Makes the texts of the procedure tree's nodes, each time again, and notifies the items of changed
// texts.
//
// A block's label is the text of its first child after the seventh character, so after "Begin: ",
// and the time of the block. The node keeps the part of its label that comes from a trimmed trace.
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
  // Notifies the node's item now, or once at the next SetWaiting. Does nothing without an item.
  void Set(CTraceEvent& node);
  void SetLater(CExecutionBlock& node);
  void SetWaiting();
  // Names that came since the last call may be names of level nodes: notifies their items.
  void SetLevels(CRoot& root);
  // The node will be destroyed.
  void Forget(CExecutionBlock& node);
  void Clear() { m_waiting.clear(); }

  // Call it before a block loses its last child, and before its own trace is removed.
  static void KeepLabel(CExecutionBlock& block);
  static void KeepText(CExecutionBlock& block);

 private:
  const NameMap& m_names;
  ProcItems* m_items;
  std::vector<CExecutionBlock*> m_waiting;
  std::size_t m_namesSeen = 0;
};
