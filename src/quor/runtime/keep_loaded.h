// Keeps a library in memory that an application loads and unloads by itself (dlopen, dlclose): the
// runtime borrows its trace points for ever.
//
// Errors   None: where the C library cannot tell what an address belongs to, nothing is done.
// Threads  Any, but not in a signal handler.
#pragma once

// What `address` lies in stays, whatever the application closes. Nothing for the program itself.
void KeepLoaded(const void* address);
