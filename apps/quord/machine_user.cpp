#include "machine_user.h"

#include <dirent.h>
#include <fcntl.h>
#include <grp.h>
#include <pwd.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "base/fail_with.h"

namespace {

bool IsEmpty(int folder) {
  const int copy = openat(folder, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  DIR* const entries = copy >= 0 ? fdopendir(copy) : nullptr;
  if (!entries) {
    if (copy >= 0) close(copy);
    return false;
  }
  bool empty = true;
  while (const dirent* const entry = readdir(entries))
    if (std::strcmp(entry->d_name, ".") != 0 && std::strcmp(entry->d_name, "..") != 0)
      empty = false;
  closedir(entries);
  return empty;
}

// A wrong path would give away a folder of the system. So one with files in it must be the user's.
bool IsForUser(int folder, const std::string& path, const passwd& user, std::string* why) {
  struct stat status {};
  if (fstat(folder, &status) != 0) return FailOn(why, path);
  return status.st_uid == user.pw_uid || IsEmpty(folder) ||
         FailWith(why, path + ": is not empty and does not belong to \"" + user.pw_name +
                           "\": name another folder, or give it to that user");
}

// By its descriptor: what stands under the name may be exchanged by whoever owns it already.
bool GiveFolder(const std::string& path, const passwd& user, mode_t mode, std::string* why) {
  if (mkdir(path.c_str(), 0700) != 0 && errno != EEXIST) return FailOn(why, path);
  const int folder = open(path.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
  if (folder < 0) return FailOn(why, path);
  const bool given =
      IsForUser(folder, path, user, why) &&
      ((fchown(folder, user.pw_uid, user.pw_gid) == 0 && fchmod(folder, mode) == 0) ||
       FailOn(why, path));
  close(folder);
  return given;
}

bool HasBecome(const passwd& user) {
  uid_t uids[3] = {};
  gid_t gids[3] = {};
  if (getresuid(&uids[0], &uids[1], &uids[2]) != 0 || getresgid(&gids[0], &gids[1], &gids[2]) != 0)
    return false;
  for (int i = 0; i < 3; ++i)
    if (uids[i] != user.pw_uid || gids[i] != user.pw_gid) return false;
  return getgroups(0, nullptr) == 0 && setuid(0) != 0 && setgid(0) != 0;
}

}  // namespace

bool BecomeMachineUser(const MachineUser& user, std::string* why) {
  const passwd* const found = getpwnam(user.name.c_str());
  if (!found)
    return FailWith(why, "there is no user \"" + user.name +
                             "\" to serve all accounts as; make one, or name another with --user");
  if (found->pw_uid == 0 || found->pw_gid == 0)
    return FailWith(why, "\"" + user.name + "\" has rights of root: name another user");
  if (!GiveFolder(user.place, *found, 0755, why) || !GiveFolder(user.state, *found, 0700, why))
    return false;
  if (setgroups(0, nullptr) != 0 || setresgid(found->pw_gid, found->pw_gid, found->pw_gid) != 0 ||
      setresuid(found->pw_uid, found->pw_uid, found->pw_uid) != 0 || !HasBecome(*found) ||
      prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) != 0)
    return FailWith(why, "cannot become \"" + user.name + "\": " + SystemReason());
  return true;
}
