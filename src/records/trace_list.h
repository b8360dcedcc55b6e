// The traces of one document, oldest first.
//
// Shape    A double-ended queue of 16-byte slots in blocks (records/trace_slots.h), with
//          constant-time access. A slot never moves.
//            a slot     | address of the class's table, not null | record * |   of a mapped file
//                       | null                                   | event *  |   any other trace
// Owner    Owns its traces. A pointer to a trace is valid until the trace is popped or the list
//          cleared.
// Errors   std::bad_alloc. Threads  One at a time.
#pragma once

#include <cstddef>
#include <cstdint>
#include <new>
#include <utility>

#include "records/trace_storage.h"

class TraceList_t {
 public:
  TraceList_t() = default;
  // For many traces: see TraceStorage.
  explicit TraceList_t(TraceStorage::First first) : m_storage(first) {}
  ~TraceList_t() { Clear(); }
  TraceList_t(TraceList_t&& other) noexcept { *this = std::move(other); }
  // Counts as a Clear of both. After it this list has the traces of the other.
  TraceList_t& operator=(TraceList_t&& other) noexcept;

  std::size_t size() const { return static_cast<std::size_t>(End() - m_popped); }
  bool empty() const { return size() == 0; }
  // REQUIRES: position < size().
  TraceEvent_i* operator[](std::size_t position) const {
    return EventIn(m_storage.Blocks().SlotAt(m_popped + position));
  }
  TraceEvent_i* front() const { return (*this)[0]; }
  TraceEvent_i* back() const { return EventIn(m_next - 1); }

  // Takes ownership.
  void push_back(TraceEvent_i* event);
  // A trace over a record in a mapped file, made in place.
  TraceEvent_i* EmplaceRecord(const std::uint8_t* record) {
    if (m_next == m_end) AddBlock();
    return new (m_next++) PlacedTraceEvent_t(record);
  }
  // Takes over all traces of the other, without copying them. REQUIRES: the other has popped none.
  void Append(TraceList_t&& other);
  // Releases and removes the oldest trace. REQUIRES: not empty.
  void PopFront();
  // Releases all traces and frees the storage.
  void Clear();

  // Traces popped since the last Clear. position + Popped() names a trace as long as it is in the
  // list, whatever is popped before it.
  std::uint64_t Popped() const { return m_popped; }
  std::uint64_t Generation() const { return m_generation; }  // grows by one at each Clear
  std::size_t StorageBytes() const;                          // for the figures of the benchmarks

  // The same traces for readers that may outlive the list's place: valid as long as none of them is
  // popped or cleared. A list that is moved keeps its traces where they are.
  class Reader;

  // Calls visit(TraceEvent_i*) for positions [from, end <= size()) in order, without look-ups.
  template <class Visit>
  void ForEachIn(std::size_t from, std::size_t end, Visit&& visit) const {
    m_storage.Blocks().ForEachIn(m_popped + from, m_popped + end, visit);
  }
  template <class Visit>
  void ForEach(std::size_t from, Visit&& visit) const {
    ForEachIn(from, size(), visit);
  }

 private:
  static TraceEvent_i* EventIn(const TraceSlot* slot) { return TraceSlot::EventIn(slot); }
  std::uint64_t End() const { return m_blockEnd - static_cast<std::uint64_t>(m_end - m_next); }
  void AddBlock();

  TraceSlot* m_next = nullptr;   // the slot for the next trace
  TraceSlot* m_end = nullptr;    // the end of the last block
  std::uint64_t m_blockEnd = 0;  // number of the trace that m_end would take
  std::uint64_t m_popped = 0;    // number of the oldest trace
  std::uint64_t m_generation = 0;
  std::uint64_t m_elsewhere = 0;  // traces that are not in their slot and need a Release
  TraceStorage m_storage;
};

class TraceList_t::Reader {
 public:
  explicit Reader(const TraceList_t& list)
      : m_blocks(list.m_storage.Blocks()), m_popped(list.m_popped), m_size(list.size()) {}

  // As those of the list, at the moment of the copy.
  std::size_t size() const { return m_size; }
  TraceEvent_i* operator[](std::size_t position) const {
    return EventIn(m_blocks.SlotAt(m_popped + position));
  }
  template <class Visit>
  void ForEachIn(std::size_t from, std::size_t end, Visit&& visit) const {
    m_blocks.ForEachIn(m_popped + from, m_popped + end, visit);
  }

 private:
  TraceBlocks m_blocks;
  std::uint64_t m_popped;
  std::size_t m_size;
};
