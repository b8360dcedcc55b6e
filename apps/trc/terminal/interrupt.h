// Signals: SIGINT is noted and long work ends at its next step; SIGPIPE becomes a failed write.
//
// Threads  CatchSignals once, before other threads start; Interrupted from any thread.
#pragma once

// The first SIGINT is noted, a second one ends the program at once. A SIGINT that was ignored when
// the program started (a background job of a script) stays ignored.
void CatchSignals();
// From here on the same for SIGTERM and SIGHUP, for work that leaves something to clean up.
void CatchEndSignals();
bool Interrupted();
// By the shells' custom: 130 for SIGINT. REQUIRES: Interrupted.
int InterruptedStatus();
