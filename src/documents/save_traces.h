// Writes traces to a .trc file of their own, with the words of a save that fails.
//
// Shape    Header, then every trace behind the names that it is the first to use: the marks of
//          `names` are cleared at the start.
// Owner    Borrows everything for the one call. What was written stays on the disk.
// Errors   False, and a box has said why.
// Threads  Interface thread.
#pragma once

#include <functional>
#include <string>

#include "docview/host.h"
#include "records/trace_event.h"

// False once a write has failed: nothing more is taken then.
using TraceSink = std::function<bool(const TraceEvent_i& event)>;

// `visit` hands every trace, in order, to the sink.
bool SaveTraces(Host& host, const std::string& path, NameMap& names, BoxIcon icon,
                const std::function<void(const TraceSink& sink)>& visit);
