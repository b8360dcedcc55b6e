#include "listview/rows/row_walk.h"

#include "tree/find/searched_text.h"

namespace {

// In a part of the search.
constexpr int kCandidatesPerPart = 1000;
constexpr std::chrono::milliseconds kWait{1};

// The first of `size` whose record stands at this one or behind it. In the traces of one file, and
// in its rows, records stand in the order of the file.
template <class RecordAt>
std::size_t PlaceOf(const std::uint8_t* record, std::size_t size, const RecordAt& recordAt) {
  std::size_t low = 0;
  while (low < size) {
    const std::size_t middle = low + (size - low) / 2;
    if (recordAt(middle) < record)
      low = middle + 1;
    else
      size = middle;
  }
  return low;
}

}  // namespace

RowWalk::RowWalk(const RowStore& rows, int focusedRow, bool backward)
    : m_rows(rows), m_step(backward ? -1 : 1), m_left(rows.Size()) {
  const int last = rows.Size() - 1;
  int start = focusedRow == -1 ? -1 : focusedRow + m_step;
  if (!rows.Has(start)) {
    start = backward ? last : 0;
  } else {
    --m_left;
  }
  m_stop = start - m_step;
  m_row = m_stop;
}

void RowWalk::Scan(const TraceList_t& traces, const BeginScan& begin) {
  if (m_left == 0 || traces.empty()) return;
  const std::uint8_t* const record = m_rows.EventAt(m_stop + m_step)->Record();
  if (!record) return;
  const std::size_t start =
      PlaceOf(record, traces.size(), [&](std::size_t place) { return traces[place]->Record(); });
  if (start == traces.size()) return;
  m_traces = &traces;
  m_scan = begin({.start = start, .backward = m_step < 0, .wraps = true});
}

// Waits for the next row that may match.
bool RowWalk::Prepare() {
  for (int candidates = 0; m_scan && !m_found; ++candidates) {
    if (candidates == kCandidatesPerPart) return true;
    switch (m_scan->Next(kWait)) {
      case TextScan::State::NotYet:
        return true;
      case TextScan::State::Over:
        m_left = 0;
        m_found = true;
        break;
      case TextScan::State::Failed:
        m_scan.reset();  // from here on each row is tested
        break;
      case TextScan::State::Found: {
        const TraceEvent_i* const event = (*m_traces)[m_scan->Place()];
        const std::size_t row = PlaceOf(
            event->Record(), static_cast<std::size_t>(m_rows.Size()),
            [this](std::size_t at) { return m_rows.EventAt(static_cast<int>(at))->Record(); });
        if (m_rows.Has(static_cast<int>(row)) && m_rows.EventAt(static_cast<int>(row)) == event)
          PassTo(static_cast<int>(row));
        break;
      }
    }
  }
  return false;
}

// Makes the row the next one.
void RowWalk::PassTo(int row) {
  const int size = m_rows.Size();
  const int next = m_row + m_step;
  const int passed = ((row - next) * m_step % size + size) % size;
  m_found = true;
  m_left -= passed;
  m_row = row - m_step;
}

void RowWalk::Step() {
  m_row += m_step;
  if (!m_rows.Has(m_row)) m_row = m_step > 0 ? 0 : m_rows.Size() - 1;
}

std::optional<std::string_view> RowWalk::NextText() {
  m_found = false;
  if (m_left-- <= 0) return std::nullopt;
  Step();
  return SearchedText(*m_rows.EventAt(m_row), m_text);
}
