#include "base/rename_file.h"

#include <errno.h>
#include <fcntl.h>
#include <stdio.h>
#include <unistd.h>

bool RenameWithoutReplacing(const std::string& from, const std::string& to) {
  if (renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0) return true;
  const bool unknownHere = errno == EINVAL || errno == ENOSYS;
  return unknownHere && RenameByLink(from, to);
}

bool RenameByLink(const std::string& from, const std::string& to) {
  if (link(from.c_str(), to.c_str()) != 0) return false;
  if (unlink(from.c_str()) == 0) return true;
  const int reason = errno;
  unlink(to.c_str());
  errno = reason;
  return false;
}
