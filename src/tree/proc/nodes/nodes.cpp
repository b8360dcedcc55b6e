#include "tree/proc/nodes/nodes.h"

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

void CExecutionBlock::Clear() {
  CTraceEvent::Clear();
  children.Forget();
  hasTimes = false;
}

CProcessThread::CProcessThread(TraceEvent_i* ofEvent, CExecutionBlock* below, NameId ofId)
    : CExecutionBlock(ofEvent, below), currentBlock(this) {
  id = ofId;
  thread = this;
}

CMachine::CMachine(TraceEvent_i* ofEvent, NameId ofId) : CExecutionBlock(ofEvent, nullptr) {
  id = ofId;
}

void CRoot::Clear() {
  CExecutionBlock::Clear();
  traceCount = 0;
}
