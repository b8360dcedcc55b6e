#include "machine_user.h"

#include <fcntl.h>
#include <grp.h>
#include <pwd.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "base/fail_with.h"

namespace {

// By its descriptor: what stands under the name may be exchanged by whoever owns it already.
bool GiveFolder(const std::string& path, const passwd& user, mode_t mode, std::string* why) {
  if (mkdir(path.c_str(), 0700) != 0 && errno != EEXIST) return FailOn(why, path);
  const int folder = open(path.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
  const bool given =
      folder >= 0 && fchown(folder, user.pw_uid, user.pw_gid) == 0 && fchmod(folder, mode) == 0;
  const int error = errno;
  if (folder >= 0) close(folder);
  return given || FailWith(why, path + ": " + SystemReason(error));
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
