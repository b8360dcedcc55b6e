#include "quor/runtime/sink/sink_files.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstdio>
#include <utility>

namespace {

constexpr std::string_view kExtension = ".trc";
constexpr std::uint64_t kMegabyte = 1024 * 1024;
constexpr std::uint64_t kLookNs = 1'000'000'000;

std::string StemOf(const std::string& path) {
  const bool has =
      path.size() > kExtension.size() &&
      path.compare(path.size() - kExtension.size(), kExtension.size(), kExtension) == 0;
  return has ? path.substr(0, path.size() - kExtension.size()) : path;
}

// An absolute path, which later changes of the application's working directory do not affect.
std::string FromRoot(std::string path) {
  char folder[4096];
  if (path.empty() || path[0] == '/' || !getcwd(folder, sizeof folder)) return path;
  return std::string(folder) + "/" + path;
}

// With its slash.
std::string FolderOfFile(const std::string& path) {
  return path.substr(0, path.rfind('/') + 1);
}

// May other users put files into it?
bool IsShared(const struct stat& folder) {
  const bool trusted = folder.st_uid == geteuid() || folder.st_uid == 0;
  return !trusted || (folder.st_mode & (S_IWGRP | S_IWOTH)) != 0;
}

bool IsSameFile(const struct stat& one, const struct stat& other) {
  return one.st_dev == other.st_dev && one.st_ino == other.st_ino;
}

bool IsCut(const struct stat& file, std::uint64_t written) {
  return static_cast<std::uint64_t>(file.st_size) < written;
}

std::uint64_t CoarseNs() {
  timespec time{};
  clock_gettime(CLOCK_MONOTONIC_COARSE, &time);
  return static_cast<std::uint64_t>(time.tv_sec) * 1'000'000'000u +
         static_cast<std::uint64_t>(time.tv_nsec);
}

bool Exists(const char* path) {
  struct stat status {};
  return lstat(path, &status) == 0;
}

}  // namespace

SinkOptions SinkOptions::Parse(std::string_view text) {
  SinkOptions options;
  while (!text.empty()) {
    const std::string_view entry = text.substr(0, text.find(';'));
    text.remove_prefix(entry.size() == text.size() ? entry.size() : entry.size() + 1);
    const std::size_t equals = entry.find('=');
    if (equals == std::string_view::npos) continue;
    const std::string_view key = entry.substr(0, equals), value = entry.substr(equals + 1);
    std::uint32_t number = 0;
    const auto read = std::from_chars(value.data(), value.data() + value.size(), number);
    if (read.ec != std::errc() || read.ptr != value.data() + value.size()) continue;
    if (key == "flush") options.flush = number != 0;
    if (key == "maxfiles") options.maxFiles = number;
    if (key == "maxsize") options.maxBytes = number * kMegabyte;
  }
  return options;
}

SinkFiles::SinkFiles(std::string path, const SinkOptions& options)
    : m_wanted([&]() -> Names {
        path = FromRoot(std::move(path));
        return {path, StemOf(path), FolderOfFile(path)};
      }()),
      m_own([this]() -> Names {
        const std::string stem = m_wanted.stem + ".pid" + std::to_string(getpid());
        return {stem + std::string(kExtension), stem, m_wanted.folder};
      }()),
      m_options(options) {}

SinkFiles::~SinkFiles() {
  End();
}

bool SinkFiles::Begin() {
  End();
  for (int attempt = 0; attempt < 5; ++attempt) {
    switch (OpenLocked()) {
      case Opened::No:
        return false;
      case Opened::Busy:
        if (m_current == &m_own) return false;
        m_current = &m_own;
        continue;
      case Opened::Moved:
        continue;
      case Opened::Yes:
        break;
    }
    struct stat status {};
    if (fstat(m_descriptor.Get(), &status) == 0 && status.st_size == 0) return true;
    // Numbered while it is locked, so that no other process begins the same file meanwhile.
    const bool away = NumberAway();
    const int error = errno;
    End();
    errno = error;
    if (!away) return false;
  }
  errno = EBUSY;
  return false;
}

bool SinkFiles::Renew() {
  struct stat status {
  }, named{};
  const bool whole =
      m_descriptor.Get(&status) >= 0 && status.st_nlink != 0 && !IsCut(status, m_size);
  const bool there = stat(m_current->path.c_str(), &named) == 0 && IsSameFile(named, status);
  if (!whole || there) return Begin();
  CheckedDescriptor moved = std::move(m_descriptor);
  const std::uint64_t size = m_size;
  const Names* const current = m_current;
  if (Begin()) return true;
  m_descriptor = std::move(moved);
  m_size = size;
  m_current = current;
  return true;
}

void SinkFiles::End() {
  m_descriptor.Close();
  m_size = 0;
}

bool SinkFiles::Write(const std::uint8_t* bytes, std::size_t size, std::size_t* written) {
  *written = 0;
  struct stat status {};
  int file = m_descriptor.Get(&status);
  if (file < 0 && Regain()) file = m_descriptor.Get(&status);
  if (file < 0) {
    errno = EBADF;
    return false;
  }
  if (!IsInPlace(status)) {
    errno = ESTALE;
    return false;
  }
  // Beyond this limit the kernel would send a signal that ends the process.
  rlimit limit{};
  const bool limited = getrlimit(RLIMIT_FSIZE, &limit) == 0 && limit.rlim_cur != RLIM_INFINITY;
  const std::uint64_t room =
      limited ? limit.rlim_cur - std::min<std::uint64_t>(limit.rlim_cur, m_size) : size;
  const std::size_t fits = std::min<std::uint64_t>(size, room);
  while (*written < fits) {
    const ssize_t taken = write(file, bytes + *written, fits - *written);
    if (taken < 0 && errno == EINTR) continue;
    if (taken <= 0) {
      if (taken == 0) errno = ENOSPC;
      return false;
    }
    *written += static_cast<std::size_t>(taken);
    m_size += static_cast<std::size_t>(taken);
  }
  if (fits < size) errno = EFBIG;
  return fits == size;
}

void SinkFiles::TakeBack(std::size_t bytes) {
  m_size -= bytes;
  // If this fails the file ends in a cut record, which every reader must accept anyway. Later
  // records go to a new file.
  const int file = m_descriptor.Get();
  if (file < 0 || ftruncate(file, static_cast<off_t>(m_size)) != 0 ||
      lseek(file, static_cast<off_t>(m_size), SEEK_SET) < 0)
    End();
}

void SinkFiles::Abandon() {
  End();
}

int SinkFiles::OpenInFolder(bool* shared) {
  const char* const folder = m_current->folder.empty() ? "." : m_current->folder.c_str();
  const int in = open(folder, O_PATH | O_DIRECTORY | O_CLOEXEC);
  if (in < 0) return -1;
  struct stat status {};
  *shared = fstat(in, &status) != 0 || IsShared(status);
  // Does not wait for the reader of a FIFO.
  const int flags = O_WRONLY | O_CREAT | O_CLOEXEC | O_NOCTTY | O_NONBLOCK;
  const int file = openat(in, m_current->Name(), flags | (*shared ? O_NOFOLLOW : 0), 0600);
  const int error = errno;
  close(in);
  errno = error;
  return file;
}

SinkFiles::Opened SinkFiles::OpenLocked() {
  const char* const path = m_current->path.c_str();
  bool shared = false;
  m_descriptor = CheckedDescriptor(OpenInFolder(&shared));
  const int file = m_descriptor.Get();
  if (file < 0) return Opened::No;
  Opened opened = Opened::No;
  int error = EINVAL;
  struct stat status {};
  struct stat named {};
  const bool known = fstat(file, &status) == 0;
  if (known && shared && (status.st_uid != geteuid() || status.st_nlink > 1)) {
    error = EACCES;
  } else if (known && S_ISREG(status.st_mode)) {
    // On a file system without locks the file is written without a lock.
    const bool locked = flock(file, LOCK_EX | LOCK_NB) == 0 || errno != EWOULDBLOCK;
    error = errno;
    // Another instance may have numbered the file away before it was locked.
    const bool same = stat(path, &named) == 0 && IsSameFile(named, status);
    opened = !locked ? Opened::Busy : same ? Opened::Yes : Opened::Moved;
  }
  if (opened == Opened::Yes) return opened;
  End();
  errno = error;
  return opened;
}

// The application has closed the descriptor, and perhaps opened another file under its number.
bool SinkFiles::Regain() {
  const dev_t device = m_descriptor.Device();
  const ino_t inode = m_descriptor.Inode();
  const std::uint64_t size = m_size;
  const bool same = OpenLocked() == Opened::Yes && m_descriptor.Device() == device &&
                    m_descriptor.Inode() == inode &&
                    lseek(m_descriptor.Get(), static_cast<off_t>(size), SEEK_SET) >= 0;
  if (!same) End();
  return same;
}

// The file's status costs nothing extra and shows a removal or a cut immediately. The name is
// checked only now and then.
bool SinkFiles::IsInPlace(const struct stat& status) {
  if (IsCut(status, m_size)) return false;
  const std::uint64_t now = CoarseNs();
  if (status.st_nlink != 0 && now < m_lookNs) return true;
  m_lookNs = now + kLookNs;
  struct stat named {};
  return stat(m_current->path.c_str(), &named) == 0 && IsSameFile(named, status);
}

bool SinkFiles::NumberAway() {
  const std::uint32_t most = m_options.maxFiles;
  std::uint32_t last = 1;
  while (Exists(Numbered(last, m_to)) && (most == 0 || last < most)) ++last;
  for (; last > 1; --last)
    if (std::rename(Numbered(last - 1, m_from), Numbered(last, m_to)) != 0) return false;
  if (std::rename(m_current->path.c_str(), Numbered(1, m_to)) != 0) return false;
  // The limit may have become lower.
  if (most != 0)
    for (std::uint32_t more = most + 1; std::remove(Numbered(more, m_to)) == 0;) ++more;
  return true;
}

const char* SinkFiles::Numbered(std::uint32_t number, PathText& to) const {
  std::snprintf(to, sizeof to, "%s.%u%s", m_current->stem.c_str(), number, kExtension.data());
  return to;
}
