// A set of rows that grows at its end and loses rows at its front, with the place of each row in
// it.
//
// Shape    A bit for each known row, in blocks of 512 with the number of hits before them: 9 bytes
//          for 64 rows, whatever the number of hits is. Rows are counted from the first one that
//          there ever was, so that what goes at the front moves nothing.
// Cost     AddHit and PassTo are constant for a block, Position is constant, Next and RowOf search
//          the blocks by halves.
// Errors   std::bad_alloc. Threads  One at a time.
#pragma once

#include <array>
#include <cstdint>
#include <deque>

class HitBits {
 public:
  void Clear();
  // The rows before this one are known and have no further hits. REQUIRES: row >= Known().
  void PassTo(int row);
  // The row has one; those between are known. REQUIRES: row >= Known().
  void AddHit(int row);
  // The first rows go, known or not; the others get smaller numbers.
  void DropFront(int rows);

  int Known() const { return static_cast<int>(m_end - m_first); }
  int Count() const { return static_cast<int>(m_hits - m_hitsGone); }
  bool Has(int row) const;
  int Position(int row) const;  // of a row that is not known: Count()
  int Next(int row) const;
  int RowOf(int hit) const;
  std::size_t StorageBytes() const { return m_blocks.size() * sizeof(Block); }

 private:
  static constexpr std::uint64_t kWordRows = 64, kWords = 8, kBlockRows = kWordRows * kWords;
  struct Block {
    std::uint64_t before = 0;  // hits before its first row, ever
    std::array<std::uint64_t, kWords> words = {};
  };
  std::uint64_t HitsBefore(std::uint64_t row) const;
  std::uint64_t RowOfHit(std::uint64_t hit) const;
  void Extend(std::uint64_t end);
  std::uint64_t BlocksGone() const { return m_first / kBlockRows; }

  std::deque<Block> m_blocks;  // of the rows [m_first, m_end), whole blocks
  // Counted from the first row and the first hit that there ever were.
  std::uint64_t m_first = 0, m_end = 0;
  std::uint64_t m_hitsGone = 0, m_hits = 0;
};
