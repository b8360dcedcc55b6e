// Memory of a shared file, given its pages before they are written to.
//
// Why      The kernel allocates a page of a file in memory when the page is first touched. If the
//          file system is full at that time, the kernel ends the program. When a program asks for
//          the page in advance, the kernel reports the failure instead, and the trace that would
//          have been written is counted as lost.
// Shape    Grows from the front, in steps that double.
// Threads  Any, also in a signal handler. If two threads grow it at the same time, both do the same
//          work, which is harmless.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>

class BackedMemory {
 public:
  BackedMemory() = default;
  // The area begins at a page boundary. It has no pages yet.
  BackedMemory(void* begin, std::size_t bytes)
      : m_begin(static_cast<std::uint8_t*>(begin)), m_bytes(bytes) {}
  BackedMemory& operator=(const BackedMemory& other) noexcept {
    m_begin = other.m_begin;
    m_bytes = other.m_bytes;
    m_backed.store(other.Backed(), std::memory_order_relaxed);
    return *this;
  }

  // Makes the first `bytes` of the area writable without a fault. False: no memory is left.
  bool Reach(std::size_t bytes) noexcept { return bytes <= Backed() || Grow(bytes); }
  std::size_t Backed() const { return m_backed.load(std::memory_order_acquire); }
  bool IsWhole() const { return Backed() == m_bytes; }

 private:
  bool Grow(std::size_t bytes) noexcept;

  std::uint8_t* m_begin = nullptr;
  std::size_t m_bytes = 0;
  std::atomic<std::size_t> m_backed{0};
};

// Call it once for each mapped file, before any BackedMemory in it. Kernels before Linux 5.14
// cannot allocate pages in advance: there this call allocates the whole file. False: no memory is
// left.
bool BeginBacking(void* memory, int file, std::size_t bytes);
