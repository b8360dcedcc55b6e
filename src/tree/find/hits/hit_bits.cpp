#include "tree/find/hits/hit_bits.h"

#include <algorithm>
#include <bit>

void HitBits::Clear() {
  *this = HitBits();
}

void HitBits::PassTo(int row) {
  Extend(m_first + static_cast<std::uint64_t>(row));
}

void HitBits::AddHit(int row) {
  const std::uint64_t at = m_first + static_cast<std::uint64_t>(row);
  Extend(at + 1);
  m_blocks.back().words[at / kWordRows % kWords] |= std::uint64_t{1} << at % kWordRows;
  ++m_hits;
}

void HitBits::Extend(std::uint64_t end) {
  if (end <= m_end) return;
  m_end = end;
  const std::uint64_t blocks = (m_end + kBlockRows - 1) / kBlockRows - BlocksGone();
  while (m_blocks.size() < blocks) m_blocks.push_back({m_hits, {}});
}

void HitBits::DropFront(int rows) {
  const std::uint64_t first = m_first + static_cast<std::uint64_t>(rows);
  m_hitsGone = first >= m_end ? m_hits : HitsBefore(first);
  std::uint64_t gone = first / kBlockRows - BlocksGone();
  for (; gone > 0 && !m_blocks.empty(); --gone) m_blocks.pop_front();
  m_first = first;
  m_end = std::max(m_end, first);
  // Where the rows that are left begin within a block, that block stays.
  const std::uint64_t blocks = (m_end + kBlockRows - 1) / kBlockRows - BlocksGone();
  while (m_blocks.size() < blocks) m_blocks.push_back({m_hits, {}});
}

std::uint64_t HitBits::HitsBefore(std::uint64_t row) const {
  if (row >= m_end) return m_hits;
  const Block& block = m_blocks[row / kBlockRows - BlocksGone()];
  const std::uint64_t word = row / kWordRows % kWords;
  std::uint64_t hits = block.before;
  for (std::uint64_t i = 0; i < word; ++i)
    hits += static_cast<std::uint64_t>(std::popcount(block.words[i]));
  const std::uint64_t mask = (std::uint64_t{1} << row % kWordRows) - 1;
  return hits + static_cast<std::uint64_t>(std::popcount(block.words[word] & mask));
}

// REQUIRES: the hit exists and is not gone.
std::uint64_t HitBits::RowOfHit(std::uint64_t hit) const {
  const auto behind = std::partition_point(
      m_blocks.begin(), m_blocks.end(), [hit](const Block& block) { return block.before <= hit; });
  const Block& block = *std::prev(behind);
  std::uint64_t skip = hit - block.before;
  std::uint64_t word = 0;
  for (;; ++word) {
    const auto here = static_cast<std::uint64_t>(std::popcount(block.words[word]));
    if (skip < here) break;
    skip -= here;
  }
  std::uint64_t bits = block.words[word];
  for (; skip > 0; --skip) bits &= bits - 1;
  const auto place = static_cast<std::uint64_t>(std::prev(behind) - m_blocks.begin());
  return (BlocksGone() + place) * kBlockRows + word * kWordRows +
         static_cast<std::uint64_t>(std::countr_zero(bits));
}

bool HitBits::Has(int row) const {
  if (row < 0 || row >= Known()) return false;
  const std::uint64_t at = m_first + static_cast<std::uint64_t>(row);
  const Block& block = m_blocks[at / kBlockRows - BlocksGone()];
  return (block.words[at / kWordRows % kWords] >> at % kWordRows & 1) != 0;
}

int HitBits::Position(int row) const {
  if (row <= 0) return 0;
  return static_cast<int>(HitsBefore(m_first + static_cast<std::uint64_t>(row)) - m_hitsGone);
}

int HitBits::Next(int row) const {
  return RowOf(Position(row));
}

int HitBits::RowOf(int hit) const {
  if (hit < 0 || hit >= Count()) return -1;
  return static_cast<int>(RowOfHit(m_hitsGone + static_cast<std::uint64_t>(hit)) - m_first);
}
