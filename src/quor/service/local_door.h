// The unix socket of the service: a private folder, a lock, and never somebody else's socket.
//
// Shape    <folder>/quord.sock, or the path that $QUOR_SOCKET names, and beside it quord.lock.
//          The lock file holds the pid of who has the lock, and the word "ending" behind it once
//          that takes nobody in any more.
// Owner    Holds the lock and the listening descriptor; the end removes the socket, unless it was
//          handed over by the system, which keeps it.
// Errors   False and a reason. A lock that is held is waited for: a moment, and longer while its
//          holder ends.
// Threads  One.
#pragma once

#include <sys/types.h>

#include <string>

class LocalDoor {
 public:
  LocalDoor() = default;
  ~LocalDoor() { Close(); }
  LocalDoor(const LocalDoor&) = delete;
  LocalDoor& operator=(const LocalDoor&) = delete;

  // Makes the folder if there is none. Refuses a folder that others may enter, a second service,
  // and a socket at which somebody answers.
  bool Open(const std::string& socketPath, std::string* why);
  // With a socket that listens already (socket activation). The lock is taken all the same.
  bool Adopt(const std::string& socketPath, int descriptor, std::string* why);
  // Nobody comes in any more. The lock is still held: what it guards is in use until the end.
  void StopListening();
  void Close();

  int Descriptor() const { return m_descriptor; }
  // The socket and the lock still stand where others look for them.
  bool IsInPlace() const;

 private:
  bool Lock(const std::string& socketPath, std::string* why);
  bool NotePlace(const std::string& socketPath);

  std::string m_path;
  int m_lock = -1, m_descriptor = -1;
  dev_t m_device = 0;  // of the socket's name
  ino_t m_inode = 0;
  bool m_own = false;
};

// The pid that the lock beside the socket tells; 0 when no service holds it.
pid_t ServicePid(const std::string& socketPath);

// The first descriptor that the system has handed over to this process and the path it listens on;
// -1 when none was. It is told by LISTEN_PID and LISTEN_FDS, which are removed.
int TakeHandedSocket(std::string* path);

// Who is at the other end of a unix socket, by the kernel.
struct LocalPeer {
  uid_t uid = static_cast<uid_t>(-1);
  pid_t pid = 0;
};
bool PeerOfSocket(int socket, LocalPeer* peer);
// Only this service's own user.
bool MayEnter(const LocalPeer& peer, uid_t own);
