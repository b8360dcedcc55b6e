// The traces of a list in the order of a search, piece by piece.
//
// Threads  Plain data.
#pragma once

#include <algorithm>
#include <cstddef>

// Where a search begins, and how it goes on.
struct ScanOrder {
  std::size_t start = 0;
  bool backward = false;
  bool wraps = false;  // around, to the trace before (behind) the first one
};

class ScanPieces {
 public:
  // The traces [from, end). In a search backward the last of them comes first.
  struct Range {
    std::size_t from, end;
    bool operator==(const Range&) const = default;
  };

  // REQUIRES: start < size.
  ScanPieces(std::size_t size, const ScanOrder& order, std::size_t perPiece)
      : m_size(size),
        m_order(order),
        m_perPiece(perPiece),
        m_split(order.backward ? order.start + 1 : order.start) {}

  std::size_t Count() const { return FirstPieces() + (m_order.wraps ? SecondPieces() : 0); }
  Range At(std::size_t piece) const {
    const bool isFirst = piece < FirstPieces();
    const std::size_t skip = (isFirst ? piece : piece - FirstPieces()) * m_perPiece;
    const bool isLow = isFirst == m_order.backward;  // the traces before the split
    const std::size_t low = isLow ? 0 : m_split, high = isLow ? m_split : m_size;
    if (!m_order.backward) return {low + skip, std::min(low + skip + m_perPiece, high)};
    return {high - low - skip > m_perPiece ? high - skip - m_perPiece : low, high - skip};
  }

 private:
  std::size_t PiecesOf(std::size_t traces) const { return (traces + m_perPiece - 1) / m_perPiece; }
  std::size_t FirstPieces() const {
    return PiecesOf(m_order.backward ? m_split : m_size - m_split);
  }
  std::size_t SecondPieces() const {
    return PiecesOf(m_order.backward ? m_size - m_split : m_split);
  }

  const std::size_t m_size;
  const ScanOrder m_order;
  const std::size_t m_perPiece;
  const std::size_t m_split;
};
