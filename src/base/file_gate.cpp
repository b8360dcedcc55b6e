#include "base/file_gate.h"

#include <errno.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <map>
#include <mutex>
#include <utility>

#include "base/fail_with.h"

namespace {

constexpr char kInUseHere[] = "In use by this program";
constexpr char kInUseElsewhere[] = "In use by another program";

// The files that this process has open. It is needed besides flock, because on some file systems
// flock belongs to the process, and two openings in one process would not exclude each other.
class OpenFiles {
 public:
  bool Enter(std::uint64_t device, std::uint64_t inode, bool writing) {
    const std::lock_guard lock(m_mutex);
    const auto [entry, made] = m_files.try_emplace({device, inode});
    if (!made && (writing || entry->second.writing)) return false;
    entry->second.writing = writing;
    ++entry->second.openings;
    return true;
  }
  void Leave(std::uint64_t device, std::uint64_t inode) {
    const std::lock_guard lock(m_mutex);
    const auto entry = m_files.find({device, inode});
    if (entry != m_files.end() && --entry->second.openings == 0) m_files.erase(entry);
  }

 private:
  struct Entry {
    int openings = 0;
    bool writing = false;
  };
  std::mutex m_mutex;
  std::map<std::pair<std::uint64_t, std::uint64_t>, Entry> m_files;
};

OpenFiles& Files() {
  // Never destroyed: a thread may still close its file while the program ends.
  static OpenFiles& files = *new OpenFiles;
  return files;
}

int OpenDescriptor(const std::string& path, int flags) {
  int descriptor;
  do {
    // Without waiting, so that a FIFO without a writer does not block the caller.
    descriptor = open(path.c_str(), flags | O_CLOEXEC | O_NONBLOCK | O_NOCTTY, 0666);
  } while (descriptor < 0 && errno == EINTR);
  return descriptor;
}

// Kinds of file that the program accepts. A device such as /dev/null or /dev/full may be written.
bool IsWelcome(mode_t mode, bool writing, std::string* why) {
  if (S_ISREG(mode) || (writing && S_ISCHR(mode))) return true;
  return FailWith(why, S_ISDIR(mode) ? "Is a directory" : "Not a regular file");
}

void WaitInWritesAgain(int descriptor) {
  const int flags = fcntl(descriptor, F_GETFL);
  if (flags >= 0) fcntl(descriptor, F_SETFL, flags & ~O_NONBLOCK);
}

// False only when another holder is known: a file system without flock cannot tell.
bool Lock(int descriptor, bool writing) {
  int result;
  do {
    result = flock(descriptor, (writing ? LOCK_EX : LOCK_SH) | LOCK_NB);
  } while (result != 0 && errno == EINTR);
  return result == 0 || errno != EWOULDBLOCK;
}

}  // namespace

OpenFile::OpenFile(OpenFile&& other) noexcept {
  *this = std::move(other);
}

OpenFile& OpenFile::operator=(OpenFile&& other) noexcept {
  if (this != &other) {
    Close();
    m_descriptor = std::exchange(other.m_descriptor, -1);
    m_device = std::exchange(other.m_device, 0);
    m_inode = std::exchange(other.m_inode, 0);
    m_listed = std::exchange(other.m_listed, false);
  }
  return *this;
}

OpenFile::~OpenFile() {
  Close();
}

bool OpenFile::Close() {
  const int descriptor = std::exchange(m_descriptor, -1);
  // An interrupted close has closed the file nevertheless.
  const bool kept = descriptor < 0 || close(descriptor) == 0 || errno == EINTR;
  // After the close: an opener that the list admits must not meet our lock.
  if (std::exchange(m_listed, false)) Files().Leave(m_device, m_inode);
  return kept;
}

OpenFile OpenFile::Open(const std::string& path, Way way, std::string* why, int flags) {
  OpenFile file;
  const bool writing = way != Way::Read;
  const int creating = way == Way::Create ? O_CREAT : 0;
  file.m_descriptor = OpenDescriptor(path, flags | (writing ? O_WRONLY | creating : O_RDONLY));
  struct stat status;
  if (!file || fstat(file.m_descriptor, &status) != 0)
    return FailWith(why, SystemReason(), OpenFile());
  if (!IsWelcome(status.st_mode, writing, why)) return {};
  WaitInWritesAgain(file.m_descriptor);
  if (S_ISCHR(status.st_mode)) return file;  // a device is not opened exclusively

  file.m_device = status.st_dev;
  file.m_inode = status.st_ino;
  file.m_listed = Files().Enter(file.m_device, file.m_inode, writing);
  if (!file.m_listed || !Lock(file.m_descriptor, writing))
    return FailWith(why, file.m_listed ? kInUseElsewhere : kInUseHere, OpenFile());
  if (way == Way::Create && ftruncate(file.m_descriptor, 0) != 0)
    return FailWith(why, SystemReason(), OpenFile());
  return file;
}

OpenFile OpenForReading(const std::string& path, std::string* why) {
  return OpenFile::Open(path, OpenFile::Way::Read, why);
}

OpenFile CreateForWriting(const std::string& path, std::string* why, Links links) {
  const int flags = links == Links::Refuse ? O_NOFOLLOW : 0;
  return OpenFile::Open(path, OpenFile::Way::Create, why, flags);
}

OpenFile HoldForReplacing(const std::string& path, std::string* why) {
  return OpenFile::Open(path, OpenFile::Way::Hold, why);
}
