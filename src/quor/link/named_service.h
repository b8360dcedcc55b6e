// Connecting to a service whose socket the user has named, and which may be another user's.
//
// Errors   -1 and errno.
// Threads  Any.
#pragma once

// Only for clients, which trust nothing that a service sends. A traced program follows the orders
// of its service, and uses ConnectToService.
int ConnectToNamedService(const char* path);
