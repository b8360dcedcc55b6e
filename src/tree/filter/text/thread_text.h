// What a filter text says of machines, processes and threads.
//
// Threads  Pure.
#pragma once

#include <optional>

#include "tree/filter/text/thread_marks.h"

// Nothing: all are shown. `mayGrow` as in FilterNames: then what comes later is shown as the
// filter would, a process of a machine that is partly shown is not.
std::optional<WhereExpr> ThreadText(const ThreadMarks& machines, bool mayGrow);
