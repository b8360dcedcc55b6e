// The search for a trace's own leaf by its number, and what of a node's children belongs to which
// run of numbers (thread_orders.h).
//
// Threads  Interface thread.
#pragma once

#include <cstddef>
#include <cstdint>

#include "tree/proc/nearest/thread_walks.h"

// The leaf of the trace in its thread; anything else when it is not in the tree. Then `opened` is
// the block that the trace has opened there, null for none. Walks a thread without any order, and
// where the trace is of a second run: a leaf of the first one may end the search before it.
NodePosition FindLeafInThread(CProcessThread& thread, const TraceEvent_i& event, ThreadWalks& walks,
                              CExecutionBlock*& opened);

// The first of the children [begin, end), whose numbers rise, with one above the wanted one; `end`
// for none. Doubles its steps from the front, where most searches end.
std::size_t FirstAbove(const ChildList& children, std::uint32_t wanted, std::size_t begin,
                       std::size_t end);

// The block came before the second run of its thread, or the thread has one run only: then nothing
// stops a walk on its way to it, as whatever comes before it has smaller numbers.
bool IsOfFirstRun(const CExecutionBlock& block);
// Children of a node that came before the second run, all of them where it was not open then.
// REQUIRES: the node itself came before.
std::size_t SizeOfFirstRun(const CExecutionBlock& node);
// The last child of the first run, if it was open when the second one began: it has children of
// both. REQUIRES: so was the node.
CExecutionBlock* OpenAtRun(const CExecutionBlock& node);
