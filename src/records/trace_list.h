// The traces of one document, oldest first.
//
// Shape    A double-ended queue in blocks: adds at the back, trims at the front, constant-time
//          access by position. A trace of a mapped file lies in the block itself (16 bytes each, no
//          allocation per trace); any other trace costs the block one pointer. Blocks are filled by
//          one kind, so a change of kind begins a new block.
// Owner    The list owns its traces; the pointers it gives are good until the trace is popped or
//          the list cleared.
// Threads  One at a time.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "records/trace_event.h"

class TraceList_t {
 public:
  TraceList_t();
  ~TraceList_t();
  TraceList_t(TraceList_t&& other) noexcept;
  TraceList_t& operator=(TraceList_t&& other) noexcept;

  std::size_t size() const;
  bool empty() const { return size() == 0; }
  // REQUIRES: position < size().
  TraceEvent_i* operator[](std::size_t position) const;
  TraceEvent_i* front() const { return (*this)[0]; }
  TraceEvent_i* back() const { return (*this)[size() - 1]; }

  // Takes ownership.
  void push_back(TraceEvent_i* event);
  // A trace over a record in a mapped file, made in place.
  TraceEvent_i* EmplaceRecord(const std::uint8_t* record);
  // Releases the oldest trace and forgets it. REQUIRES: not empty.
  void PopFront();
  // Releases all and gives the storage back.
  void Clear();

  // How many traces have left at the front since the list was made or cleared: position + Popped()
  // names a trace for as long as it is in the list, whatever is trimmed before it.
  std::uint64_t Popped() const;
  // Grows by one at each Clear.
  std::uint64_t Generation() const;
  // Bytes of storage held, for the figures of the benchmarks.
  std::size_t StorageBytes() const;

  // Calls visit(TraceEvent_i*) for positions [from, size()) in order, without a look-up per trace.
  template <class Visit>
  void ForEach(std::size_t from, Visit&& visit) const;

 private:
  struct Block;
  std::vector<std::unique_ptr<Block>> m_blocks;
};
