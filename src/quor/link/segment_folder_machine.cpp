// The folder of the segments at the place of the machine's service.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "quor/link/machine_place.h"
#include "quor/link/memory_folder.h"
#include "quor/link/segment_folder.h"

namespace {

// All may make files. Only the owner lists them and removes those of others, and files get the
// folder's group.
constexpr mode_t kMachineMode = 03733;
constexpr mode_t kAllBits = 07777;
// An application may not read the folder.
constexpr int kPassFlags = O_PATH | O_DIRECTORY | O_CLOEXEC;

// The folder of the socket: `owner`'s, and nobody else writes to it.
int OpenMachinePlace(const std::string& socketPath, uid_t owner, int flags) {
  const int place = open(FolderOf(socketPath).c_str(), flags | O_NOFOLLOW);
  struct stat status {};
  if (place < 0 || (fstat(place, &status) == 0 && S_ISDIR(status.st_mode) &&
                    status.st_uid == owner && (status.st_mode & 022) == 0))
    return place;
  close(place);
  errno = EACCES;
  return -1;
}

int OpenShared(int place, uid_t owner, int flags, gid_t* group) {
  const int folder = openat(place, kSegments, flags);
  struct stat status {};
  if (folder < 0) return -1;
  if (fstat(folder, &status) == 0 && S_ISDIR(status.st_mode) && status.st_uid == owner &&
      (status.st_mode & kAllBits) == kMachineMode && LiesInMemory(folder)) {
    *group = status.st_gid;
    return folder;
  }
  close(folder);
  errno = EACCES;
  return -1;
}

// A folder that is not empty stays.
void MakeShared(int place) {
  if (unlinkat(place, kSegments, 0) != 0 && errno != ENOENT &&
      unlinkat(place, kSegments, AT_REMOVEDIR) != 0)
    return;
  // Never in the folder of the socket itself: /run must have room for others.
  LinkToMemory(place, kMachineMode);
}

}  // namespace

bool SegmentFolder::OpenFor(const ServiceEnvironment& environment) {
  const std::string path = ServiceSocketPath(environment);
  if (!IsMachineSocket(path, environment))
    return Open(path) || (PrepareSocketFolder(path, nullptr, environment) && Open(path));
  const auto owner = OwnerOfMachinePlace(path);
  // In a container a user's own service may be reached at that place.
  return (owner && OpenOfMachine(path, *owner)) || Open(path);
}

bool SegmentFolder::OpenOfMachine(const std::string& socketPath, uid_t owner) {
  Close();
  const int place = OpenMachinePlace(socketPath, owner, kPassFlags);
  if (place < 0) return false;
  m_folder = OpenShared(place, owner, kPassFlags, &m_group);
  const int error = errno;
  close(place);
  errno = error;
  m_ofMachine = m_folder >= 0;
  return m_ofMachine;
}

bool SegmentFolder::MakeOfMachine(const std::string& socketPath) {
  Close();
  constexpr int kReadFlags = O_RDONLY | O_DIRECTORY | O_CLOEXEC;
  const int place = OpenMachinePlace(socketPath, geteuid(), kReadFlags);
  if (place < 0) return false;
  m_folder = OpenShared(place, geteuid(), kReadFlags, &m_group);
  if (m_folder >= 0 && m_group != getegid()) {
    close(m_folder);
    m_folder = -1;
    errno = EACCES;
  }
  // Where descriptors are short it may be as good as ever.
  if (m_folder < 0 && IsDamaged(errno)) {
    MakeShared(place);
    m_folder = OpenShared(place, geteuid(), kReadFlags, &m_group);
  }
  const int error = errno;
  close(place);
  errno = error;
  m_ofMachine = m_folder >= 0;
  return m_ofMachine;
}

void SegmentFolder::RemoveEmptyOfMachine(const std::string& socketPath) {
  const int place = OpenMachinePlace(socketPath, geteuid(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (place < 0) return;
  RemoveEmptyMemory(place);
  close(place);
}

std::optional<uid_t> SegmentFolder::OwnerOf(const std::string& name) const {
  struct stat status {};
  if (fstatat(m_folder, name.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0) return std::nullopt;
  return status.st_uid;
}

void SegmentFolder::RemoveAnything(const std::string& name) const {
  // A folder that is not empty stays.
  if (m_ofMachine && unlinkat(m_folder, name.c_str(), 0) != 0 && errno == EISDIR)
    unlinkat(m_folder, name.c_str(), AT_REMOVEDIR);
}
