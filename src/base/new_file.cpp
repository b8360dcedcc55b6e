#include "base/new_file.h"

#include <fcntl.h>
#include <sys/sendfile.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <system_error>

#include "base/fail_with.h"

namespace fs = std::filesystem;

namespace {

constexpr int kPartsMax = 100;  // in one folder, of processes with one number

// The new file can replace the old one without a change of names, owner or rights. Both must exist.
bool CanStandFor(int fresh, int old) {
  constexpr mode_t kRights = 07777;
  struct stat is, was;
  if (fstat(fresh, &is) != 0 || fstat(old, &was) != 0 || was.st_nlink > 1) return false;
  // Some file systems have no such calls.
  const bool owned = is.st_uid == was.st_uid && is.st_gid == was.st_gid;
  if (!owned && fchown(fresh, was.st_uid, was.st_gid) != 0) return false;
  return is.st_mode == was.st_mode || fchmod(fresh, was.st_mode & kRights) == 0;
}

// Allocates space before a byte of the old file is overwritten. False: the old file is unchanged.
bool MakeRoom(int descriptor, off_t bytes) {
  struct stat status;
  if (fstat(descriptor, &status) != 0) return false;
  if (bytes <= status.st_size) return true;
  const int error = posix_fallocate(descriptor, status.st_size, bytes - status.st_size);
  if (error == 0) return true;
  [[maybe_unused]] const int restored = ftruncate(descriptor, status.st_size);
  errno = error;
  return false;
}

bool Overwrite(int to, int from, off_t bytes) {
  if (lseek(to, 0, SEEK_SET) != 0) return false;
  for (off_t done = 0; done < bytes;) {
    const ssize_t sent = sendfile(to, from, &done, static_cast<std::size_t>(bytes - done));
    if (sent < 0 && errno == EINTR) continue;
    if (sent == 0) errno = EIO;  // another program has cut it
    if (sent <= 0) return false;
  }
  return ftruncate(to, bytes) == 0 && fsync(to) == 0;
}

// Some file systems do not support it.
bool IsOnDisk(const std::string& path) {
  const int descriptor = open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW);
  if (descriptor < 0) return false;
  const bool synced = fdatasync(descriptor) == 0 || errno == EINVAL || errno == ENOSYS;
  const int error = errno;
  close(descriptor);
  errno = error;
  return synced;
}

}  // namespace

bool NewFile::Begin(const std::string& path, std::string* why) {
  std::error_code error;
  const fs::file_status status = fs::status(path, error);
  if (fs::exists(status) && !fs::is_regular_file(status) && !fs::is_directory(status)) {
    m_writeTo = path;
    m_place = Place::Device;
    return true;
  }
  const fs::path target = fs::weakly_canonical(path, error);
  m_target = error ? path : target.string();
  if (fs::exists(status) && !(m_held = HoldForReplacing(m_target, why))) return false;
  return BeginBeside(why);
}

bool NewFile::BeginBeside(std::string* why) {
  m_place = Place::Beside;
  int descriptor = MakeIn(fs::path(m_target).parent_path().string());
  const int failure = errno;
  if (descriptor < 0 && m_held) {
    m_place = Place::Elsewhere;
    std::error_code error;
    const fs::path folder = fs::temp_directory_path(error);
    if (!error) descriptor = MakeIn(folder.string());
  }
  if (descriptor < 0) {
    m_place = Place::None;
    return FailWith(why, SystemReason(failure));
  }
  m_keepsFile =
      m_held && (m_place == Place::Elsewhere || !CanStandFor(descriptor, m_held.Descriptor()));
  close(descriptor);
  return true;
}

// A unique name: this program may be writing another file there, and a killed one may have left a
// part.
int NewFile::MakeIn(const std::string& folder) {
  const std::string name = ".trc-" + std::to_string(static_cast<long>(getpid()));
  for (int number = 1;; ++number) {
    const std::string part = name + (number == 1 ? "" : "-" + std::to_string(number)) + ".part";
    m_writeTo = (fs::path(folder) / part).string();
    const int descriptor =
        open(m_writeTo.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, m_held ? 0600 : 0666);
    if (descriptor >= 0 || errno != EEXIST || number == kPartsMax) return descriptor;
  }
}

bool NewFile::Finish(std::string* why) {
  const bool named = m_place == Place::Beside || m_place == Place::Elsewhere;
  if (named && !(m_keepsFile ? CopyOver(why) : Rename(why))) return false;
  m_place = Place::None;
  return true;
}

bool NewFile::Rename(std::string* why) {
  // A crash of the machine must not leave an empty file in place of the existing one.
  if (m_held && !IsOnDisk(m_writeTo)) return FailWith(why, SystemReason());
  if (rename(m_writeTo.c_str(), m_target.c_str()) == 0) return true;
  const int error = errno;
  const bool forbidden = error == EPERM || error == EACCES || error == EBUSY;
  return m_held && forbidden ? CopyOver(why) : FailWith(why, SystemReason(error));
}

bool NewFile::CopyOver(std::string* why) {
  const int from = open(m_writeTo.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW);
  struct stat status;
  if (from < 0 || fstat(from, &status) != 0 || !MakeRoom(m_held.Descriptor(), status.st_size)) {
    FailWith(why, SystemReason());
    if (from >= 0) close(from);
    return false;
  }
  const bool copied = Overwrite(m_held.Descriptor(), from, status.st_size) && m_held.Close();
  const int error = errno;
  close(from);
  if (copied) {
    unlink(m_writeTo.c_str());
    return true;
  }
  m_place = Place::None;  // keep the only complete file
  return FailWith(why, SystemReason(error) + ". It stands whole in " + m_writeTo);
}

NewFile::~NewFile() {
  if (m_place == Place::Beside || m_place == Place::Elsewhere) unlink(m_writeTo.c_str());
}
