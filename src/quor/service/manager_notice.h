// What a service tells the service manager that started it (sd_notify): that it serves, that it
// lives, that it ends.
//
// Errors   None: without a manager, or with one that does not listen, nothing is sent.
// Threads  Any.
#pragma once

#include <chrono>

// "READY=1", "WATCHDOG=1", "STOPPING=1".
void NotifyManager(const char* words);
// The time after which the manager ends a service that has not said that it lives; 0: it does not
// ask.
std::chrono::microseconds ManagersPatience();
