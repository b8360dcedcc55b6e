// The records of a batch, and the memory that they lie in.
//
// Shape    Grows at its end only. Memory of the usual size comes out of blocks on huge pages, last
//          used first: a monitor that stalls holds hundreds of batches, and to touch that many
//          fresh pages would cost the other monitors as much as a third of their traces.
// Owner    Bytes hold their memory, also when the hub has gone. Few blocks that are
//          not used stay: a new one costs as much as a thousand traces.
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
  static constexpr std::size_t kPieceBytes = 68u << 10;  // a batch and what passes its mark
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
  std::size_t m_spare = 0;    // of which nothing is used
};

class BatchBytes {
 public:
  // `memory` may be null: for a batch now and then the heap will do.
  explicit BatchBytes(std::shared_ptr<BatchMemory> memory) : m_memory(std::move(memory)) {}
  ~BatchBytes() { Free(); }
  BatchBytes(const BatchBytes&) = delete;
  BatchBytes& operator=(const BatchBytes&) = delete;

  // Room for so many more, to be filled.
  std::uint8_t* Append(std::size_t bytes) {
    if (m_size + bytes > m_capacity) Grow(m_size + bytes);
    std::uint8_t* const at = m_data + m_size;
    m_size += bytes;
    return at;
  }
  // Nothing more comes: what is much shorter than its memory moves to some of its own size.
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
