#include "input/private_file.h"

#include <errno.h>
#include <fcntl.h>
#include <stdlib.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <utility>

#include "base/fail_with.h"
#include "records/trc_walk.h"

namespace {

constexpr std::uint64_t kBytesPerLook = 16u << 20;
// So much stays free for others, but never less than a hundredth of the file system.
constexpr std::uint64_t kLeftFree = 64u << 20;

int OpenWithoutName(const std::string& folder) {
  const int file = open(folder.c_str(), O_TMPFILE | O_RDWR | O_CLOEXEC, 0600);
  if (file >= 0) return file;
  // Not every file system knows files without a name.
  std::string name = folder + "/trc-XXXXXX";
  const int named = mkostemp(name.data(), O_CLOEXEC);
  if (named >= 0) unlink(name.c_str());
  return named;
}

}  // namespace

PrivateFile::~PrivateFile() {
  if (m_descriptor >= 0) close(m_descriptor);
}

PrivateFile::PrivateFile(PrivateFile&& other) noexcept {
  *this = std::move(other);
}

PrivateFile& PrivateFile::operator=(PrivateFile&& other) noexcept {
  std::swap(m_descriptor, other.m_descriptor);
  std::swap(m_size, other.m_size);
  std::swap(m_checkedTo, other.m_checkedTo);
  std::swap(m_folder, other.m_folder);
  return *this;
}

bool PrivateFile::Create(std::string* why) {
  const char* const folder = getenv("TMPDIR");
  m_folder = folder && *folder ? folder : "/tmp";
  m_descriptor = OpenWithoutName(m_folder);
  if (m_descriptor >= 0) return true;
  return FailWith(why, "no temporary file in " + m_folder + ": " + strerror(errno));
}

bool PrivateFile::HasRoomFor(std::uint64_t bytes, std::string* why) const {
  struct statvfs system {};
  if (fstatvfs(m_descriptor, &system) != 0) return true;  // the write will tell
  const std::uint64_t unit = system.f_frsize, free = system.f_bavail * unit;
  const std::uint64_t left = std::max(kLeftFree, system.f_blocks * unit / 100);
  if (free >= left && free - left >= bytes) return true;
  return FailWith(
      why, "it needs more room than is free in " + m_folder + "; TMPDIR may name another folder");
}

bool PrivateFile::Append(const void* bytes, std::size_t count, std::string* why) {
  if (m_size + count > kTrcFileBytesMax)
    return FailWith(why, "it has 4 GiB or more, and no trace file is that long");
  if (m_size + count > m_checkedTo) {
    if (!HasRoomFor(count + kBytesPerLook, why)) return false;
    m_checkedTo = m_size + count + kBytesPerLook;
  }
  const char* at = static_cast<const char*>(bytes);
  while (count > 0) {
    const ssize_t written = write(m_descriptor, at, count);
    if (written < 0 && errno == EINTR) continue;
    if (written <= 0)
      return FailWith(why,
                      "cannot write to a temporary file in " + m_folder + ": " + strerror(errno));
    at += written;
    count -= static_cast<std::size_t>(written);
    m_size += static_cast<std::uint64_t>(written);
  }
  return true;
}
