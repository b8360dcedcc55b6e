// The children of a node, in order of arrival: a vector that erases at its front as fast as it
// appends, because a trim removes the oldest traces.
//
// Shape    One word per entry. A bit in the word says whether the entry is a leaf, so that a walk
//          in search of blocks reads no leaf. Positions are 0..size()-1; they shift when an earlier
//          entry is erased.
// Owner    Owns nothing: the storage is the pool's, and the nodes are in stores of their own.
// Errors   std::bad_alloc.
// Threads  Interface thread.
#pragma once

#include <cstddef>
#include <cstdint>

class CTraceEvent;
class CExecutionBlock;
class WordPool;

class ChildList {
 public:
  ChildList() = default;
  ChildList(const ChildList&) = delete;
  ChildList& operator=(const ChildList&) = delete;

  std::size_t size() const { return m_end - m_begin; }
  bool empty() const { return m_end == m_begin; }
  // REQUIRES: position < size(), here and in the functions after it.
  CTraceEvent* operator[](std::size_t position) const {
    return reinterpret_cast<CTraceEvent*>(m_words[m_begin + position] & ~kLeafBit);
  }
  bool IsLeaf(std::size_t position) const { return m_words[m_begin + position] & kLeafBit; }
  // The entry as a node with children; null for a leaf.
  CExecutionBlock* BlockAt(std::size_t position) const;
  CTraceEvent* back() const { return (*this)[size() - 1]; }

  // All calls must use the same pool.
  void AppendLeaf(WordPool& pool, CTraceEvent* leaf) {
    Append(pool, reinterpret_cast<std::uintptr_t>(leaf) | kLeafBit);
  }
  void AppendBlock(WordPool& pool, CTraceEvent* block) {
    Append(pool, reinterpret_cast<std::uintptr_t>(block));
  }
  // Constant time at the front; elsewhere it moves the entries on the shorter side.
  void Erase(std::size_t position);
  // Empties the list and frees its storage. If the pool was cleared, the storage is only forgotten.
  void Clear(WordPool& pool);
  void Forget();
  // The position of the entry; size() if it is not in the list. Searches from the front.
  std::size_t PositionOf(const CTraceEvent* entry) const;
  // The position of the first leaf at or after `from`; size() if there is none. It remembers how
  // far it has searched: repeated calls for about the same position take constant time while the
  // list is erased only at its front.
  std::size_t FirstLeaf(std::size_t from);

 private:
  static constexpr std::uintptr_t kLeafBit = 1;
  void Append(WordPool& pool, std::uintptr_t word) {
    if (m_end == m_capacity) MakeRoom(pool);
    m_words[m_end++] = word;
  }
  void MakeRoom(WordPool& pool);

  std::uintptr_t* m_words = nullptr;
  std::uint32_t m_begin = 0, m_end = 0, m_capacity = 0;  // a power of two, or 0
  std::uint32_t m_noLeafBefore = 0;                      // position
};
