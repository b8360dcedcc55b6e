// Waits, below a box, for a filter text that a pane applies in the background.
//
// Threads  Interface thread.
#pragma once

#include <functional>

class TracePane;

// `step` continues the pane's work for about a millisecond. False: the user does not wait; the text
// goes on being applied.
bool WaitForFilter(TracePane& pane, const std::function<void()>& step);
