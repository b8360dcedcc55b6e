// The search for a trace's own leaf in its thread, by its number.
//
// Threads  Interface thread.
#pragma once

#include "tree/proc/nearest/thread_row.h"
#include "tree/proc/nearest/thread_walks.h"

// Returns the leaf of the trace, or anything else if the leaf is not in the tree. In that case
// `opened` is the block that the trace opened, or null. Walks through a thread without any order,
// and if the trace is of a second run, because a leaf of the first run may end the search before
// it.
NodePosition FindLeafInThread(const ThreadRow& row, const TraceEvent_i& event, ThreadWalks& walks,
                              CExecutionBlock*& opened);
