// Folders below /dev/shm for segments whose socket lies on a disk, and the links that lead there.
//
// Shape    /dev/shm/quor-UID-RANDOM. The link "segments" beside the socket names it.
// Errors   See each function; errno says why.
// Threads  Any. Processes that make the same folder at the same time hold a lock.
#pragma once

#include <sys/types.h>

#include <cstdint>
#include <string>

constexpr const char* kSegments = "segments";

bool LiesInMemory(int folder);
// After a folder did not open. True if it no longer exists (after a restart of the machine, say),
// if others may enter it, or if it is not a folder in memory. Any other error says nothing about
// it.
bool IsDamaged(int error);
std::string Hex(std::uint64_t number);
// What the names of this user's folders there begin with.
std::string OwnInMemory();
// Makes a folder of this mode in memory, and the link to it in the folder `runtime`. If two
// processes do this at the same time, the second one uses the folder of the first.
void LinkToMemory(int runtime, mode_t mode);
// A process that makes a folder holds the lock for less than a millisecond. Any longer holder must
// not delay the traced thread or the service.
bool LockSoon(int runtime);
// Removes the folder and the link to it, if the folder is this user's and is empty.
void RemoveEmptyMemory(int runtime);
