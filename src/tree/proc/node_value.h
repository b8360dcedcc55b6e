// What an item of the tree stands for as a field of the filter text.
//
// Threads  Pure.
#pragma once

#include "panes/cell_steps.h"
#include "tree/proc/nodes/nodes.h"

// `event`: the trace that made the node. A block or a leaf stands for its component.
std::optional<CellValue> NodeValueOf(NodeKind kind, const TraceEvent_i& event,
                                     const NameMap& names);
