#include "symbols/worker/regular_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <utility>

namespace {

constexpr off_t kFileBytesMax = off_t{4} << 30;

}  // namespace

// The first descriptor is only a place: a device notices nothing of it.
RegularFile::RegularFile(const std::string& path) {
  const int place = open(path.c_str(), O_PATH | O_CLOEXEC);
  if (place < 0) return;
  struct stat about {};
  if (fstat(place, &about) == 0 && S_ISREG(about.st_mode) && about.st_size > 0 &&
      about.st_size <= kFileBytesMax) {
    const std::string link = "/proc/self/fd/" + std::to_string(place);
    m_descriptor = open(link.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
  }
  close(place);
}

RegularFile& RegularFile::operator=(RegularFile&& other) noexcept {
  std::swap(m_descriptor, other.m_descriptor);
  return *this;
}

RegularFile::~RegularFile() {
  if (m_descriptor >= 0) close(m_descriptor);
}

int RegularFile::Release() {
  return std::exchange(m_descriptor, -1);
}
