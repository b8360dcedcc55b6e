// The unix socket of the service: in a private folder, guarded by a lock, and never another user's
// socket.
//
// Shape    <folder>/quord.sock, or the path in $QUOR_SOCKET, and beside it quord.lock. The lock
//          file contains the pid of the lock's holder, followed by the word "ending" once that
//          holder accepts nobody any more.
// Owner    Holds the lock and the listening descriptor. Its destructor removes the socket, unless
//          the system handed the socket over, which then keeps it.
// Errors   False and a reason. If the lock is held, Open waits a moment, and longer while its
//          holder ends.
// Threads  One.
#pragma once

#include <sys/types.h>

#include <optional>
#include <string>
#include <vector>

class LocalListener {
 public:
  // Whose members may reach the socket as well.
  using Group = std::optional<gid_t>;

  // `ofMachine`: every account may reach the socket. Its folder is made by root, see
  // machine_place.h.
  explicit LocalListener(bool ofMachine = false) : m_ofMachine(ofMachine) {}
  ~LocalListener() { Close(); }
  LocalListener(const LocalListener&) = delete;
  LocalListener& operator=(const LocalListener&) = delete;

  // Makes the folder if there is none. Fails for a folder that others may enter, for a second
  // service, and for a socket at which a process answers.
  bool Open(const std::string& socketPath, std::string* why, Group group = {});
  // With a socket that listens already (socket activation). The lock is taken nevertheless.
  bool Adopt(const std::string& socketPath, int descriptor, std::string* why, Group group = {});
  // Accepts nobody any more. Keeps the lock, because what it guards is in use until the end.
  void StopListening();
  void Close();

  int Descriptor() const { return m_descriptor; }
  // The socket and the lock still have their names.
  bool IsInPlace() const;

 private:
  bool Lock(const std::string& socketPath, Group group, std::string* why);
  bool NotePlace(const std::string& socketPath);
  bool OpenSocket(const std::string& socketPath, Group group, std::string* why) const;

  const bool m_ofMachine;
  std::string m_path;
  int m_lock = -1, m_descriptor = -1;
  dev_t m_device = 0;  // of the socket's name
  ino_t m_inode = 0;
  bool m_own = false;
};

// The pid in the lock file beside the socket; 0 when no service holds the lock.
pid_t ServicePid(const std::string& socketPath);

// Closes what whoever started this process left open, but for the standard three and the socket
// that TakeInheritedSocket will find. Call it first.
bool CloseInherited();
// The first descriptor that the system has handed over to this process, and the path it listens on;
// -1 when there is none. Reads LISTEN_PID and LISTEN_FDS and removes them.
int TakeInheritedSocket(std::string* path);

// The peer of a unix socket, as the kernel reports it.
struct LocalPeer {
  uid_t uid = static_cast<uid_t>(-1);
  pid_t pid = 0;
  std::vector<gid_t> groups = {};
  bool isTraced = false;      // its applications are
  bool isRestricted = false;  // it sees only what is of its own account
};
bool PeerOfSocket(int socket, LocalPeer* peer);
// Owner: the service's own user, whose applications are traced. Client: root, or a member of the
// group; they may watch and configure. None: everybody else, who at the service of a machine is
// traced and may watch and configure what is of his own account.
enum class Admission { None, Client, Owner };
Admission AdmissionOf(const LocalPeer& peer, uid_t own, LocalListener::Group group);
// Nothing and a reason if there is no group of this name.
std::optional<gid_t> GroupNamed(const std::string& name, std::string* why);
