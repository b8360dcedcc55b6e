// Signals: SIGINT is noted and long work ends at its next step; SIGPIPE becomes a failed write.
//
// Threads  CatchSignals once, before other threads start; Interrupted from any thread.
#pragma once

// The first SIGINT is noted, a second one ends the program at once. A SIGINT that was ignored when
// the program started (a background job of a script) stays ignored.
void CatchSignals();
bool Interrupted();
