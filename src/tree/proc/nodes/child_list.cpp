#include "tree/proc/nodes/child_list.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <new>

#include "tree/proc/nodes/word_pool.h"

namespace {

unsigned BitsOf(std::uint32_t capacity) {
  return static_cast<unsigned>(std::countr_zero(capacity));
}

}  // namespace

void ChildList::Clear(WordPool& pool) {
  if (m_words) pool.GiveBack(m_words, BitsOf(m_capacity));
  Forget();
}

void ChildList::Forget() {
  m_words = nullptr;
  m_begin = m_end = m_capacity = m_noLeafBefore = 0;
}

// If at least half of the space is free at the front, the entries move down instead. Each move is
// then paid for by an entry that was erased.
void ChildList::MakeRoom(WordPool& pool) {
  if (m_begin > 0 && m_begin >= m_capacity / 2) {
    std::memmove(m_words, m_words + m_begin, size() * sizeof *m_words);
    m_end -= m_begin;
    m_begin = 0;
    return;
  }
  constexpr std::uint32_t kFirst = 4, kMost = 0x40000000;
  if (m_capacity > kMost) throw std::bad_alloc();
  const std::uint32_t capacity = std::max(kFirst, 2 * m_capacity);
  std::uintptr_t* const words = pool.Take(BitsOf(capacity));
  if (m_words) {
    std::memcpy(words, m_words, m_end * sizeof *m_words);
    pool.GiveBack(m_words, BitsOf(m_capacity));
  }
  m_words = words;
  m_capacity = capacity;
}

void ChildList::Erase(std::size_t position) {
  std::uintptr_t* const entry = m_words + m_begin + position;
  if (position < size() / 2) {
    std::memmove(m_words + m_begin + 1, m_words + m_begin, position * sizeof *m_words);
    ++m_begin;
  } else {
    std::memmove(entry, entry + 1, (size() - position - 1) * sizeof *m_words);
    --m_end;
  }
  if (position < m_noLeafBefore) --m_noLeafBefore;
  // An emptied list starts again at the front, so that a short one never grows.
  if (empty()) m_begin = m_end = 0;
}

std::size_t ChildList::PositionOf(const CTraceEvent* entry) const {
  std::size_t position = 0;
  while (position < size() && (*this)[position] != entry) ++position;
  return position;
}

std::size_t ChildList::FirstLeaf(std::size_t from) {
  const auto leafFrom = [this](std::size_t position) {
    while (position < size() && !IsLeaf(position)) ++position;
    return position;
  };
  m_noLeafBefore = static_cast<std::uint32_t>(leafFrom(m_noLeafBefore));
  return from <= m_noLeafBefore ? m_noLeafBefore : leafFrom(from);
}
