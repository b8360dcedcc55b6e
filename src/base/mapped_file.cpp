#include "base/mapped_file.h"

#include <errno.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <vector>

#include "base/fail_with.h"

namespace {

constexpr std::uint64_t kTooLong = std::uint64_t{1} << 32;
// Of a page of the page tables' next level: where a file lies in the kernel's cache in pieces of
// this size and is mapped at a multiple of it, one fault maps a whole piece. That makes the first
// walk over a mapping three times as fast.
constexpr std::size_t kHugePage = std::size_t{2} << 20;

std::size_t RoundUp(std::size_t bytes, std::size_t unit) {
  return (bytes + unit - 1) / unit * unit;
}

// Returns how many bytes were read: fewer than asked for if the file has become shorter. The rest
// of the buffer is unchanged.
std::size_t ReadAt(int descriptor, std::uint8_t* to, std::size_t bytes, std::size_t offset) {
  std::size_t read = 0;
  while (read < bytes) {
    const ssize_t got =
        pread(descriptor, to + read, bytes - read, static_cast<off_t>(offset + read));
    if (got < 0 && errno == EINTR) continue;
    if (got <= 0) break;
    read += static_cast<std::size_t>(got);
  }
  return read;
}

}  // namespace

// The addresses for the file, with a guard behind it; null if there are none.
std::uint8_t* MappedFile::Reserve() {
  const std::size_t spare = m_mapped >= kHugePage ? kHugePage : 0;
  void* const base = mmap(nullptr, m_used + spare, PROT_READ | PROT_WRITE,
                          MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
  if (base == MAP_FAILED) return nullptr;
  auto* const bytes = static_cast<std::uint8_t*>(base);
  if (spare == 0) return m_data = bytes;
  const std::size_t before = -reinterpret_cast<std::uintptr_t>(bytes) & (kHugePage - 1);
  if (before > 0) munmap(bytes, before);
  munmap(bytes + before + m_used, spare - before);
  return m_data = bytes + before;
}

// Maps the whole pages and copies the last, partial one. If that page were mapped, bytes that are
// later appended to the file would appear where zeros are promised.
bool MappedFile::Map() {
  const auto page = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
  m_mapped = m_size / page * page;
  m_used = RoundUp(m_size, page) + RoundUp(kGuardBytes, page);
  std::uint8_t* const bytes = Reserve();
  if (!bytes) return false;
  if (m_mapped > 0) {
    if (mmap(bytes, m_mapped, PROT_READ, MAP_SHARED | MAP_FIXED, m_file.Descriptor(), 0) ==
        MAP_FAILED) {
      return false;
    }
    m_guard = FaultGuard(bytes, m_mapped);
    madvise(bytes, m_mapped, MADV_SEQUENTIAL);  // the load reads it once, from front to back
  }
  ReadAt(m_file.Descriptor(), bytes + m_mapped, m_size - m_mapped, m_mapped);
  return mprotect(bytes + m_mapped, m_used - m_mapped, PROT_READ) == 0;
}

std::shared_ptr<const MappedFile> MappedFile::Open(const std::string& path, std::string* why) {
  std::shared_ptr<MappedFile> file(new MappedFile);
  file->m_file = OpenForReading(path, why);
  if (!file->m_file) return nullptr;
  const std::optional<FileMark> mark = FileMark::Of(file->m_file.Descriptor());
  if (!mark) return FailWith(why, SystemReason(), nullptr);
  file->m_mark = *mark;
  const auto size = static_cast<std::uint64_t>(mark->size);
  if (size == 0) return FailWith(why, "The file is empty", nullptr);
  if (size >= kTooLong) return FailWith(why, "The file has 4 GiB or more", nullptr);
  file->m_size = static_cast<std::size_t>(size);
  if (!file->Map()) return FailWith(why, SystemReason(), nullptr);
  return file;
}

// What is not in the file any more is in the view.
void MappedFile::Copy(std::uint8_t* to, std::uint64_t from, std::size_t bytes) const {
  const auto begin = static_cast<std::size_t>(from);
  const std::size_t inPages = begin < m_mapped ? std::min(bytes, m_mapped - begin) : 0;
  const std::size_t read = m_file ? ReadAt(m_file.Descriptor(), to, inPages, begin) : 0;
  std::copy_n(m_data + begin + read, bytes - read, to + read);
}

bool MappedFile::IsTailAsCopied() const {
  std::vector<std::uint8_t> tail(m_size - m_mapped);
  return ReadAt(m_file.Descriptor(), tail.data(), tail.size(), m_mapped) == tail.size() &&
         std::equal(tail.begin(), tail.end(), m_data + m_mapped);
}

FileChange MappedFile::Change() const {
  using Kind = FileChange::Kind;
  const std::optional<FileMark> now = FileMark::Of(m_file.Descriptor());
  if (now && now->size < m_mark.size)
    return {Kind::Shorter, static_cast<std::uint64_t>(m_mark.size - now->size)};
  if (!now || m_guard.LostPages()) return {Kind::Unreadable};
  if (now->writtenNs == m_mark.writtenNs) return {};
  // A file that grows is written to; only the copy shows whether its old end is unchanged.
  return {now->size > m_mark.size && IsTailAsCopied() ? Kind::None : Kind::Written};
}

MappedFile::~MappedFile() {
  m_guard = FaultGuard();
  if (m_data) munmap(m_data, m_used);
}
