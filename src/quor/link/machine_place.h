// The place of the one service that traces all accounts of a machine.
//
// Shape    /run/quor/quord.sock, or the path in $QUOR_MACHINE_SOCKET. Beside the socket is the
//          folder of the segments, see segment_folder.h.
// Trust    Only root can make a folder in /run. So the owner of this folder, whoever that is, was
//          chosen by root, and is trusted as root is. The same is asked of any other place: the
//          folder above it must belong to root or to this user, and only its owner may write to it.
// Errors   Nothing and a reason when the place is not there or is not safe.
// Threads  Any.
#pragma once

#include <sys/types.h>

#include <optional>
#include <string>

constexpr const char* kMachineSocket = "/run/quor/quord.sock";

// The owner of the socket's folder.
std::optional<uid_t> OwnerOfMachinePlace(const std::string& socketPath, std::string* why = nullptr);
// True if the place is safe and a socket lies there, whether or not a service answers at it.
bool HasMachineSocket(const std::string& socketPath);
