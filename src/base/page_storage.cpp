#include "base/page_storage.h"

#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>
#include <new>

void* NewPages(std::size_t bytes) {
  void* const storage =
      mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (storage == MAP_FAILED) throw std::bad_alloc();
  return storage;
}

void* NewHugePages(std::size_t bytes) {
  auto* const twice = static_cast<std::byte*>(NewPages(2 * bytes));
  const std::size_t before = -reinterpret_cast<std::uintptr_t>(twice) & (bytes - 1);
  if (before > 0) munmap(twice, before);
  munmap(twice + before + bytes, bytes - before);
  madvise(twice + before, bytes, MADV_HUGEPAGE);
  return twice + before;
}

std::size_t WholePages(std::size_t bytes) {
  static const auto page = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
  return (bytes + page - 1) / page * page;
}

void FreePages(void* storage, std::size_t bytes) {
  munmap(storage, bytes);
}
