#include "base/make_folder.h"

#include <sys/stat.h>

#include <cerrno>

#include "base/fail_with.h"

bool MakeFolder(const std::string& path, std::string* why) {
  for (std::size_t slash = path.find('/', 1); slash != path.npos; slash = path.find('/', slash + 1))
    mkdir(path.substr(0, slash).c_str(), 0755);
  return mkdir(path.c_str(), 0700) == 0 || errno == EEXIST || FailOn(why, path);
}
