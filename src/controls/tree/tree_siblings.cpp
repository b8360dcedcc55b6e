#include "controls/tree/tree_siblings.h"

void TreeItems::Siblings::Remove(Item& item) {
  item.dead = 1;
  if (item.number != m_begin) return;
  while (m_begin != m_end && Slot(m_begin).dead) ++m_begin;
  if (m_sums) m_sums->DropBefore(m_begin);
  DropChunks();
}

void TreeItems::Siblings::AddRows(std::uint64_t number, std::int64_t rows) {
  m_rows += rows;
  if (m_sums) {
    m_sums->Add(number, rows);
  } else if (m_end - m_begin > kSummed) {
    m_sums = std::make_unique<RowSums>();
    for (std::uint64_t each = m_begin; each != m_end; ++each)
      if (!Slot(each).dead) m_sums->Add(each, Slot(each).Rows());
  }
}

// Added one by one from the nearest of these: the front, the end, or the number's group. A live
// stream asks at the front and at the end.
std::int64_t TreeItems::Siblings::RowsBefore(std::uint64_t number) const {
  const auto rowsOf = [this](std::uint64_t each, std::uint64_t end) {
    std::int64_t rows = 0;
    for (; each < end; ++each)
      if (!Slot(each).dead) rows += Slot(each).Rows();
    return rows;
  };
  const std::uint64_t group = number >> RowSums::kGroupBits << RowSums::kGroupBits;
  const bool summed = m_sums && group > m_begin;
  if (m_end - number < number - (summed ? group : m_begin)) return m_rows - rowsOf(number, m_end);
  return summed ? m_sums->BeforeGroupOf(number) + rowsOf(group, number) : rowsOf(m_begin, number);
}

TreeItems::Item* TreeItems::Siblings::At(std::int64_t row) const {
  std::uint64_t each = m_begin;
  if (m_sums) each = std::max(each, m_sums->GroupWith(row));
  for (;; ++each) {
    Item& item = Slot(each);
    if (item.dead) continue;
    if (row < item.Rows()) return &item;
    row -= item.Rows();
  }
}

TreeItems::Item* TreeItems::Siblings::Beside(const Item& item, bool next) const {
  if (next ? item.number + 1 >= m_end : item.number == m_begin) return nullptr;
  Item& beside = Slot(next ? item.number + 1 : item.number - 1);
  return beside.dead ? nullptr : &beside;
}

void TreeItems::Siblings::DropChunks() {
  const std::uint64_t first = PlaceOf(m_begin).chunk;
  const std::size_t gone =
      std::min(static_cast<std::size_t>(first - m_firstChunk), m_chunks.size());
  for (std::size_t i = m_dropped; i < gone; ++i) m_chunks[i].reset();
  m_dropped = std::max(m_dropped, gone);
  // Moved up when half of the vector is empty, so that each chunk is moved about once.
  if (m_dropped * 2 <= m_chunks.size()) return;
  m_chunks.erase(m_chunks.begin(), m_chunks.begin() + static_cast<std::ptrdiff_t>(m_dropped));
  m_firstChunk += m_dropped;
  m_dropped = 0;
}
