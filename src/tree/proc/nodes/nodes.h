// The nodes of the procedure tree: machine, application, process, thread, and below a thread the
// blocks and the traces in them.
//
// Shape    A leaf (exactly a CTraceEvent) takes 32 bytes, because a large file has millions of
//          them.
// Owner    The model owns the nodes, in stores that free all nodes of a tree at once (leaf_store.h,
//          block_store.h, level_index.h). So no destructor or Clear recurses, and 100,000 nested
//          blocks need no stack.
// Trims    `event` is null in a level node or block whose trace has been trimmed. The node has a
//          copy of what is still needed of that trace. A leaf is removed together with its trace,
//          so its `event` is always valid.
// Threads  Interface thread.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "controls/tree/tree_item.h"
#include "records/name_map.h"
#include "tree/proc/nodes/child_list.h"

class TraceEvent_i;
class CExecutionBlock;
class CProcessThread;

enum class NodeKind : std::uint8_t { Leaf, Block, Thread, Process, Application, Machine, Root };

// The node of one trace, and the base of all.
class CTraceEvent {
 public:
  CTraceEvent() = default;
  CTraceEvent(TraceEvent_i* ofEvent, CExecutionBlock* below) : event(ofEvent), parent(below) {}
  CTraceEvent(const CTraceEvent&) = delete;
  virtual ~CTraceEvent() = default;
  virtual void Clear();
  // The exact type of the node.
  virtual NodeKind Kind() const { return NodeKind::Leaf; }

  TraceEvent_i* event = nullptr;      // borrowed; of a level node or block: the trace that made it
  CExecutionBlock* parent = nullptr;  // null: a machine or the root
  TreeItem treeItem = 0;
};

// A node with children.
class CExecutionBlock : public CTraceEvent {
 public:
  CExecutionBlock() { ++s_live; }
  CExecutionBlock(TraceEvent_i* ofEvent, CExecutionBlock* below);
  ~CExecutionBlock() override { --s_live; }
  void Clear() override;
  NodeKind Kind() const override { return NodeKind::Block; }

  // Tic counts of the first leaf and of the latest leaf below this node; these may be removed by
  // now. Never set in applications, machines and the root. While a batch is filed, `lastTrace` does
  // not include the blocks that are open inside this one.
  std::uint64_t firstTrace = 0;
  std::uint64_t lastTrace = 0;
  std::int64_t duration = 0;  // lastTrace - firstTrace, in tics
  ChildList children;
  CProcessThread* thread = nullptr;  // the thread of a block; a thread itself
  // Copied from the trace that made the node.
  std::uint32_t sequenceNumber = 0;
  NameId id = 0;  // of a level node: its id among its siblings
  // The model's bookkeeping.
  bool hasTimes = false;      // firstTrace and lastTrace are set
  bool closed = false;        // its End has come: nothing is added below it any more
  bool takenOut = false;      // removed from `children` for a hidden trace; its item stays
  bool unreachable = false;   // it or a node above it is taken out
  bool waiting = false;       // for its label
  std::uint32_t hanging = 0;  // nodes that were removed from `children` and still live
  struct KeptTexts {
    std::string own;    // the text of the node's trace, after that trace was trimmed
    std::string label;  // the label's text, when no child is left to provide it
  };
  std::unique_ptr<KeptTexts> kept;
  static int s_live;  // the number of nodes of all kinds
};

class CProcessThread : public CExecutionBlock {
 public:
  CProcessThread(TraceEvent_i* ofEvent, CExecutionBlock* below, NameId ofId);
  NodeKind Kind() const override { return NodeKind::Thread; }
  // The block for the thread's next trace; unused in applications and processes: the node itself.
  CExecutionBlock* currentBlock;
  bool touched = false;         // the model must still update its times
  std::uint32_t searchRow = 0;  // its index in the rows of tree/proc/nearest
};

class CProcess : public CProcessThread {
 public:
  using CProcessThread::CProcessThread;
  NodeKind Kind() const override { return NodeKind::Process; }
};

class CApplication : public CProcess {
 public:
  using CProcess::CProcess;
  NodeKind Kind() const override { return NodeKind::Application; }
};

class CMachine : public CExecutionBlock {
 public:
  CMachine(TraceEvent_i* ofEvent, NameId ofId);
  NodeKind Kind() const override { return NodeKind::Machine; }
};

class CRoot : public CExecutionBlock {
 public:
  void Clear() override;
  NodeKind Kind() const override { return NodeKind::Root; }
  int traceCount = 0;  // traces added since the last clear, including removed ones; wraps
};

inline CExecutionBlock* ChildList::BlockAt(std::size_t position) const {
  return IsLeaf(position) ? nullptr : static_cast<CExecutionBlock*>((*this)[position]);
}
