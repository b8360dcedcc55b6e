#include "base/file_mark.h"

#include <sys/stat.h>

namespace {

std::int64_t Nanoseconds(const timespec& time) {
  return std::int64_t{time.tv_sec} * 1'000'000'000 + time.tv_nsec;
}

FileMark MarkFrom(const struct stat& status) {
  return {status.st_dev, status.st_ino, status.st_size, Nanoseconds(status.st_mtim),
          Nanoseconds(status.st_ctim)};
}

}  // namespace

std::optional<FileMark> FileMark::Of(int descriptor) {
  struct stat status;
  if (fstat(descriptor, &status) != 0) return std::nullopt;
  return MarkFrom(status);
}

std::optional<FileMark> FileMark::At(const std::string& path) {
  struct stat status;
  if (stat(path.c_str(), &status) != 0) return std::nullopt;
  return MarkFrom(status);
}
