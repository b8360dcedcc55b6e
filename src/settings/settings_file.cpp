#include "settings/settings_file.h"

#include <errno.h>
#include <fcntl.h>
#include <stdio.h>
#include <stdlib.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <system_error>
#include <thread>

#include "base/file_stream.h"

namespace {

constexpr std::size_t kLongestBytes = 1 << 20;
constexpr std::chrono::milliseconds kLockWait(1000);
constexpr std::chrono::milliseconds kLockRetry(2);

class Descriptor {
 public:
  explicit Descriptor(int number) : m_number(number) {}
  ~Descriptor() {
    if (m_number >= 0) close(m_number);
  }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;
  explicit operator bool() const { return m_number >= 0; }
  int Get() const { return m_number; }

 private:
  int m_number;
};

// Links are followed, so that a settings file kept elsewhere stays a link.
std::string Target(const std::string& path) {
  std::error_code error;
  const auto target = std::filesystem::canonical(path, error);
  return error ? path : target.string();
}

// A program holds the lock only for a moment. If one holds it longer it hangs: then the write is
// given up, so that the window does not hang too.
bool TakeLock(int descriptor) {
  const auto deadline = std::chrono::steady_clock::now() + kLockWait;
  while (flock(descriptor, LOCK_EX | LOCK_NB) != 0) {
    if (errno == EINTR) continue;
    if (errno != EWOULDBLOCK) return true;  // no locks on this file system
    if (std::chrono::steady_clock::now() > deadline) return false;
    std::this_thread::sleep_for(kLockRetry);
  }
  return true;
}

bool Replace(const std::string& path, const std::string& text) {
  std::string temporary = path + ".XXXXXX";
  const Descriptor file(mkostemp(temporary.data(), O_CLOEXEC));
  if (!file) return false;
  struct stat old;
  if (stat(path.c_str(), &old) == 0) {
    // An administrator who starts the program for a user does not take the file from that user.
    [[maybe_unused]] const int owned = fchown(file.Get(), old.st_uid, old.st_gid);
    fchmod(file.Get(), old.st_mode & 0777);
  }
  ds_File_t::FOStream_t stream(file.Get());
  if (stream.Write(text.data(), text.size()) && rename(temporary.c_str(), path.c_str()) == 0) {
    return true;
  }
  unlink(temporary.c_str());
  return false;
}

}  // namespace

std::optional<std::string> ReadSettingsFile(const std::string& path) {
  const Descriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
  if (!file) return errno == ENOENT ? std::optional<std::string>("") : std::nullopt;
  struct stat status;
  if (fstat(file.Get(), &status) != 0 || !S_ISREG(status.st_mode)) return {};
  const auto size = static_cast<std::size_t>(status.st_size);
  if (size > kLongestBytes) return {};
  std::string text(size, '\0');
  std::size_t filled = 0;
  while (filled < text.size()) {
    const ssize_t got = read(file.Get(), text.data() + filled, text.size() - filled);
    if (got < 0 && errno == EINTR) continue;
    if (got < 0) return {};
    if (got == 0) break;
    filled += static_cast<std::size_t>(got);
  }
  text.resize(filled);
  return text;
}

bool ChangeSettingsFile(const std::string& path,
                        const std::function<std::string(const std::string&)>& change) {
  const std::string target = Target(path);
  std::error_code ignored;
  std::filesystem::create_directories(std::filesystem::path(target).parent_path(), ignored);
  const Descriptor lock(
      open((target + ".lock").c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NONBLOCK, 0600));
  if (!lock || !TakeLock(lock.Get())) return false;
  const auto text = ReadSettingsFile(target);
  if (!text) return false;
  const std::string changed = change(*text);
  if (changed.size() > kLongestBytes) return false;
  return changed == *text || Replace(target, changed);
}
