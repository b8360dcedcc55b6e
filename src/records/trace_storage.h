// The memory of a list of traces: blocks of slots (trace_slots.h) that never move.
//
// Shape    Blocks double from 256 to 131,072 slots (2 MiB), for huge pages. Blocks of other lists
//          may follow.
// Owner    Owns the memory; knows nothing of what is in the slots.
// Errors   std::bad_alloc. Threads  One at a time.
#pragma once

#include <cstddef>
#include <cstdint>
#include <utility>

#include "records/trace_slots.h"

class TraceStorage {
 public:
  // How large the first blocks are. Large: as large as the later ones, for many traces at once.
  enum class First { Small, Large };

  explicit TraceStorage(First first = First::Small) : m_large(first == First::Large) {}
  ~TraceStorage() { Clear(); }
  TraceStorage(TraceStorage&& other) noexcept { *this = std::move(other); }
  TraceStorage& operator=(TraceStorage&& other) noexcept;

  // A copy finds the slots as long as their blocks are there.
  const TraceBlocks& Blocks() const { return m_blocks; }
  std::size_t StorageBytes() const;

  // A new block for numbers from `begin` on. REQUIRES: all numbers before it have slots, those
  // after it none.
  const TraceBlocks::Block& Add(std::uint64_t begin);
  // Takes over the blocks of the other, whose number 0 becomes `end`. REQUIRES: `end` is in the
  // last block or behind it, and the slots from there on are free; the other has dropped none.
  void Append(TraceStorage&& other, std::uint64_t end);
  void DropFront();
  void Clear();

 private:
  void CutAt(std::uint64_t end);
  void ExtendTable();

  TraceBlocks m_blocks;
  bool m_large = false;
};
