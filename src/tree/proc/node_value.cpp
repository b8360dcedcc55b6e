#include "tree/proc/node_value.h"

#include "records/trace_event.h"

std::optional<CellValue> NodeValueOf(NodeKind kind, const TraceEvent_i& event,
                                     const NameMap& names) {
  switch (kind) {
    case NodeKind::Leaf:
    case NodeKind::Block:
      return CellValue{WhereField::Component, event.GetComponentName(names)};
    case NodeKind::Thread:
      return CellValue{WhereField::Tid, event.GetTidName(names)};
    case NodeKind::Process:
      return CellValue{WhereField::Pid, event.GetPidName(names)};
    case NodeKind::Application:
      return CellValue{WhereField::Application, event.GetAppName(names)};
    case NodeKind::Machine:
      return CellValue{WhereField::Machine, event.GetMachineName(names)};
    case NodeKind::Root:
      break;
  }
  return std::nullopt;
}
