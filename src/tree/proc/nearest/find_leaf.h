// The search for a trace's own leaf in its thread, by its number.
//
// Threads  Interface thread.
#pragma once

#include "tree/proc/nearest/thread_row.h"
#include "tree/proc/nearest/thread_walks.h"

// The leaf of the trace; anything else when it is not in the tree. Then `opened` is the block that
// the trace has opened there, null for none. Walks a thread without any order, and where the trace
// is of a second run: a leaf of the first one may end the search before it.
NodePosition FindLeafInThread(const ThreadRow& row, const TraceEvent_i& event, ThreadWalks& walks,
                              CExecutionBlock*& opened);
