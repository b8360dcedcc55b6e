// The call stack of a trace as text.
//
// Shape    Newest frame first, one per line, without the library's own frames:
//          "function+0x1a (module)", or "module+0x12ab" if no symbol is known.
// Errors   A text that is too long is cut at the end of a line.
// Threads  Any, also in a signal handler once PrimeStack has run. Names stay mangled there, because
//          demangling allocates memory.
#pragma once

#include <cstddef>

// Loads what walking the stack needs. Call it from a thread that may allocate.
void PrimeStack();

// Returns the bytes written. Begins with the frame that `caller`, a return address, returns to.
std::size_t StackText(char* to, std::size_t size, const void* caller);
