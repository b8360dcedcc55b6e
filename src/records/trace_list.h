// The traces of one document, oldest first.
//
// Shape    A double-ended queue in blocks of 16-byte slots, with constant-time access. Blocks
//          double from 256 to 131,072 slots (2 MiB), for huge pages. A slot never moves.
//            m_blocks   [ 256 ][ 512 ][ 1024 ] ... [ 131,072 ][ 131,072 ]
//                           ^ oldest trace                       ^ m_next ^ m_end
//            a slot     | address of the class's table, not null | record * |   of a mapped file
//                       | null                                   | event *  |   any other trace
// Owner    Owns its traces. A pointer to a trace is valid until the trace is popped or the list
//          cleared.
// Errors   std::bad_alloc. Threads  One at a time.
#pragma once

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <new>
#include <utility>
#include <vector>

#include "records/trace_event.h"

class TraceList_t {
 public:
  TraceList_t() = default;
  ~TraceList_t() { Clear(); }
  TraceList_t(TraceList_t&& other) noexcept { *this = std::move(other); }
  // Counts as a Clear of both. After it this list has the traces of the other.
  TraceList_t& operator=(TraceList_t&& other) noexcept;

  std::size_t size() const { return static_cast<std::size_t>(End() - m_popped); }
  bool empty() const { return size() == 0; }
  // REQUIRES: position < size().
  TraceEvent_i* operator[](std::size_t position) const { return EventIn(SlotAt(position)); }
  TraceEvent_i* front() const { return (*this)[0]; }
  TraceEvent_i* back() const { return EventIn(m_next - 1); }

  // Takes ownership.
  void push_back(TraceEvent_i* event);
  // A trace over a record in a mapped file, made in place.
  TraceEvent_i* EmplaceRecord(const std::uint8_t* record) {
    if (m_next == m_end) AddBlock();
    return new (m_next++) PlacedTraceEvent_t(record);
  }
  // Releases and removes the oldest trace. REQUIRES: not empty.
  void PopFront();
  // Releases all traces and frees the storage.
  void Clear();

  // Traces popped since the last Clear. position + Popped() names a trace as long as it is in the
  // list, whatever is popped before it.
  std::uint64_t Popped() const { return m_popped; }
  std::uint64_t Generation() const { return m_generation; }  // grows by one at each Clear
  std::size_t StorageBytes() const;                          // for the figures of the benchmarks

  // Calls visit(TraceEvent_i*) for positions [from, end <= size()) in order, without look-ups.
  template <class Visit>
  void ForEachIn(std::size_t from, std::size_t end, Visit&& visit) const {
    while (from < end) {
      const Place place = PlaceOf(m_popped + from);
      const std::size_t run = std::min(end - from, SlotsOf(place.block) - place.slot);
      const Slot* slot = m_blocks[place.block - m_firstBlock] + place.slot;
      for (const Slot* const last = slot + run; slot != last; ++slot) visit(EventIn(slot));
      from += run;
    }
  }
  template <class Visit>
  void ForEach(std::size_t from, Visit&& visit) const {
    ForEachIn(from, size(), visit);
  }

 private:
  // See the drawing above: a PlacedTraceEvent_t, or null and a pointer.
  struct alignas(PlacedTraceEvent_t) Slot {
    std::byte bytes[sizeof(PlacedTraceEvent_t)];
  };
  static_assert(sizeof(Slot) == 2 * sizeof(void*));
  struct Place {
    std::size_t block, slot;  // the block counted from the first that the list ever had
  };

  static constexpr unsigned kFirstBits = 8, kLastBits = 17, kDoublings = kLastBits - kFirstBits;
  static std::size_t SlotsOf(std::size_t block) {
    return std::size_t{1} << (kFirstBits + std::min<std::size_t>(block, kDoublings));
  }
  // The place of trace number `index`, from 0. Counted from 256 on, blocks begin at powers of two.
  static Place PlaceOf(std::uint64_t index) {
    index += std::uint64_t{1} << kFirstBits;
    const unsigned bits = std::min(static_cast<unsigned>(std::bit_width(index)) - 1, kLastBits);
    const auto chunk = static_cast<std::size_t>(index >> bits);  // 1 for all but the last blocks
    const auto slot = static_cast<std::size_t>(index & ((std::uint64_t{1} << bits) - 1));
    return {bits - kFirstBits + chunk - 1, slot};
  }
  const Slot* SlotAt(std::size_t position) const {
    const Place place = PlaceOf(m_popped + position);
    return m_blocks[place.block - m_firstBlock] + place.slot;
  }
  static TraceEvent_i* EventIn(const Slot* slot) {
    const PlacedTraceEvent_t* placed =
        std::launder(reinterpret_cast<const PlacedTraceEvent_t*>(slot));
    void* words[2];
    std::memcpy(words, slot, sizeof words);
    return words[0] ? const_cast<PlacedTraceEvent_t*>(placed)
                    : static_cast<TraceEvent_i*>(words[1]);
  }
  std::uint64_t End() const { return m_blockEnd - static_cast<std::uint64_t>(m_end - m_next); }
  void AddBlock();
  void DropFrontBlock();

  Slot* m_next = nullptr;        // the slot for the next trace
  Slot* m_end = nullptr;         // the end of the last block
  std::uint64_t m_blockEnd = 0;  // number of the trace that m_end would take
  std::uint64_t m_popped = 0;    // number of the oldest trace
  std::uint64_t m_generation = 0;
  std::uint64_t m_elsewhere = 0;  // traces that are not in their slot and need a Release
  std::size_t m_firstBlock = 0;   // number of m_blocks[0]
  std::vector<Slot*> m_blocks;
};
