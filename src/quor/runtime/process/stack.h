// The call stack of a trace as text: where each frame is, for a reader that finds the names.
//
// Shape    Newest frame first, one per line, without the library's own frames:
//
//            /usr/bin/orders+0x12ab [0a1b...]   the module's path, the address in its file, and in
//                                               brackets the module's build id, or "no build id"
//            orders+0x12f0                      the last module before this one that has this name
//            libc.so.6+0x3c050 (interrupted)    by a signal, before the instruction that is there;
//                                               the other addresses are those of returns
//            0x7f0123456789                     code that belongs to no module
//            (more frames)                      the last line, if not all frames have room
//
//          A control character of a path is "?".
// Threads  Any, also in a signal handler once PrimeStack has run: nothing is allocated or locked,
//          and no symbol is looked up.
#pragma once

#include <cstddef>

// Loads what walking the stack needs. Call it from a thread that may allocate.
void PrimeStack();

// Returns the bytes written. Begins with the frame that `caller`, a return address, returns to.
std::size_t StackText(char* to, std::size_t size, const void* caller);
