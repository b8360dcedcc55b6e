// The children of one item of a TreeItems. Only that class's own files include this.
//
// Shape    Items are in chunks of 4, 8, 16 ... 1024, so that a handle stays valid when others are
//          added and deleted. A deleted item leaves a gap without rows; chunks before the first
//          live item are freed. At(row) and RowsBefore count the rows of each item with the visible
//          items below.
// Errors   std::bad_alloc.
#pragma once

#include <algorithm>
#include <bit>
#include <memory>
#include <vector>

#include "controls/tree/tree_items.h"

struct TreeItems::Item {
  Item* parent = nullptr;
  TreeItemData data = 0;
  Siblings* children = nullptr;
  std::uint64_t number : 56 = 0;  // among all siblings that ever existed
  std::uint64_t state : 7 = 0;
  std::uint64_t dead : 1 = 0;

  std::int64_t Rows() const;
};

class TreeItems::Siblings {
 public:
  Item* Append() {
    const Place place = PlaceOf(m_end);
    if (place.chunk - m_firstChunk == m_chunks.size())
      m_chunks.push_back(std::make_unique<Item[]>(SlotsOf(place.chunk)));
    Item* const item = &m_chunks[place.chunk - m_firstChunk][place.slot];
    item->number = m_end++;
    AddRows(item->number, 1);
    return item;
  }
  // REQUIRES: its rows were subtracted.
  void Remove(Item& item);

  std::int64_t Rows() const { return m_rows; }
  void AddRows(std::uint64_t number, std::int64_t rows);
  std::int64_t RowsBefore(std::uint64_t number) const;
  // The item whose rows include the row. REQUIRES: 0 <= row < Rows().
  Item* At(std::int64_t row) const;
  Item* Last() const { return Slot(m_end - 1).dead ? At(m_rows - 1) : &Slot(m_end - 1); }
  // The directly adjacent item; null if it was deleted or does not exist.
  Item* Beside(const Item& item, bool next) const;
  template <class Visit>
  void ForEach(Visit&& visit) {
    for (std::uint64_t each = m_begin; each != m_end; ++each)
      if (!Slot(each).dead) visit(Slot(each));
  }

 private:
  struct Place {
    std::uint64_t chunk, slot;
  };
  static constexpr unsigned kFirstBits = 2, kLastBits = 10;
  static constexpr std::uint64_t kSummed = 64;  // fewer siblings are added one by one

  static std::uint64_t SlotsOf(std::uint64_t chunk) {
    return std::uint64_t{1} << (kFirstBits +
                                std::min<std::uint64_t>(chunk, kLastBits - kFirstBits));
  }
  // Counted from 4 on, chunks begin at the powers of two.
  static Place PlaceOf(std::uint64_t number) {
    number += std::uint64_t{1} << kFirstBits;
    const unsigned bits = std::min(static_cast<unsigned>(std::bit_width(number)) - 1, kLastBits);
    return {bits - kFirstBits + (number >> bits) - 1, number & ((std::uint64_t{1} << bits) - 1)};
  }
  Item& Slot(std::uint64_t number) const {
    const Place place = PlaceOf(number);
    return m_chunks[place.chunk - m_firstChunk][place.slot];
  }
  void DropChunks();

  std::vector<std::unique_ptr<Item[]>> m_chunks;
  std::size_t m_dropped = 0;       // freed chunks at the front of the vector
  std::uint64_t m_firstChunk = 0;  // number of m_chunks[0]
  std::uint64_t m_begin = 0;       // all items before are deleted
  std::uint64_t m_end = 0;
  std::int64_t m_rows = 0;
  std::unique_ptr<RowSums> m_sums;  // once there are many siblings
};

inline std::int64_t TreeItems::Item::Rows() const {
  return 1 + (state & kTreeExpanded && children ? children->Rows() : 0);
}
