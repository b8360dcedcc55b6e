#include "quor/link/machine_place.h"

#include <sys/stat.h>
#include <unistd.h>

#include "base/fail_with.h"
#include "quor/link/paths.h"

namespace {

constexpr mode_t kOthersWrite = 022;

bool IsSafeFolder(const std::string& folder, struct stat* status, std::string* why) {
  // lstat: the target of a link is not what its maker was allowed to make.
  if (lstat(folder.c_str(), status) != 0) return FailOn(why, folder);
  if (!S_ISDIR(status->st_mode)) return FailWith(why, folder + ": not a folder");
  if ((status->st_mode & kOthersWrite) != 0)
    return FailWith(why, folder + ": others may write to it");
  return true;
}

}  // namespace

std::optional<uid_t> OwnerOfMachinePlace(const std::string& socketPath, std::string* why) {
  const std::string folder = FolderOf(socketPath), above = FolderOf(folder);
  struct stat status {};
  if (!IsSafeFolder(above, &status, why)) return std::nullopt;
  if (status.st_uid != 0 && status.st_uid != geteuid())
    return FailWith(why, above + ": belongs to another user", std::nullopt);
  if (!IsSafeFolder(folder, &status, why)) return std::nullopt;
  return status.st_uid;
}

bool HasMachineSocket(const std::string& socketPath) {
  struct stat status {};
  return lstat(socketPath.c_str(), &status) == 0 && S_ISSOCK(status.st_mode) &&
         OwnerOfMachinePlace(socketPath);
}
