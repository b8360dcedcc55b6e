// While it exists, long work shows its box after its first part and does one part at a time.
#pragma once

#include "docview/dialogs/long_work.h"

class ShortPieces {
 public:
  ShortPieces() { LongWork::s_firstPiece = LongWork::s_piece = {}; }
  ~ShortPieces() {
    LongWork::s_firstPiece = m_first;
    LongWork::s_piece = m_piece;
  }
  ShortPieces(const ShortPieces&) = delete;
  ShortPieces& operator=(const ShortPieces&) = delete;

 private:
  const std::chrono::milliseconds m_first = LongWork::s_firstPiece, m_piece = LongWork::s_piece;
};
