// Keeps reads of a mapped file alive when its pages go away beneath it.
//
// A read of a page that the file no longer has (another program cut it, a disk or a network share
// failed) raises SIGBUS. Within a guarded range the page is replaced by zeros and the read goes on;
// any other SIGBUS reaches whoever handled it before.
//
// Owner    The range must stay mapped until the FaultGuard is gone.
// Threads  Any. The handler takes no lock and allocates nothing.
#pragma once

#include <cstddef>
#include <utility>

class FaultGuard {
 public:
  FaultGuard() = default;
  enum class Access { Read, Write };
  // REQUIRES: `begin` and `bytes` are multiples of the page size. What is written to a page that
  // went away (Access::Write) is lost with it.
  FaultGuard(const void* begin, std::size_t bytes, Access access = Access::Read);
  FaultGuard(FaultGuard&& other) noexcept : m_range(std::exchange(other.m_range, nullptr)) {}
  FaultGuard& operator=(FaultGuard&& other) noexcept;
  ~FaultGuard() { Release(); }
  // Has a page of the range been replaced?
  bool LostPages() const;

  struct Range;

 private:
  void Release();
  Range* m_range = nullptr;
};
