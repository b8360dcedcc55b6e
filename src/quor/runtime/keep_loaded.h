// Keeps a library in memory that an application loads and unloads (dlopen, dlclose), because the
// runtime borrows its trace points for ever.
//
// Errors   None: if the C library cannot tell which module an address belongs to, nothing is done.
// Threads  Any, but not in a signal handler.
#pragma once

// Keeps the module that contains `address` loaded. Does nothing for the program itself.
void KeepLoaded(const void* address);
