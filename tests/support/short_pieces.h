// While it exists, the host's long work shows its box after its first part and does one part at a
// time.
#pragma once

#include "docview/host.h"

class ShortPieces {
 public:
  explicit ShortPieces(Host& host) : m_host(host) { m_host.SetPieces({{}, {}}); }
  ~ShortPieces() { m_host.SetPieces(m_before); }
  ShortPieces(const ShortPieces&) = delete;
  ShortPieces& operator=(const ShortPieces&) = delete;

 private:
  Host& m_host;
  const WorkPieces m_before = m_host.Pieces();
};
