#include "notes/new_notes.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>

#include "base/fail_with.h"

namespace {

constexpr mode_t kReadWrite = 0666;

class NewNotes {
 public:
  NewNotes(const std::string& path, const NotesSteps& steps) : m_steps(steps) {
    const std::size_t slash = path.rfind('/');
    m_name = slash == path.npos ? path : path.substr(slash + 1);
    m_part = "." + m_name + "." + std::to_string(static_cast<long>(getpid())) + ".part";
    const std::string folder = slash == path.npos ? "." : path.substr(0, slash + 1);
    m_folder = open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  }
  ~NewNotes() {
    const int error = errno;
    if (m_file >= 0) close(m_file);
    if (m_made) unlinkat(m_folder, m_part.c_str(), 0);
    if (m_folder >= 0) close(m_folder);
    errno = error;
  }
  NewNotes(const NewNotes&) = delete;
  NewNotes& operator=(const NewNotes&) = delete;

  bool HasFolder() const { return m_folder >= 0; }
  bool MayReplace() const {
    struct stat status;
    if (fstatat(m_folder, m_name.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0)
      return errno == ENOENT;
    if (S_ISREG(status.st_mode)) return true;
    errno = S_ISLNK(status.st_mode) ? ELOOP : EISDIR;
    return false;
  }
  // With no more rights than the trace file has, from the beginning.
  bool Make(const struct stat& trace) {
    Step();
    // A part of this number can only be that of a process which was killed.
    if (unlinkat(m_folder, m_part.c_str(), 0) != 0 && errno != ENOENT) return false;
    constexpr int kFlags = O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC;
    m_file = openat(m_folder, m_part.c_str(), kFlags, 0600);
    m_made = m_file >= 0;
    if (!m_made) return false;
    [[maybe_unused]] const int given = fchown(m_file, static_cast<uid_t>(-1), trace.st_gid);
    return fchmod(m_file, trace.st_mode & kReadWrite) == 0;
  }
  bool Write(std::string_view text) {
    while (!text.empty()) {
      Step();
      const ssize_t count = write(m_file, text.data(), std::min(text.size(), m_steps.pieceBytes));
      if (count < 0 && errno == EINTR) continue;
      if (count < 0) return false;
      text.remove_prefix(static_cast<std::size_t>(count));
    }
    Step();
    return Sync(m_file);
  }
  bool Name() {
    Step();
    const bool closed = close(m_file) == 0;
    m_file = -1;
    if (!closed || renameat(m_folder, m_part.c_str(), m_folder, m_name.c_str()) != 0) return false;
    m_made = false;
    Step();
    return Sync(m_folder);
  }

 private:
  void Step() const {
    if (m_steps.before) m_steps.before();
  }
  // Some file systems do not support it.
  static bool Sync(int descriptor) {
    return fsync(descriptor) == 0 || errno == EINVAL || errno == ENOSYS;
  }

  const NotesSteps& m_steps;
  std::string m_name, m_part;
  int m_folder = -1, m_file = -1;
  bool m_made = false;
};

}  // namespace

bool ReplaceNotes(const std::string& path, const std::string& tracePath, std::string_view text,
                  std::string* why, const NotesSteps& steps) {
  struct stat trace;
  if (stat(tracePath.c_str(), &trace) != 0) return FailOn(why, tracePath);
  NewNotes notes(path, steps);
  if (notes.HasFolder() && !notes.MayReplace()) {
    const bool isLink = errno == ELOOP;
    return FailWith(
        why, path + ": " + (isLink ? "a symbolic link, which is not replaced" : SystemReason()));
  }
  if (!notes.HasFolder() || !notes.Make(trace) || !notes.Write(text) || !notes.Name())
    return FailOn(why, path);
  return true;
}
