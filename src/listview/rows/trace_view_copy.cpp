// The selected rows of the list, to copy.
#include "listview/columns/time_columns.h"
#include "listview/copy/copied_traces.h"
#include "listview/rows/trace_view.h"

namespace {

class SelectedRows final : public CopiedTraces {
 public:
  explicit SelectedRows(CTraceView& view) : m_view(view) {}

  void Rewind() override {
    m_row = -1;
    m_given = 0;
  }
  bool Next(CopiedTrace& trace) override {
    const RowStore& rows = m_view.Rows();
    m_row = m_view.List().NextItem(m_row, kRowSelected);
    if (!rows.Has(m_row)) return false;
    ++m_given;
    trace = {rows.EventAt(m_row), m_row > 0 ? rows.EventAt(m_row - 1) : nullptr, m_row};
    return true;
  }
  int Progress() const override {
    return Thousandths(m_given, static_cast<std::uint64_t>(m_view.List().SelectedCount()));
  }
  std::vector<Column> Columns() const override {
    std::vector<Column> columns;
    for (const std::int32_t index : m_view.List().Header().GetColumnOrder())
      if (const auto column = static_cast<Column>(index); IsColumnShown(column))
        columns.push_back(column);
    return columns;
  }
  std::string FurtherText(const CopiedTrace& trace, Column column) override {
    return m_view.RowListText(trace.row, column);
  }

 private:
  CTraceView& m_view;
  int m_row = -1;
  std::uint64_t m_given = 0;
};

}  // namespace

std::unique_ptr<CopiedTraces> CTraceView::Selected() {
  if (m_list->SelectedCount() == 0) return nullptr;
  return std::make_unique<SelectedRows>(*this);
}
