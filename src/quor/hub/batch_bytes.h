// The records of a batch, and the memory of its bytes.
//
// Shape    Grows at its end only. Memory of the usual size comes from blocks on huge pages, last
//          used first. A monitor that stalls holds hundreds of batches. Touching that many fresh
//          pages would cost the other monitors up to a third of their traces.
// Owner    Bytes hold their memory, also after the end of the hub. A few unused blocks are kept,
//          because a new one costs as much as a thousand traces.
// Errors   std::bad_alloc.
// Threads  One.
#pragma once

#include <cstdint>
#include <list>
#include <memory>
#include <vector>

#include "base/bytes.h"

class BatchMemory {
 public:
  static constexpr std::size_t kBlockBytes = 2u << 20;
  static constexpr std::size_t kPieceBytes = 68u << 10;  // a batch and what exceeds its limit
  static constexpr std::size_t kPieces = kBlockBytes / kPieceBytes;
  static constexpr std::size_t kSpareBlocks = 4;

  BatchMemory() = default;
  ~BatchMemory();
  BatchMemory(const BatchMemory&) = delete;
  BatchMemory& operator=(const BatchMemory&) = delete;
  std::uint8_t* Take();
  void Give(std::uint8_t* piece);
  std::size_t Blocks() const { return m_blocks.size(); }

 private:
  struct Block {
    std::uint8_t* memory = nullptr;
    std::vector<std::uint8_t*> free;
  };
  std::list<Block> m_blocks;  // those with free pieces in front
  std::size_t m_spare = 0;    // blocks without a used piece
};

class BatchBytes {
 public:
  // `memory` may be null: the heap is enough for an occasional batch.
  explicit BatchBytes(std::shared_ptr<BatchMemory> memory) : m_memory(std::move(memory)) {}
  ~BatchBytes() { Free(); }
  BatchBytes(const BatchBytes&) = delete;
  BatchBytes& operator=(const BatchBytes&) = delete;

  // Makes room for so many more bytes, which the caller fills.
  std::uint8_t* Append(std::size_t bytes) {
    if (m_size + bytes > m_capacity) Grow(m_size + bytes);
    std::uint8_t* const at = m_data + m_size;
    m_size += bytes;
    return at;
  }
  // No more bytes will come: if much memory is unused, the bytes move to memory of their size.
  void Fit();
  std::size_t Size() const { return m_size; }
  Bytes View() const { return {m_data, m_size}; }

 private:
  void Grow(std::size_t bytes);
  void Free();

  const std::shared_ptr<BatchMemory> m_memory;
  std::uint8_t* m_data = nullptr;
  std::size_t m_size = 0, m_capacity = 0;
  bool m_isPiece = false;
};
