// The files that the list view writes: an export of its rows, and a saved selection.
#include "listview/export/export_cells.h"
#include "listview/export/export_dialogs.h"
#include "listview/export/export_run.h"
#include "listview/rows/row_source.h"
#include "listview/rows/trace_view.h"

namespace {

std::string SuggestedNameOf(const CDocument& document) {
  return SuggestedName(document.GetPathName(), document.GetTitle());
}

bool AnyHidden(const ColumnFlags& flags) {
  for (const std::int32_t flag : flags)
    if (flag == 0) return true;
  return false;
}

// The header line, then a line for each row.
class RowLines final : public ExportText {
 public:
  RowLines(std::vector<Column> columns, RowSource& rows, const NameMap& names)
      : m_columns(std::move(columns)), m_rows(rows), m_names(names) {}

  bool Next(std::string& out) override {
    if (!std::exchange(m_begun, true)) {
      WriteExportHeader(out, m_columns);
      return true;
    }
    const TraceEvent_i* const event = m_rows.Next();
    if (event) WriteExportLine(out, m_columns, *event, m_rows.Above(), m_names, g_useUtc);
    return event != nullptr;
  }
  std::optional<int> Progress() const override { return m_rows.Progress(); }

 private:
  const std::vector<Column> m_columns;
  RowSource& m_rows;
  const NameMap& m_names;
  bool m_begun = false;
};

}  // namespace

void CTraceView::OnExport() {
  if (!m_document.MayBeWritten() || !FinishFilter()) return;
  CExportDialog dialog(GetHost(), SuggestedNameOf(m_document), m_list->SelectedCount() > 0,
                       AnyHidden(m_columns.Flags()));
  if (dialog.DoModal() != CDialog::kIdOk) return;
  RowSource rows(m_rows, *m_list, dialog.m_selectedOnly);
  RowLines lines(ExportColumns(m_columns.Order(), m_columns.Flags(), dialog.m_hiddenColumns), rows,
                 m_document.m_names);
  // Kept: a failed write, on a full disk for instance, ends the export without a message.
  RunExport(m_document, dialog.GetPathName(), lines);
}

void CTraceView::OnSaveTraces() {
  if (!m_document.MayBeWritten() || !FinishFilter()) return;
  CSaveAsDialog dialog(GetHost(), SuggestedNameOf(m_document), m_list->SelectedCount() > 0);
  if (dialog.DoModal() != CDialog::kIdOk) return;
  RowSource rows(m_rows, *m_list, dialog.m_selectedOnly);
  // Kept: a running capture shares the marks of the names. So names that the capture has written
  // are written again to its file, and names that this save writes first are missing there.
  const bool saved = SaveTraces(m_document, dialog.GetPathName(), BoxIcon::None, rows);
  // Kept: also when a filter hid traces, which then are not in the file.
  if (saved && !dialog.m_selectedOnly) m_document.SetModifiedFlag(false);
}
