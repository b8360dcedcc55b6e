// Where the traces of a list lie in memory (trace_list.h has the drawing).
//
// Threads  Pure, but for the slots that are read.
#pragma once

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <new>
#include <vector>

#include "records/trace_event.h"

// A PlacedTraceEvent_t, or null and a pointer.
struct alignas(PlacedTraceEvent_t) TraceSlot {
  std::byte bytes[sizeof(PlacedTraceEvent_t)];

  static TraceEvent_i* EventIn(const TraceSlot* slot) {
    const PlacedTraceEvent_t* placed =
        std::launder(reinterpret_cast<const PlacedTraceEvent_t*>(slot));
    void* words[2];
    std::memcpy(words, slot, sizeof words);
    return words[0] ? const_cast<PlacedTraceEvent_t*>(placed)
                    : static_cast<TraceEvent_i*>(words[1]);
  }
};
static_assert(sizeof(TraceSlot) == 2 * sizeof(void*));

// Blocks of slots. Traces and blocks are counted from the first that the list ever had.
struct TraceBlocks {
  static constexpr unsigned kFirstBits = 8, kLastBits = 17, kDoublings = kLastBits - kFirstBits;
  struct Place {
    std::size_t block, slot;
  };

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

  const TraceSlot* SlotAt(std::uint64_t index) const {
    const Place place = PlaceOf(index);
    return blocks[place.block - first] + place.slot;
  }
  // Calls visit(TraceEvent_i*) for the traces [from, end) in order, without look-ups.
  template <class Visit>
  void ForEachIn(std::uint64_t from, std::uint64_t end, Visit&& visit) const {
    while (from < end) {
      const Place place = PlaceOf(from);
      const auto run = static_cast<std::size_t>(
          std::min<std::uint64_t>(end - from, SlotsOf(place.block) - place.slot));
      const TraceSlot* slot = blocks[place.block - first] + place.slot;
      for (const TraceSlot* const last = slot + run; slot != last; ++slot)
        visit(TraceSlot::EventIn(slot));
      from += run;
    }
  }

  std::size_t first = 0;  // number of blocks[0]
  std::vector<TraceSlot*> blocks;
};
