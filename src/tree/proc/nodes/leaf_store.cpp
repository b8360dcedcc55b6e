#include "tree/proc/nodes/leaf_store.h"

#include "base/page_storage.h"

void LeafStore::AddBlock() {
  m_blocks.reserve(m_blocks.size() + 1);
  m_blocks.push_back(static_cast<CTraceEvent*>(NewHugePages(kBlockBytes)));
  m_next = m_blocks.back();
  m_blockEnd = m_next + kBlockLeaves;
}

void LeafStore::PopFront() {
  (*this)[0]->~CTraceEvent();
  ++m_popped;
  if (m_popped - m_firstSlot < kBlockLeaves) return;
  FreePages(m_blocks.front(), kBlockBytes);
  m_blocks.erase(m_blocks.begin());
  m_firstSlot += kBlockLeaves;
  if (m_blocks.empty()) m_next = m_blockEnd = nullptr;
}

// A leaf owns nothing, so millions of them need no destructor.
void LeafStore::Clear() {
  for (CTraceEvent* const block : m_blocks) FreePages(block, kBlockBytes);
  m_blocks.clear();
  m_next = m_blockEnd = nullptr;
  m_firstSlot = m_popped = m_end = 0;
}
