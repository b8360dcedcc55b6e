// Memory of a shared file, given its pages before they are written to.
//
// Why      A page of a file in memory is found when it is first touched. Where the file system is
//          full by then, the kernel ends the program. Asked for ahead it says no instead, and what
//          would have been written is counted as lost.
// Shape    Grows from the front, in steps that double.
// Threads  Any, also in a signal handler. Two that grow it at once do it twice, which is harmless.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>

class BackedMemory {
 public:
  BackedMemory() = default;
  // The area begins at a page; nothing of it is there yet.
  BackedMemory(void* begin, std::size_t bytes)
      : m_begin(static_cast<std::uint8_t*>(begin)), m_bytes(bytes) {}
  BackedMemory& operator=(const BackedMemory& other) noexcept {
    m_begin = other.m_begin;
    m_bytes = other.m_bytes;
    m_backed.store(other.Backed(), std::memory_order_relaxed);
    return *this;
  }

  // Makes the first `bytes` of the area writable without a fault. False: there is no room.
  bool Reach(std::size_t bytes) noexcept { return bytes <= Backed() || Grow(bytes); }
  std::size_t Backed() const { return m_backed.load(std::memory_order_acquire); }
  bool IsWhole() const { return Backed() == m_bytes; }

 private:
  bool Grow(std::size_t bytes) noexcept;

  std::uint8_t* m_begin = nullptr;
  std::size_t m_bytes = 0;
  std::atomic<std::size_t> m_backed{0};
};

// Once for each mapped file, before any BackedMemory in it. Before Linux 5.14 the kernel gives no
// pages ahead: there the whole file gets its room now. False: there is none.
bool BeginBacking(void* memory, int file, std::size_t bytes);
