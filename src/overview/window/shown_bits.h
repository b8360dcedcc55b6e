// One bit for each trace that a monitor holds: is it counted?
//
// Cost     An eighth of a byte for each.
// Threads  One.
#pragma once

#include <cstdint>
#include <deque>

class ShownBits {
 public:
  void Append(bool isShown) {
    if (m_end % 64 == 0) m_words.push_back(0);
    m_words.back() |= std::uint64_t{isShown} << m_end % 64;
    ++m_end;
  }
  // The oldest one. REQUIRES: there is one.
  bool TakeFirst() {
    const bool isShown = m_words.front() >> m_first % 64 & 1;
    ++m_first;
    if (m_first % 64 == 0 || m_first == m_end) m_words.pop_front();
    if (m_first == m_end) m_first = m_end = 0;
    return isShown;
  }

 private:
  std::deque<std::uint64_t> m_words;
  std::uint64_t m_first = 0, m_end = 0;
};
