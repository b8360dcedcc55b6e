// The leaves of a procedure tree, in order of arrival. Traces are trimmed in the same order, so the
// store is also the index from an oldest trace to its leaf.
//
// Shape    A queue in blocks of 65,536 leaves on huge pages: no allocation per trace. A leaf never
//          moves. Positions are 0..size()-1 from the oldest.
// Owner    The store owns the storage. A leaf is valid until it is popped or the store cleared.
// Errors   std::bad_alloc.
// Threads  Interface thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <new>
#include <vector>

#include "tree/proc/nodes/nodes.h"

class LeafStore {
 public:
  LeafStore() = default;
  ~LeafStore() { Clear(); }
  LeafStore(const LeafStore&) = delete;
  LeafStore& operator=(const LeafStore&) = delete;

  std::size_t size() const { return m_end - m_popped; }
  bool empty() const { return m_end == m_popped; }
  // Numbers of the oldest leaf and of the next one, counted over all leaves that ever came.
  std::uint64_t Oldest() const { return m_popped; }
  std::uint64_t Next() const { return m_end; }
  // REQUIRES: position < size().
  CTraceEvent* operator[](std::size_t position) const {
    const std::size_t slot = m_popped - m_firstSlot + position;
    return m_blocks[slot / kBlockLeaves] + slot % kBlockLeaves;
  }
  CTraceEvent* Make(TraceEvent_i* event, CExecutionBlock* parent) {
    if (m_next == m_blockEnd) AddBlock();
    ++m_end;
    return new (m_next++) CTraceEvent(event, parent);
  }
  // REQUIRES: not empty.
  void PopFront();
  void Clear();
  std::size_t StorageBytes() const { return m_blocks.size() * kBlockBytes; }

 private:
  static constexpr std::size_t kBlockLeaves = 65536;
  static constexpr std::size_t kBlockBytes = kBlockLeaves * sizeof(CTraceEvent);
  void AddBlock();

  std::vector<CTraceEvent*> m_blocks;
  CTraceEvent* m_next = nullptr;      // place of the next leaf
  CTraceEvent* m_blockEnd = nullptr;  // end of the last block
  std::uint64_t m_firstSlot = 0;      // number of the leaf at m_blocks[0]
  std::uint64_t m_popped = 0;         // number of the oldest leaf
  std::uint64_t m_end = 0;            // number of the next leaf
};
