#include "quor/runtime/sink_files.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <charconv>
#include <cstdio>
#include <cstring>
#include <utility>

namespace {

constexpr std::string_view kExtension = ".trc";
constexpr std::uint64_t kMegabyte = 1024 * 1024;

std::string StemOf(const std::string& path) {
  const bool has =
      path.size() > kExtension.size() &&
      path.compare(path.size() - kExtension.size(), kExtension.size(), kExtension) == 0;
  return has ? path.substr(0, path.size() - kExtension.size()) : path;
}

bool Say(std::string* why, const std::string& path) {
  if (why) *why = path + ": " + std::strerror(errno);
  return false;
}

bool Exists(const std::string& path) {
  struct stat status {};
  return lstat(path.c_str(), &status) == 0;
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
    : m_path(std::move(path)), m_stem(StemOf(m_path)), m_options(options) {}

SinkFiles::~SinkFiles() {
  End();
}

bool SinkFiles::Begin(std::string* why) {
  End();
  for (int attempt = 0; attempt < 3; ++attempt) {
    bool busy = false;
    if (!OpenLocked(why, &busy)) {
      const std::string own = StemOf(m_path) + ".pid" + std::to_string(getpid());
      if (!busy || m_stem == own) return false;
      m_stem = own;
      m_path = own + std::string(kExtension);
      continue;
    }
    struct stat status {};
    if (fstat(m_descriptor, &status) == 0 && status.st_size == 0) return true;
    // Numbered while it is locked, so that no other process begins the same file meanwhile.
    const bool away = NumberAway(why);
    End();
    if (!away) return false;
  }
  errno = EBUSY;
  return Say(why, m_path);
}

void SinkFiles::End() {
  if (m_descriptor >= 0) close(m_descriptor);
  m_descriptor = -1;
  m_size = 0;
}

bool SinkFiles::Write(const std::uint8_t* bytes, std::size_t size, std::size_t* written,
                      std::string* why) {
  *written = 0;
  while (*written < size) {
    const ssize_t taken = write(m_descriptor, bytes + *written, size - *written);
    if (taken < 0 && errno == EINTR) continue;
    if (taken <= 0) {
      if (taken == 0) errno = ENOSPC;
      return Say(why, m_path);
    }
    *written += static_cast<std::size_t>(taken);
    m_size += static_cast<std::size_t>(taken);
  }
  return true;
}

void SinkFiles::TakeBack(std::size_t bytes) {
  m_size -= bytes;
  // Where this fails the file ends in a record cut short, which every reader must bear anyway; what
  // follows goes to a new file.
  if (ftruncate(m_descriptor, static_cast<off_t>(m_size)) != 0 ||
      lseek(m_descriptor, static_cast<off_t>(m_size), SEEK_SET) < 0)
    End();
}

void SinkFiles::Abandon() {
  End();
}

bool SinkFiles::OpenLocked(std::string* why, bool* busy) {
  // Never waits for the reader of a FIFO; anything but a regular file is refused.
  m_descriptor = open(m_path.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC | O_NOCTTY | O_NONBLOCK, 0666);
  if (m_descriptor < 0) return Say(why, m_path);
  struct stat status {};
  if (fstat(m_descriptor, &status) != 0 || !S_ISREG(status.st_mode)) {
    errno = EINVAL;
  } else if (flock(m_descriptor, LOCK_EX | LOCK_NB) == 0 || errno != EWOULDBLOCK) {
    return true;  // also on file systems without locks
  } else {
    *busy = true;
  }
  Say(why, m_path);
  End();
  return false;
}

bool SinkFiles::NumberAway(std::string* why) {
  std::uint32_t last = 1;
  while (Exists(Numbered(last)) && (m_options.maxFiles == 0 || last < m_options.maxFiles)) ++last;
  for (; last > 1; --last)
    if (std::rename(Numbered(last - 1).c_str(), Numbered(last).c_str()) != 0)
      return Say(why, Numbered(last));
  if (std::rename(m_path.c_str(), Numbered(1).c_str()) != 0) return Say(why, Numbered(1));
  // The limit may have been lowered since.
  if (m_options.maxFiles != 0)
    for (std::uint32_t more = m_options.maxFiles + 1; std::remove(Numbered(more).c_str()) == 0;)
      ++more;
  return true;
}

std::string SinkFiles::Numbered(std::uint32_t number) const {
  return m_stem + "." + std::to_string(number) + std::string(kExtension);
}
