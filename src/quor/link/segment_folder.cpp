#include "quor/link/segment_folder.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <time.h>
#include <unistd.h>

#include <cerrno>

#include "quor/link/memory_folder.h"

namespace {

constexpr int kFolderFlags = O_RDONLY | O_DIRECTORY | O_CLOEXEC;
// Applications leave this part of a memory file system to others.
constexpr unsigned kLeftPart = 8;
constexpr std::uint64_t kLeftBytes = 16u << 20;
constexpr time_t kMakingSeconds = 10;

bool IsPrivate(int folder, mode_t passable) {
  struct stat status {};
  return fstat(folder, &status) == 0 && S_ISDIR(status.st_mode) && status.st_uid == geteuid() &&
         (status.st_mode & 077 & ~passable) == 0;
}

// `passable`: members of its group may pass it, see the option --group of the service.
int OpenPrivate(int at, const char* name, int flags, mode_t passable = 0) {
  const int folder = openat(at, name, flags);
  if (folder < 0 || IsPrivate(folder, passable)) return folder;
  close(folder);
  errno = EACCES;
  return -1;
}

int OpenInMemory(int runtime) {
  const int folder = OpenPrivate(runtime, kSegments, kFolderFlags);
  if (folder < 0 || LiesInMemory(folder)) return folder;
  close(folder);
  errno = EINVAL;
  return -1;
}

// True if the name is a folder of this user, or a link to a folder that was made for it.
bool IsOwnPlace(int runtime) {
  struct stat status {};
  if (fstatat(runtime, kSegments, &status, 0) != 0 || !S_ISDIR(status.st_mode) ||
      status.st_uid != geteuid())
    return false;
  char target[256] = {};
  return readlinkat(runtime, kSegments, target, sizeof target - 1) < 0 ||
         std::string(target).starts_with(OwnInMemory());
}

void PutRight(int runtime, int error) {
  if (error == EACCES && IsOwnPlace(runtime) && fchmodat(runtime, kSegments, 0700, 0) == 0) return;
  // A folder that is not empty stays.
  if (unlinkat(runtime, kSegments, 0) != 0 && errno != ENOENT &&
      unlinkat(runtime, kSegments, AT_REMOVEDIR) != 0)
    return;
  LiesInMemory(runtime) ? void(mkdirat(runtime, kSegments, 0700)) : LinkToMemory(runtime, 0700);
}

int OpenSegments(int runtime) {
  int folder = OpenInMemory(runtime);
  if (folder >= 0 || !IsDamaged(errno)) return folder;
  // One at a time.
  if (!LockSoon(runtime)) return -1;
  folder = OpenInMemory(runtime);
  if (folder < 0 && IsDamaged(errno)) {
    PutRight(runtime, errno);
    folder = OpenInMemory(runtime);
  }
  const int error = errno;
  flock(runtime, LOCK_UN);
  errno = error;
  return folder;
}

}  // namespace

bool SegmentFolder::Open(const std::string& socketPath) {
  Close();
  const int runtime =
      OpenPrivate(AT_FDCWD, FolderOf(socketPath).c_str(), kFolderFlags | O_NOFOLLOW, S_IXGRP);
  if (runtime < 0) return false;
  m_folder = OpenSegments(runtime);
  const int error = errno;
  close(runtime);
  errno = error;
  return m_folder >= 0;
}

void SegmentFolder::Close() {
  if (m_folder >= 0) close(m_folder);
  m_folder = -1;
  m_ofMachine = false;
  m_new.clear();
}

void SegmentFolder::RemoveEmpty(const std::string& socketPath) {
  const int runtime =
      OpenPrivate(AT_FDCWD, FolderOf(socketPath).c_str(), kFolderFlags | O_NOFOLLOW, S_IXGRP);
  if (runtime < 0) return;
  RemoveEmptyMemory(runtime);
  close(runtime);
}

bool SegmentFolder::IsSame(const SegmentFolder& other) const {
  struct stat one {
  }, two{};
  return fstat(m_folder, &one) == 0 && fstat(other.m_folder, &two) == 0 &&
         one.st_dev == two.st_dev && one.st_ino == two.st_ino;
}

int SegmentFolder::NewFile(std::uint64_t startedNs, std::uint64_t random) {
  struct statvfs room {};
  if (m_folder < 0 || fstatvfs(m_folder, &room) != 0) return -1;
  // A file system without a limit reports no blocks.
  if (room.f_blocks != 0 &&
      (room.f_bavail < room.f_blocks / kLeftPart || room.f_bavail * room.f_frsize < kLeftBytes)) {
    errno = ENOSPC;
    return -1;
  }
  m_new = std::to_string(getpid()) + "-" + Hex(startedNs) + "-" + Hex(random);
  const int file = openat(m_folder, ("." + m_new).c_str(),
                          O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600);
  // The application's umask may have removed bits.
  const mode_t mode = m_ofMachine ? 0660 : 0600;
  if (file < 0 || (fchmod(file, mode) == 0 && (!m_ofMachine || IsAcceptable(file)))) return file;
  close(file);
  Discard();
  errno = EACCES;
  return -1;
}

bool SegmentFolder::Show() {
  return !m_new.empty() && renameat(m_folder, ("." + m_new).c_str(), m_folder, m_new.c_str()) == 0;
}

void SegmentFolder::Discard() {
  if (!m_new.empty()) unlinkat(m_folder, ("." + m_new).c_str(), 0);
  m_new.clear();
}

std::vector<std::string> SegmentFolder::Names(bool* isWhole) const {
  return Entries(false, isWhole);
}

std::vector<std::string> SegmentFolder::Entries(bool hidden, bool* isWhole) const {
  std::vector<std::string> names;
  if (isWhole) *isWhole = false;
  const int again = m_folder >= 0 ? openat(m_folder, ".", kFolderFlags) : -1;
  DIR* const folder = again >= 0 ? fdopendir(again) : nullptr;
  if (!folder) {
    if (again >= 0) close(again);
    return names;
  }
  errno = 0;
  while (const dirent* const entry = readdir(folder)) {
    const std::string name = entry->d_name;
    if (name != "." && name != ".." && (name[0] == '.') == hidden) names.push_back(name);
    errno = 0;
  }
  if (isWhole) *isWhole = errno == 0;
  closedir(folder);
  return names;
}

int SegmentFolder::OpenFile(const std::string& name) const {
  const int file =
      openat(m_folder, name.c_str(), O_RDWR | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
  if (file < 0 || IsAcceptable(file)) return file;
  close(file);
  errno = EACCES;
  return -1;
}

bool SegmentFolder::IsAcceptable(int file) const {
  struct stat status {};
  if (fstat(file, &status) != 0 || !S_ISREG(status.st_mode)) return false;
  if (m_ofMachine)
    return status.st_gid == m_group && status.st_nlink == 1 && (status.st_mode & 07) == 0;
  return status.st_uid == geteuid() && (status.st_mode & 077) == 0;
}

bool SegmentFolder::Remove(const std::string& name, dev_t device, ino_t inode) const {
  struct stat status {};
  return fstatat(m_folder, name.c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0 &&
         status.st_dev == device && status.st_ino == inode &&
         unlinkat(m_folder, name.c_str(), 0) == 0;
}

bool SegmentFolder::RemoveUnowned(const std::string& name) const {
  const int file = OpenFile(name);
  struct stat status {};
  if (file < 0) return errno == ENOENT;
  const bool removed = fstat(file, &status) == 0 && flock(file, LOCK_EX | LOCK_NB) == 0 &&
                       Remove(name, status.st_dev, status.st_ino);
  close(file);
  return removed;
}

void SegmentFolder::RemoveUnfinished() const {
  struct stat status {};
  // A file that is just being made may not have its lock yet.
  const time_t before = time(nullptr) - kMakingSeconds;
  for (const std::string& name : Entries(true))
    if (fstatat(m_folder, name.c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0 &&
        status.st_ctim.tv_sec < before && !RemoveUnowned(name) && m_ofMachine && errno == EACCES)
      RemoveAnything(name);
}
