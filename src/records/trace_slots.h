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

// Blocks of slots, found by the number of a trace. Traces and blocks are counted from the first
// that the list ever had. A block holds consecutive numbers. Blocks are even, which is to say that
// they double in size, until those of another list follow. From then on a table finds them.
struct TraceBlocks {
  static constexpr unsigned kFirstBits = 8, kLastBits = 17, kDoublings = kLastBits - kFirstBits;
  static constexpr unsigned kTableBits = 16;
  struct Block {
    TraceSlot* first;
    std::uint64_t begin, end;  // numbers
  };

  static std::size_t SlotsOf(std::size_t block) {
    return std::size_t{1} << (kFirstBits + std::min<std::size_t>(block, kDoublings));
  }
  // Of even blocks. Counted from 256 on, they begin at powers of two.
  static std::size_t EvenBlockOf(std::uint64_t number) {
    number += std::uint64_t{1} << kFirstBits;
    const unsigned bits = std::min(static_cast<unsigned>(std::bit_width(number)) - 1, kLastBits);
    const auto chunk = static_cast<std::size_t>(number >> bits);  // 1 for all but the last blocks
    return bits - kFirstBits + chunk - 1;
  }
  const Block& BlockOf(std::uint64_t number) const {
    if (table.empty()) return blocks[EvenBlockOf(number) - first];
    const std::size_t least = table[static_cast<std::size_t>(number >> kTableBits)];
    std::size_t block = std::max(least, first) - first;
    while (number >= blocks[block].end) ++block;
    return blocks[block];
  }
  const TraceSlot* SlotAt(std::uint64_t number) const {
    const Block& block = BlockOf(number);
    return block.first + (number - block.begin);
  }
  // Calls visit(TraceEvent_i*) for the traces [from, end) in order, without look-ups.
  template <class Visit>
  void ForEachIn(std::uint64_t from, std::uint64_t end, Visit&& visit) const {
    while (from < end) {
      const Block& block = BlockOf(from);
      const auto run = static_cast<std::size_t>(std::min(end, block.end) - from);
      const TraceSlot* slot = block.first + (from - block.begin);
      for (const TraceSlot* const last = slot + run; slot != last; ++slot)
        visit(TraceSlot::EventIn(slot));
      from += run;
    }
  }

  std::size_t first = 0;  // number of blocks[0]
  std::vector<Block> blocks;
  // The block of each 65,536th number, or one before it; empty: even blocks.
  std::vector<std::size_t> table;
};
