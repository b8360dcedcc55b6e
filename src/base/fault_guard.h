// Lets a program read a mapped file whose pages have disappeared.
//
// A read of a page that the file no longer has (another program cut it, a disk or a network share
// failed) raises SIGBUS. In a guarded range the handler replaces the page by zeros, and the read
// continues. Any other SIGBUS is passed to the previous handler.
//
// Owner    The range must stay mapped as long as the FaultGuard lives.
// Threads  Any. The handler takes no lock and allocates nothing.
#pragma once

#include <cstddef>
#include <utility>

class FaultGuard {
 public:
  FaultGuard() = default;
  enum class Access { Read, Write };
  // REQUIRES: `begin` and `bytes` are multiples of the page size. Bytes written to a replaced page
  // (Access::Write) are lost.
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
