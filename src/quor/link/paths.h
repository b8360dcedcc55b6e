// Which service a program meets, where it listens, and how it is started on first use.
//
// Shape    The first of these. The same for the library, trc, tessera and the commands of quord:
//            $QUOR_SOCKET
//            the service of the machine, if its socket is there and its folder is safe, see
//            machine_place.h. Then no service of the user is started.
//            the service of this user: $XDG_RUNTIME_DIR/quor/quord.sock, else
//            /tmp/quor-<uid>/quord.sock
// Errors   See each function. A program that runs with another user's rights (set-uid) ignores the
//          environment.
// Threads  Any.
#pragma once

#include <sys/types.h>

#include <string>

// A copy of the environment variables that these functions use. The library's own thread must not
// read the environment later, because the application may be changing it at that time.
struct ServiceEnvironment {
  std::string socket, runtimeFolder, program, autostart, path, machineSocket = {};
  // The socket that was chosen once. A program stays with it, because its segment lies beside it.
  std::string chosen = {};
};
ServiceEnvironment ReadServiceEnvironment();

// The folder of a file.
std::string FolderOf(const std::string& path);

std::string ServiceSocketPath(const ServiceEnvironment& environment = ReadServiceEnvironment());
// The same without the service of the machine: where a service of this user listens.
std::string OwnServiceSocketPath(const ServiceEnvironment& environment = ReadServiceEnvironment());
// It is the place of the machine's service.
bool IsMachineSocket(const std::string& socketPath,
                     const ServiceEnvironment& environment = ReadServiceEnvironment());
// Whose service may answer there besides this user's and root's; root if nobody's.
uid_t TrustedOwner(const std::string& socketPath,
                   const ServiceEnvironment& environment = ReadServiceEnvironment());

// Makes the folder of the socket if it does not exist (0700). Checks that it belongs to this user
// and that nobody else may write to it. A folder that $QUOR_SOCKET names is not made: the user must
// make it. Neither is that of the machine's service. On failure: false and a reason.
bool PrepareSocketFolder(const std::string& socketPath, std::string* why = nullptr,
                         const ServiceEnvironment& environment = ReadServiceEnvironment());
// Only the check, for a program that connects. True also when the folder does not exist.
bool SocketFolderIsSafe(const std::string& socketPath, std::string* why = nullptr,
                        const ServiceEnvironment& environment = ReadServiceEnvironment());

// The program to start: $QUOR_QUORD, else `quord` in the folder of this executable, else on PATH.
// Empty if there is none, if QUOR_AUTOSTART is 0, if the service of the machine is there, or if
// this process runs inside a service of the service manager and QUOR_AUTOSTART is not 1.
std::string ServiceProgram(const ServiceEnvironment& environment = ReadServiceEnvironment());

// A program of this suite: in the folder of this executable, else on PATH; empty if there is none.
std::string ProgramOfThese(const char* name,
                           const ServiceEnvironment& environment = ReadServiceEnvironment());

// Why no program is started inside a service of the service manager; "" when that is not the
// reason.
std::string WhyNotStarted(const ServiceEnvironment& environment = ReadServiceEnvironment());
// The service of the manager in whose cgroup this process runs: "orders.service". What it starts
// would be counted as a part of it, and end with it. "" in a session and in an application of a
// desktop. `file`: as /proc/self/cgroup.
std::string SurroundingService(const std::string& file = "/proc/self/cgroup");

// Starts the program detached: in a session of its own, with no descriptor of ours, and not as a
// child of this process. True means that the program was started; it may not listen yet. It takes
// no lock that a fork could leave locked and runs none of the application's fork handlers. The
// application gets no signal for a child.
bool StartService(const std::string& program);
