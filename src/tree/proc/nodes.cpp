#include "tree/proc/nodes.h"

#include <vector>

#include "records/trace_event.h"

int CExecutionBlock::s_live = 0;

void CTraceEvent::Clear() {
  event = nullptr;
  parent = nullptr;
  treeItem = 0;
}

CExecutionBlock::CExecutionBlock(TraceEvent_i* ofEvent, CExecutionBlock* below)
    : CTraceEvent(ofEvent, below) {
  ++s_live;
}

CExecutionBlock::~CExecutionBlock() {
  DestroyChildren();
  --s_live;
}

void CExecutionBlock::Clear() {
  CTraceEvent::Clear();
  DestroyChildren();
  hasTimes = false;
}

// Takes the tree apart from above, so that no destructor finds children.
void CExecutionBlock::DestroyChildren() {
  if (children.empty()) return;
  std::vector<CExecutionBlock*> doomed;
  const auto takeChildrenOf = [&doomed](CExecutionBlock& node) {
    for (std::size_t i = 0; i < node.children.size(); ++i)
      if (CExecutionBlock* const child = node.children.BlockAt(i)) doomed.push_back(child);
    node.children.Clear();
  };
  takeChildrenOf(*this);
  while (!doomed.empty()) {
    CExecutionBlock* const node = doomed.back();
    doomed.pop_back();
    takeChildrenOf(*node);
    delete node;
  }
}

CProcessThread::CProcessThread(TraceEvent_i* ofEvent, CExecutionBlock* below, NameId ofId)
    : CExecutionBlock(ofEvent, below), currentBlock(this) {
  id = ofId;
}

CMachine::CMachine(TraceEvent_i* ofEvent, NameId ofId) : CExecutionBlock(ofEvent, nullptr) {
  id = ofId;
}

void CRoot::Clear() {
  CExecutionBlock::Clear();
  traceCount = 0;
}
