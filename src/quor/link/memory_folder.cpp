#include "quor/link/memory_folder.h"

#include <fcntl.h>
#include <linux/magic.h>
#include <sys/file.h>
#include <sys/random.h>
#include <sys/stat.h>
#include <sys/vfs.h>
#include <time.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>

namespace {

constexpr const char* kMemory = "/dev/shm";
constexpr int kLockTries = 20;  // of a millisecond

bool MemoryIsUsable() {
  struct stat memory {};
  const int shared = open(kMemory, O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  const bool usable = shared >= 0 && LiesInMemory(shared) && fstat(shared, &memory) == 0;
  if (shared >= 0) close(shared);
  return usable;
}

// The service of a machine may be forbidden to change groups, and need not where it has its own.
bool OpenToOthers(const std::string& folder, mode_t mode) {
  struct stat status {};
  return stat(folder.c_str(), &status) == 0 &&
         (status.st_gid == getegid() ||
          chown(folder.c_str(), static_cast<uid_t>(-1), getegid()) == 0) &&
         chmod(folder.c_str(), mode) == 0;
}

}  // namespace

bool LiesInMemory(int folder) {
  struct statfs system {};
  return fstatfs(folder, &system) == 0 && system.f_type == TMPFS_MAGIC;
}

bool IsDamaged(int error) {
  return error == ENOENT || error == ENOTDIR || error == ELOOP || error == EACCES ||
         error == EINVAL;
}

std::string Hex(std::uint64_t number) {
  char text[20];
  std::snprintf(text, sizeof text, "%llx", static_cast<unsigned long long>(number));
  return text;
}

std::string OwnInMemory() {
  return std::string(kMemory) + "/quor-" + std::to_string(geteuid()) + "-";
}

void LinkToMemory(int runtime, mode_t mode) {
  std::uint64_t random = 0;
  if (!MemoryIsUsable() || getrandom(&random, sizeof random, GRND_NONBLOCK) != sizeof random)
    return;
  const std::string target = OwnInMemory() + Hex(random);
  if (mkdir(target.c_str(), 0700) != 0) return;
  // The folder of a link lets others in only when it is complete.
  const bool isOpen = mode == 0700 || OpenToOthers(target, mode);
  if (!isOpen || symlinkat(target.c_str(), runtime, kSegments) != 0) rmdir(target.c_str());
}

bool LockSoon(int runtime) {
  for (int tries = 0; tries < kLockTries; ++tries) {
    if (flock(runtime, LOCK_EX | LOCK_NB) == 0) return true;
    const timespec pause{0, 1'000'000};
    nanosleep(&pause, nullptr);
  }
  errno = EAGAIN;
  return false;
}

void RemoveEmptyMemory(int runtime) {
  char target[256] = {};
  // The lock keeps others from making it at the same time.
  if (readlinkat(runtime, kSegments, target, sizeof target - 1) > 0 &&
      std::string(target).starts_with(OwnInMemory()) && LockSoon(runtime)) {
    if (rmdir(target) == 0) unlinkat(runtime, kSegments, 0);
    flock(runtime, LOCK_UN);
  }
}
