// Storage for the child lists of a whole tree. It comes from large blocks of pages and is freed all
// at once, because a tree has a million lists.
//
// Shape    Runs of 2^bits words. A freed run is used again for runs of the same length. Runs of 2
//          MiB and more have pages of their own.
// Errors   std::bad_alloc.
// Threads  Interface thread.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

class WordPool {
 public:
  WordPool() = default;
  ~WordPool() { Clear(); }
  WordPool(const WordPool&) = delete;
  WordPool& operator=(const WordPool&) = delete;

  std::uintptr_t* Take(unsigned bits);
  void GiveBack(std::uintptr_t* words, unsigned bits);
  // Frees all runs.
  void Clear();

 private:
  static constexpr unsigned kBlockBits = 18;  // 2 MiB of words
  static constexpr std::size_t kBlockBytes = sizeof(std::uintptr_t) << kBlockBits;
  struct OwnPages {
    std::uintptr_t* words;
    unsigned bits;
  };
  std::array<std::uintptr_t*, kBlockBits> m_free = {};  // chained by their first word
  std::vector<void*> m_blocks;
  std::uintptr_t* m_next = nullptr;  // in the last block
  std::uintptr_t* m_end = nullptr;
  std::vector<OwnPages> m_large;
};
