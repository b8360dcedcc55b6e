#include "quor/listeners/local_listener.h"

#include <fcntl.h>
#include <grp.h>
#include <sys/file.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <thread>

#include "base/fail_with.h"
#include "quor/link/machine_place.h"
#include "quor/link/paths.h"

namespace {

using std::chrono::milliseconds;
constexpr int kFirstInherited = 3;
constexpr int kQueueLength = 512;
// A service that was just told to end may not have read that yet, and `quord status` holds the lock
// for a moment.
constexpr milliseconds kLockPatience{500};
constexpr milliseconds kEndingPatience{10000};
constexpr milliseconds kLockAgain{10};
constexpr const char* kEnding = "ending";

// Members of the group may pass the folder and use the socket, and list or change nothing.
bool OpenToGroup(const std::string& path, gid_t group, mode_t mode, std::string* why) {
  if (chown(path.c_str(), static_cast<uid_t>(-1), group) != 0 || chmod(path.c_str(), mode) != 0)
    return FailWith(why, path + ": cannot be opened to the group: " + SystemReason());
  return true;
}

bool MakePrivateFolder(const std::string& folder, LocalListener::Group group, std::string* why) {
  if (mkdir(folder.c_str(), 0700) != 0 && errno != EEXIST) return FailOn(why, folder);
  struct stat status {};
  // lstat: a link in a public folder may be another user's.
  if (lstat(folder.c_str(), &status) != 0) return FailOn(why, folder);
  if (!S_ISDIR(status.st_mode)) return FailWith(why, folder + ": not a folder");
  if (status.st_uid != geteuid()) return FailWith(why, folder + ": belongs to another user");
  if (group && (status.st_mode & 067) == 0) return OpenToGroup(folder, *group, 0710, why);
  // It was open to a group before.
  if ((status.st_mode & 077) == 010 && chmod(folder.c_str(), 0700) == 0) return true;
  if ((status.st_mode & 077) != 0)
    return FailWith(why, folder + ": others may enter it (chmod 700 would make it private)");
  return true;
}

bool IsOwnMachinePlace(const std::string& socketPath, std::string* why) {
  const auto owner = OwnerOfMachinePlace(socketPath, why);
  return owner &&
         (*owner == geteuid() || FailWith(why, FolderOf(socketPath) + ": belongs to another user"));
}

bool FillAddress(const std::string& path, sockaddr_un* address, std::string* why) {
  *address = {};
  address->sun_family = AF_UNIX;
  if (path.size() >= sizeof address->sun_path)
    return FailWith(why, path + ": the path is too long");
  std::memcpy(address->sun_path, path.c_str(), path.size() + 1);
  return true;
}

bool HolderIsEnding(int lock) {
  char text[32] = {};
  return pread(lock, text, sizeof text - 1, 0) > 0 && std::strstr(text, kEnding);
}

bool TakeLock(int lock) {
  const auto began = std::chrono::steady_clock::now();
  while (flock(lock, LOCK_EX | LOCK_NB) != 0) {
    const auto patience = HolderIsEnding(lock) ? kEndingPatience : kLockPatience;
    if (std::chrono::steady_clock::now() - began > patience) return false;
    std::this_thread::sleep_for(kLockAgain);
  }
  return true;
}

// The further groups of the peer when it connected.
std::vector<gid_t> GroupsOf(int socket) {
  std::vector<gid_t> groups(64);
  for (;;) {
    auto size = static_cast<socklen_t>(groups.size() * sizeof(gid_t));
    const bool known = getsockopt(socket, SOL_SOCKET, SO_PEERGROUPS, groups.data(), &size) == 0;
    const bool isLonger = !known && errno == ERANGE && size > groups.size() * sizeof(gid_t);
    groups.resize(known || isLonger ? size / sizeof(gid_t) : 0);
    if (!isLonger) return groups;
  }
}

bool SomebodyAnswers(const sockaddr_un& address) {
  const int probe = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
  if (probe < 0) return false;
  const bool answers =
      connect(probe, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0 ||
      errno == EAGAIN;
  close(probe);
  return answers;
}

bool IsHandedSocket() {
  const char* const pid = std::getenv("LISTEN_PID");
  const char* const count = std::getenv("LISTEN_FDS");
  return pid && count && std::strtol(pid, nullptr, 10) == getpid() &&
         std::strtol(count, nullptr, 10) >= 1;
}

}  // namespace

bool LocalListener::Lock(const std::string& socketPath, Group group, std::string* why) {
  if (m_ofMachine ? !IsOwnMachinePlace(socketPath, why)
                  : !MakePrivateFolder(FolderOf(socketPath), group, why))
    return false;
  const std::string path = FolderOf(socketPath) + "/quord.lock";
  m_lock = open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600);
  if (m_lock < 0) return FailOn(why, path);
  if (!TakeLock(m_lock)) {
    const pid_t holder = ServicePid(socketPath);
    close(m_lock);
    m_lock = -1;
    return FailWith(why, "quord is already running here" +
                             (holder > 0 ? " (process " + std::to_string(holder) + ")" : ""));
  }
  const std::string pid = std::to_string(getpid()) + "\n";
  if (ftruncate(m_lock, 0) != 0 || write(m_lock, pid.data(), pid.size()) < 0)
    return FailOn(why, path);
  return true;
}

bool LocalListener::Open(const std::string& socketPath, std::string* why, Group group) {
  sockaddr_un address{};
  if (!FillAddress(socketPath, &address, why) || !Lock(socketPath, group, why)) return false;
  if (SomebodyAnswers(address))
    return FailWith(why, socketPath + ": another process answers there without the lock");
  if (unlink(socketPath.c_str()) != 0 && errno != ENOENT) return FailOn(why, socketPath);
  m_descriptor = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
  const mode_t before = umask(0177);
  const bool bound =
      m_descriptor >= 0 &&
      bind(m_descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
  umask(before);
  if (!bound || listen(m_descriptor, kQueueLength) != 0) return FailOn(why, socketPath);
  if (!OpenSocket(socketPath, group, why)) return false;
  if (!NotePlace(socketPath)) return FailOn(why, socketPath);
  m_own = true;
  return true;
}

bool LocalListener::OpenSocket(const std::string& socketPath, Group group, std::string* why) const {
  if (m_ofMachine) return chmod(socketPath.c_str(), 0666) == 0 || FailOn(why, socketPath);
  return !group || OpenToGroup(socketPath, *group, 0660, why);
}

bool LocalListener::NotePlace(const std::string& socketPath) {
  struct stat place {};
  m_path = socketPath;
  if (lstat(socketPath.c_str(), &place) != 0) return false;
  m_device = place.st_dev;
  m_inode = place.st_ino;
  return true;
}

bool LocalListener::Adopt(const std::string& socketPath, int descriptor, std::string* why,
                          Group group) {
  m_descriptor = descriptor;
  fcntl(descriptor, F_SETFL, fcntl(descriptor, F_GETFL) | O_NONBLOCK);
  if (!Lock(socketPath, group, why)) return false;
  // The mode of a handed-over socket that all accounts reach is its maker's.
  if (!m_ofMachine && !OpenSocket(socketPath, group, why)) return false;
  if (!NotePlace(socketPath)) m_inode = 0;  // removed already: it is not in place
  return true;
}

bool LocalListener::IsInPlace() const {
  struct stat place {
  }, lock{}, held{};
  const std::string path = FolderOf(m_path) + "/quord.lock";
  return lstat(m_path.c_str(), &place) == 0 && place.st_dev == m_device &&
         place.st_ino == m_inode && stat(path.c_str(), &lock) == 0 && fstat(m_lock, &held) == 0 &&
         lock.st_dev == held.st_dev && lock.st_ino == held.st_ino;
}

void LocalListener::StopListening() {
  // By now it may be another service's.
  if (m_own && IsInPlace()) unlink(m_path.c_str());
  m_own = false;
  if (m_descriptor >= 0) close(m_descriptor);
  m_descriptor = -1;
  const std::string text = std::to_string(getpid()) + " " + kEnding + "\n";
  if (m_lock >= 0 && pwrite(m_lock, text.data(), text.size(), 0) < 0) return;
}

void LocalListener::Close() {
  StopListening();
  // The lock file stays: removing it would let two services lock two files of one name.
  if (m_lock >= 0) close(m_lock);
  m_lock = -1;
}

pid_t ServicePid(const std::string& socketPath) {
  const std::string path = FolderOf(socketPath) + "/quord.lock";
  const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW);
  if (file < 0) return 0;
  char text[24] = {};
  const bool held = flock(file, LOCK_SH | LOCK_NB) != 0;
  const ssize_t length = read(file, text, sizeof text - 1);
  close(file);
  return held && length > 0 ? static_cast<pid_t>(std::strtol(text, nullptr, 10)) : 0;
}

bool CloseInherited() {
  const int first = IsHandedSocket() ? kFirstInherited + 1 : kFirstInherited;
  return close_range(static_cast<unsigned>(first), ~0u, 0) == 0;
}

int TakeInheritedSocket(std::string* path) {
  const bool ours = IsHandedSocket();
  unsetenv("LISTEN_PID");
  unsetenv("LISTEN_FDS");
  unsetenv("LISTEN_FDNAMES");
  sockaddr_un address{};
  socklen_t size = sizeof address;
  int listens = 0;
  socklen_t listensSize = sizeof listens;
  if (!ours || getsockname(kFirstInherited, reinterpret_cast<sockaddr*>(&address), &size) != 0 ||
      address.sun_family != AF_UNIX ||
      getsockopt(kFirstInherited, SOL_SOCKET, SO_ACCEPTCONN, &listens, &listensSize) != 0 ||
      listens == 0)
    return -1;
  fcntl(kFirstInherited, F_SETFD, FD_CLOEXEC);
  *path = std::string(address.sun_path, strnlen(address.sun_path, sizeof address.sun_path));
  return kFirstInherited;
}

bool PeerOfSocket(int socket, LocalPeer* peer) {
  ucred credentials{};
  socklen_t size = sizeof credentials;
  if (getsockopt(socket, SOL_SOCKET, SO_PEERCRED, &credentials, &size) != 0) return false;
  *peer = {credentials.uid, credentials.pid, GroupsOf(socket)};
  peer->groups.push_back(credentials.gid);
  return true;
}

Admission AdmissionOf(const LocalPeer& peer, uid_t own, LocalListener::Group group) {
  if (peer.uid == own) return Admission::Owner;
  const auto& groups = peer.groups;
  const bool isMember = group && std::find(groups.begin(), groups.end(), *group) != groups.end();
  return peer.uid == 0 || isMember ? Admission::Client : Admission::None;
}

std::optional<gid_t> GroupNamed(const std::string& name, std::string* why) {
  const group* const found = getgrnam(name.c_str());
  if (!found) return FailWith(why, "there is no group \"" + name + "\"", std::nullopt);
  return found->gr_gid;
}
