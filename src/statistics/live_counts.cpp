#include "statistics/live_counts.h"

#include <utility>

#include "records/record_fields.h"

LiveCounts::LiveCounts(StatField field, const StatBounds& bounds)
    : m_bounds(bounds), m_key(field), m_table(bounds) {}

void LiveCounts::Add(const TraceEvent_i& trace, bool isShown) {
  if (!isShown) {
    m_notes.push_back({0, kHidden});
    return;
  }
  std::vector<std::uint8_t> made;
  const std::uint8_t* record = trace.Record();
  if (!record) {
    made = RecordOf(trace);
    record = made.data();
  }
  const RawTrace raw(record);
  const std::string_view key = m_key.Of(raw);
  m_notes.push_back({StampOf(raw), m_table.NumberOf(key, KeyTable::HashOf(key))});
}

void LiveCounts::Remove(std::size_t traces) {
  m_notes.erase(m_notes.begin(), m_notes.begin() + static_cast<std::ptrdiff_t>(traces));
}

const StatTable& LiveCounts::Table() {
  m_table.ClearTallies();
  for (const Note& note : m_notes)
    if (note.number != kHidden) m_table.AddTo(note.number, note.stamp);
  if (m_table.IsFull()) ForgetKeysWithoutTraces();
  return m_table;
}

// So that keys which come later have room.
void LiveCounts::ForgetKeysWithoutTraces() {
  StatTable kept(m_bounds);
  std::vector<std::uint32_t> numbers(m_table.Size(), StatTable::kOthers);
  for (std::uint32_t old = 0; old < m_table.Size(); ++old) {
    if (m_table.TallyAt(old).count == 0) continue;
    const std::string_view key = m_table.KeyAt(old);
    numbers[old] = kept.NumberOf(key, KeyTable::HashOf(key));
  }
  if (kept.Size() == m_table.Size()) return;
  m_table = std::move(kept);
  for (Note& note : m_notes) {
    if (note.number < kHidden) note.number = numbers[note.number];
    if (note.number != kHidden) m_table.AddTo(note.number, note.stamp);
  }
}
