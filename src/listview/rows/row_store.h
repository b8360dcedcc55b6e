// The rows of a list view: the document's traces that pass its filter, in document order.
//
// Shape    While nothing is filtered out, the rows are a window on the document's own list and take
//          no memory. Otherwise there is a TraceRow for each, in a queue whose entries never move.
// Owner    Borrows the list and the traces. A trace is removed from the store before it is
//          released. After the list was cleared or replaced, the store has no rows until Clear or
//          ShowAll, and does not read its old pointers.
// Threads  Interface thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <optional>

#include "records/trace_list.h"

struct TraceRow {
  TraceEvent_i* event;
  std::uint32_t state;  // always 0: nothing reads it
};

class RowStore {
 public:
  explicit RowStore(const TraceList_t& traces) : m_traces(traces) { Clear(); }

  int Size() const;
  TraceRow operator[](int row) const;  // REQUIRES: 0 <= row < Size()
  TraceEvent_i* EventAt(int row) const { return (*this)[row].event; }
  // In the document's list; nothing where the rows are no window. REQUIRES: Has(row).
  std::optional<std::size_t> PlaceOf(int row) const {
    if (!m_window) return std::nullopt;
    return static_cast<std::size_t>(m_begin + static_cast<std::uint64_t>(row) - m_traces.Popped());
  }
  // The row of a trace by its place + TraceList_t::Popped; nothing where the rows are no window.
  std::optional<int> RowOf(std::uint64_t number) const {
    if (!m_window || IsStale() || number < m_begin || number >= m_end) return std::nullopt;
    return static_cast<int>(number - m_begin);
  }
  bool Has(int row) const { return row >= 0 && row < Size(); }

  void Clear();
  // Takes the rows of another store on the same list, which has none afterwards.
  void TakeOver(RowStore& other);
  // No rows, and no window either: no row that comes costs more than the one before.
  void ClearToQueue();
  // The rows become all traces of the document.
  void ShowAll();
  // REQUIRES: the document has the event, after those of the existing rows.
  void Append(TraceEvent_i* event);
  // Removes the row of the event and returns its index, -1 when no row shows it. A document trims
  // its oldest traces, and rows are in document order. So the search begins at the front. With
  // `oldest` only the first row is checked, so that a trace that is not shown costs no search.
  int RemoveRow(const TraceEvent_i* event, bool oldest);
  // Bytes held for the rows; a window holds none.
  std::size_t StorageBytes() const;

 private:
  bool IsStale() const { return m_generation != m_traces.Generation(); }
  TraceEvent_i* InWindow(std::uint64_t position) const;
  bool ExtendWindow(const TraceEvent_i* event);
  void RemoveFirst();
  void Materialise();

  const TraceList_t& m_traces;
  std::uint64_t m_generation = 0;        // of m_traces, when the rows were made
  bool m_window = true;                  // rows are m_traces by position
  std::uint64_t m_begin = 0, m_end = 0;  // window: positions counted with TraceList_t::Popped
  std::deque<TraceRow> m_rows;
};
