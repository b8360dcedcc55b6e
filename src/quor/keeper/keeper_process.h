// The keeper: a small process that holds the memory of the traced applications while the service is
// away, so that an application and the service may both die and nothing of what was traced is lost.
//
// Shape    It listens beside the service's socket. The service that connects is told what is held;
//          then it says what to hold and what to forget. While no service is connected, what nobody
//          needs any more is let go of; with the last of it the keeper ends. It also ends when its
//          socket has gone.
// Owner    A grandchild of the service that started it, in a session of its own, with no descriptor
//          of that.
// Errors   StartKeeper gives false and a reason.
#pragma once

#include <string>

// Listens at `path`, which nobody holds who lives, and starts the process.
// REQUIRES: one thread; the caller holds the lock of the folder.
bool StartKeeper(const std::string& path, std::string* why);
