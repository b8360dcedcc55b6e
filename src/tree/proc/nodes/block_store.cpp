#include "tree/proc/nodes/block_store.h"

#include "base/page_storage.h"

BlockStore::Slot* BlockStore::FreeSlot() {
  if (Slot* const slot = m_free) {
    m_free = slot->nextFree;
    return slot;
  }
  if (m_next == m_end) {
    m_pieces.reserve(m_pieces.size() + 1);
    m_pieces.push_back(static_cast<Slot*>(NewHugePages(kPieceBytes)));
    m_next = m_pieces.back();
    m_end = m_next + kPieceSlots;
  }
  return m_next++;
}

CExecutionBlock& BlockStore::Make(TraceEvent_i* event, CExecutionBlock& around) {
  Slot* const slot = FreeSlot();
  slot->live = true;
  return *new (slot->bytes) CExecutionBlock(event, &around);
}

void BlockStore::Drop(CExecutionBlock& block) {
  Slot* const slot = reinterpret_cast<Slot*>(&block);
  block.~CExecutionBlock();
  slot->live = false;
  slot->nextFree = m_free;
  m_free = slot;
}

void BlockStore::Clear() {
  ForEach([](CExecutionBlock& block) { block.~CExecutionBlock(); });
  for (Slot* const piece : m_pieces) FreePages(piece, kPieceBytes);
  m_pieces.clear();
  m_next = m_end = m_free = nullptr;
}
