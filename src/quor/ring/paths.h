// Where the service of this user listens, and how it is started on first use.
//
// Shape    $QUOR_SOCKET, else $XDG_RUNTIME_DIR/quor/quord.sock, else /tmp/quor-<uid>/quord.sock.
// Errors   As told per function. In a program that runs with another user's rights (set-uid) the
//          environment is not believed.
// Threads  Any.
#pragma once

#include <string>

// What of the environment decides the rest, copied: a thread beside the application's must not read
// the environment at a time of its own, because the application may be changing it.
struct ServiceEnvironment {
  std::string socket, runtimeFolder, program, autostart, path;
};
ServiceEnvironment ReadServiceEnvironment();

// Where a file lies.
std::string FolderOf(const std::string& path);

std::string ServiceSocketPath(const ServiceEnvironment& environment = ReadServiceEnvironment());

// Makes the folder of the socket if there is none (0700), and checks that it belongs to this user
// and that nobody else may write to it. A folder that $QUOR_SOCKET names is the user's own affair:
// it must exist. False and a reason.
bool PrepareSocketFolder(const std::string& socketPath, std::string* why = nullptr,
                         const ServiceEnvironment& environment = ReadServiceEnvironment());
// The check alone, for who only connects: true also when the folder does not exist.
bool SocketFolderIsSafe(const std::string& socketPath, std::string* why = nullptr,
                        const ServiceEnvironment& environment = ReadServiceEnvironment());

// The program to start: $QUOR_QUORD, else `quord` in the folder of this executable, else on PATH.
// Empty when there is none, or when QUOR_AUTOSTART is 0.
std::string ServiceProgram(const ServiceEnvironment& environment = ReadServiceEnvironment());

// Starts it, detached: a session of its own, no descriptor of ours, nobody's child. True when the
// program was started, not that it listens yet. Takes no lock that a fork could leave behind and
// runs none of the application's fork handlers, and the application gets no signal for a child.
bool StartService(const std::string& program);
