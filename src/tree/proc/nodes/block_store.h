// Storage for the blocks of a procedure tree: the tree of a large file has a million of them.
//
// Shape    Slots in pieces of 2 MiB. The slot of a dropped block is used again. A block never
//          moves.
// Owner    Owns the blocks.
// Errors   std::bad_alloc.
// Threads  Interface thread.
#pragma once

#include <cstddef>
#include <new>
#include <vector>

#include "tree/proc/nodes/nodes.h"

class BlockStore {
 public:
  BlockStore() = default;
  ~BlockStore() { Clear(); }
  BlockStore(const BlockStore&) = delete;
  BlockStore& operator=(const BlockStore&) = delete;

  CExecutionBlock& Make(TraceEvent_i* event, CExecutionBlock& around);
  void Drop(CExecutionBlock& block);
  void Clear();
  // In an unspecified order.
  template <class Visit>
  void ForEach(Visit&& visit) {
    for (std::size_t piece = 0; piece < Pieces(); ++piece) ForEachIn(piece, visit);
  }
  // The same for one of the pieces, each of which holds some thousand blocks.
  std::size_t Pieces() const { return m_pieces.size(); }
  template <class Visit>
  void ForEachIn(std::size_t piece, Visit&& visit) {
    Slot* const end = piece + 1 < m_pieces.size() ? m_pieces[piece] + kPieceSlots : m_next;
    for (Slot* slot = m_pieces[piece]; slot != end; ++slot)
      if (slot->live) visit(*slot->Block());
  }

 private:
  struct Slot {
    alignas(CExecutionBlock) std::byte bytes[sizeof(CExecutionBlock)];
    Slot* nextFree;
    bool live;
    CExecutionBlock* Block() { return std::launder(reinterpret_cast<CExecutionBlock*>(bytes)); }
  };
  static constexpr std::size_t kPieceBytes = std::size_t{2} << 20;
  static constexpr std::size_t kPieceSlots = kPieceBytes / sizeof(Slot);
  Slot* FreeSlot();

  std::vector<Slot*> m_pieces;
  Slot* m_next = nullptr;  // in the last piece
  Slot* m_end = nullptr;
  Slot* m_free = nullptr;
};
