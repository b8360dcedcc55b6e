#include "quor/hub/batch_bytes.h"

#include <algorithm>
#include <cstring>

#include "base/page_storage.h"

BatchMemory::~BatchMemory() {
  for (const Block& block : m_blocks) FreePages(block.memory, kBlockBytes);
}

std::uint8_t* BatchMemory::Take() {
  if (m_blocks.empty() || m_blocks.front().free.empty()) {
    Block block;
    block.memory = static_cast<std::uint8_t*>(NewHugePages(kBlockBytes));
    for (std::size_t piece = kPieces; piece > 0; --piece)
      block.free.push_back(block.memory + (piece - 1) * kPieceBytes);
    m_blocks.push_front(std::move(block));
    ++m_spare;
  }
  Block& block = m_blocks.front();
  if (block.free.size() == kPieces) --m_spare;
  std::uint8_t* const piece = block.free.back();
  block.free.pop_back();
  if (block.free.empty()) m_blocks.splice(m_blocks.end(), m_blocks, m_blocks.begin());
  return piece;
}

void BatchMemory::Give(std::uint8_t* piece) {
  // The address of a block is a multiple of its size.
  auto* const memory = reinterpret_cast<std::uint8_t*>(reinterpret_cast<std::uintptr_t>(piece) &
                                                       ~std::uintptr_t{kBlockBytes - 1});
  const auto block = std::find_if(m_blocks.begin(), m_blocks.end(),
                                  [memory](const Block& b) { return b.memory == memory; });
  block->free.push_back(piece);
  if (block->free.size() == kPieces && m_spare == kSpareBlocks) {
    FreePages(memory, kBlockBytes);
    m_blocks.erase(block);
  } else {
    if (block->free.size() == kPieces) ++m_spare;
    m_blocks.splice(m_blocks.begin(), m_blocks, block);
  }
}

void BatchBytes::Grow(std::size_t bytes) {
  const bool usual = m_memory && bytes <= BatchMemory::kPieceBytes;
  const std::size_t capacity = usual ? BatchMemory::kPieceBytes : 2 * bytes;
  std::uint8_t* const data = usual ? m_memory->Take() : new std::uint8_t[capacity];
  if (m_size != 0) std::memcpy(data, m_data, m_size);
  Free();
  m_data = data;
  m_capacity = capacity;
  m_isPiece = usual;
}

void BatchBytes::Fit() {
  if (!m_isPiece || m_size > m_capacity / 2) return;
  auto* const data = new std::uint8_t[m_size];
  std::memcpy(data, m_data, m_size);
  Free();
  m_data = data;
  m_capacity = m_size;
  m_isPiece = false;
}

void BatchBytes::Free() {
  if (m_isPiece) {
    m_memory->Give(m_data);
  } else {
    delete[] m_data;
  }
}
