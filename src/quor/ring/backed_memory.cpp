#include "quor/ring/backed_memory.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

#ifndef MADV_POPULATE_WRITE
#define MADV_POPULATE_WRITE 23
#endif

namespace {

constexpr std::size_t kPageBytes = 4096;
constexpr std::size_t kStepMin = 4 * kPageBytes, kStepMax = 64 * kPageBytes;

bool Populate(void* begin, std::size_t bytes) {
  const int error = errno;
  int result = 0;
  do {
    result = madvise(begin, bytes, MADV_POPULATE_WRITE);
  } while (result != 0 && (errno == EINTR || errno == EAGAIN));
  // An older kernel: the whole file was given its room when it was made.
  const bool good = result == 0 || errno == EINVAL;
  errno = error;
  return good;
}

}  // namespace

bool BackedMemory::Grow(std::size_t bytes) noexcept {
  if (bytes > m_bytes) return false;
  std::size_t backed = Backed();
  const std::size_t step = std::clamp(backed, kStepMin, kStepMax);
  std::size_t to = std::min(m_bytes, std::max(backed + step, bytes));
  to = std::min(m_bytes, (to + kPageBytes - 1) / kPageBytes * kPageBytes);
  if (!Populate(m_begin + backed, to - backed)) return false;
  while (backed < to && !m_backed.compare_exchange_weak(backed, to, std::memory_order_release)) {
  }
  return true;
}

bool BeginBacking(void* memory, int file, std::size_t bytes) {
  if (madvise(memory, kPageBytes, MADV_POPULATE_WRITE) == 0) return true;
  return errno == EINVAL && fallocate(file, 0, 0, static_cast<off_t>(bytes)) == 0;
}
