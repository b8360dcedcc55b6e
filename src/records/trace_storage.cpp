#include "records/trace_storage.h"

#include <algorithm>

#include "base/page_storage.h"

namespace {

std::size_t BytesOf(const TraceBlocks::Block& block) {
  return WholePages(static_cast<std::size_t>(block.end - block.begin) * sizeof(TraceSlot));
}

}  // namespace

TraceStorage& TraceStorage::operator=(TraceStorage&& other) noexcept {
  if (this == &other) return *this;
  Clear();
  m_blocks = std::exchange(other.m_blocks, {});
  m_large = other.m_large;
  return *this;
}

std::size_t TraceStorage::StorageBytes() const {
  std::size_t bytes = m_blocks.blocks.capacity() * sizeof(TraceBlocks::Block);
  for (const TraceBlocks::Block& block : m_blocks.blocks) bytes += BytesOf(block);
  return bytes;
}

const TraceBlocks::Block& TraceStorage::Add(std::uint64_t begin) {
  constexpr std::size_t kMost = TraceBlocks::kDoublings;
  const std::size_t number = m_blocks.first + m_blocks.blocks.size();
  const std::size_t slots = TraceBlocks::SlotsOf(m_large ? kMost : number);
  const std::size_t bytes = slots * sizeof(TraceSlot);
  m_blocks.blocks.reserve(m_blocks.blocks.size() + 1);
  const bool huge = slots == TraceBlocks::SlotsOf(kMost);
  auto* const storage = static_cast<TraceSlot*>(huge ? NewHugePages(bytes) : NewPages(bytes));
  m_blocks.blocks.push_back({storage, begin, begin + slots});
  const bool even = TraceBlocks::EvenBlockOf(begin) == number &&
                    TraceBlocks::EvenBlockOf(begin + slots - 1) == number;
  if (!m_blocks.table.empty() || !even) ExtendTable();
  return m_blocks.blocks.back();
}

// Frees the whole pages of the slots from number `end` on.
void TraceStorage::CutAt(std::uint64_t end) {
  if (m_blocks.blocks.empty() || m_blocks.blocks.back().end <= end) return;
  TraceBlocks::Block& last = m_blocks.blocks.back();
  const std::size_t before = BytesOf(last);
  last.end = end;
  const std::size_t after = BytesOf(last);
  if (after < before) FreePages(reinterpret_cast<std::byte*>(last.first) + after, before - after);
}

void TraceStorage::Append(TraceStorage&& other, std::uint64_t end) {
  CutAt(end);
  m_blocks.blocks.reserve(m_blocks.blocks.size() + other.m_blocks.blocks.size());
  for (const TraceBlocks::Block& block : other.m_blocks.blocks)
    m_blocks.blocks.push_back({block.first, end + block.begin, end + block.end});
  other.m_blocks = {};
  ExtendTable();
}

void TraceStorage::ExtendTable() {
  constexpr std::uint64_t kNumbers = std::uint64_t{1} << TraceBlocks::kTableBits;
  auto& [first, blocks, table] = m_blocks;
  std::size_t block = table.empty() ? 0 : std::max(table.back(), first) - first;
  for (; table.size() * kNumbers < blocks.back().end; table.push_back(first + block))
    while (table.size() * kNumbers >= blocks[block].end) ++block;
}

void TraceStorage::DropFront() {
  FreePages(m_blocks.blocks.front().first, BytesOf(m_blocks.blocks.front()));
  m_blocks.blocks.erase(m_blocks.blocks.begin());
  ++m_blocks.first;  // a new block follows on the number of this one
}

void TraceStorage::Clear() {
  for (const TraceBlocks::Block& block : m_blocks.blocks) FreePages(block.first, BytesOf(block));
  m_blocks = {};
}
