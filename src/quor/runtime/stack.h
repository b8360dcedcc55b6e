// The call stack of a trace as text.
//
// Shape    Newest frame first, one per line, the library's own frames left out:
//          "function+0x1a (module)", or "module+0x12ab" where no symbol is known.
// Errors   What does not fit is cut at the end of a line.
// Threads  Any, also in a signal handler once Prime has run: names stay mangled there, because
//          making them readable takes memory.
#pragma once

#include <cstddef>

// Loads what a walk of the stack needs; from a thread that may allocate.
void PrimeStack();

// Gives the bytes written. Begins with the frame that `caller`, a return address, leads to.
std::size_t StackText(char* to, std::size_t size, const void* caller);
