#include "base/mapped_file.h"

#include <errno.h>
#include <sys/mman.h>
#include <unistd.h>

#include <system_error>

#include "base/fail_with.h"

namespace {

constexpr std::uint64_t kTooLong = std::uint64_t{1} << 32;

std::size_t RoundUp(std::size_t bytes, std::size_t unit) {
  return (bytes + unit - 1) / unit * unit;
}

// Fewer bytes than asked for when the file has become shorter: the rest stays as it is.
void ReadAt(int descriptor, std::uint8_t* to, std::size_t bytes, std::size_t offset) {
  while (bytes > 0) {
    const ssize_t got = pread(descriptor, to, bytes, static_cast<off_t>(offset));
    if (got < 0 && errno == EINTR) continue;
    if (got <= 0) return;
    to += got;
    offset += static_cast<std::size_t>(got);
    bytes -= static_cast<std::size_t>(got);
  }
}

}  // namespace

// The whole pages are mapped. The last, partial one is copied: mapped, it would show what is later
// appended to the file where zeros are promised.
bool MappedFile::Map() {
  const auto page = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
  const std::size_t mapped = m_size / page * page;
  m_reserved = RoundUp(m_size, page) + RoundUp(kGuardBytes, page);
  void* const base = mmap(nullptr, m_reserved, PROT_READ | PROT_WRITE,
                          MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
  if (base == MAP_FAILED) return false;
  auto* const bytes = static_cast<std::uint8_t*>(base);
  m_data = bytes;
  if (mapped > 0) {
    if (mmap(bytes, mapped, PROT_READ, MAP_SHARED | MAP_FIXED, m_file.Descriptor(), 0) ==
        MAP_FAILED) {
      return false;
    }
    m_guard = FaultGuard(bytes, mapped);
    madvise(bytes, mapped, MADV_SEQUENTIAL);  // the load walks it once, from front to back
  }
  ReadAt(m_file.Descriptor(), bytes + mapped, m_size - mapped, mapped);
  return mprotect(bytes + mapped, m_reserved - mapped, PROT_READ) == 0;
}

std::shared_ptr<const MappedFile> MappedFile::Open(const std::string& path, std::string* why) {
  std::shared_ptr<MappedFile> file(new MappedFile);
  file->m_file = OpenForReading(path, why);
  if (!file->m_file) return nullptr;
  const std::optional<FileMark> mark = FileMark::Of(file->m_file.Descriptor());
  if (!mark) {
    FailWith(why, std::generic_category().message(errno));
    return nullptr;
  }
  file->m_mark = *mark;
  const auto size = static_cast<std::uint64_t>(mark->size);
  if (size == 0 || size >= kTooLong) {
    FailWith(why, size == 0 ? "The file is empty" : "The file has 4 GiB or more");
    return nullptr;
  }
  file->m_size = static_cast<std::size_t>(size);
  if (!file->Map()) {
    FailWith(why, std::generic_category().message(errno));
    return nullptr;
  }
  return file;
}

MappedFile::~MappedFile() {
  m_guard = FaultGuard();
  if (m_data) munmap(const_cast<std::uint8_t*>(m_data), m_reserved);
}
