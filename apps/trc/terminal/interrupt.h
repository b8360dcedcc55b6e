// Signals: SIGINT is stored and long work ends at its next step; SIGPIPE becomes a failed write.
//
// Threads  CatchSignals once, before other threads start; Interrupted from any thread.
#pragma once

// The first SIGINT is stored, a second one ends the program immediately. If SIGINT was ignored when
// the program started (a background job of a script) it stays ignored.
void CatchSignals();
// From now on does the same for SIGTERM and SIGHUP, for work that must be cleaned up.
void CatchEndSignals();
bool Interrupted();
// By the convention of shells: 130 for SIGINT. REQUIRES: Interrupted.
int InterruptedStatus();
