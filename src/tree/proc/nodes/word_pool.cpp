#include "tree/proc/nodes/word_pool.h"

#include <algorithm>
#include <bit>

#include "base/page_storage.h"

std::uintptr_t* WordPool::Take(unsigned bits) {
  if (bits >= kBlockBits) {
    m_large.reserve(m_large.size() + 1);
    auto* const words = static_cast<std::uintptr_t*>(NewHugePages(sizeof(std::uintptr_t) << bits));
    m_large.push_back({words, bits});
    return words;
  }
  if (std::uintptr_t* const words = m_free[bits]) {
    m_free[bits] = std::bit_cast<std::uintptr_t*>(words[0]);
    return words;
  }
  const std::size_t length = std::size_t{1} << bits;
  // The rest of a block that is too short for the run stays unused.
  if (static_cast<std::size_t>(m_end - m_next) < length) {
    m_blocks.reserve(m_blocks.size() + 1);
    m_blocks.push_back(NewHugePages(kBlockBytes));
    m_next = static_cast<std::uintptr_t*>(m_blocks.back());
    m_end = m_next + (std::size_t{1} << kBlockBits);
  }
  std::uintptr_t* const words = m_next;
  m_next += length;
  return words;
}

void WordPool::GiveBack(std::uintptr_t* words, unsigned bits) {
  if (bits >= kBlockBits) {
    const auto own = std::find_if(m_large.begin(), m_large.end(),
                                  [words](const OwnPages& pages) { return pages.words == words; });
    m_large.erase(own);
    FreePages(words, sizeof(std::uintptr_t) << bits);
    return;
  }
  words[0] = reinterpret_cast<std::uintptr_t>(m_free[bits]);
  m_free[bits] = words;
}

void WordPool::Clear() {
  for (void* const block : m_blocks) FreePages(block, kBlockBytes);
  for (const OwnPages& pages : m_large)
    FreePages(pages.words, sizeof(std::uintptr_t) << pages.bits);
  m_blocks.clear();
  m_large.clear();
  m_free = {};
  m_next = m_end = nullptr;
}
