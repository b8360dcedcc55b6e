// What the list view writes to files: an export of its rows, and a saved selection.
#include "documents/save_traces.h"
#include "listview/export/export_cells.h"
#include "listview/export/export_dialogs.h"
#include "listview/export/export_file.h"
#include "listview/rows/trace_view.h"

namespace {

std::string SuggestedNameOf(const CDocument& document) {
  return SuggestedName(document.GetPathName(), document.GetTitle());
}

bool AnyHidden() {
  for (const std::int32_t flag : g_activeColumns)
    if (flag == 0) return true;
  return false;
}

}  // namespace

// Rows in order, all or the selected ones, until `visit(row)` gives false.
template <class Visit>
void CTraceView::VisitRows(bool selectedOnly, Visit&& visit) const {
  const auto next = [&](int row) {
    return selectedOnly ? m_list->NextItem(row, kRowSelected) : row + 1;
  };
  for (int row = next(-1); m_rows.Has(row); row = next(row))
    if (!visit(row)) return;
}

void CTraceView::OnExport() {
  CExportDialog dialog(GetHost(), SuggestedNameOf(m_document), m_list->SelectedCount() > 0,
                       AnyHidden());
  if (dialog.DoModal() != CDialog::kIdOk) return;
  ExportFile file;
  if (!file.Open(dialog.GetPathName())) {
    GetHost().MessageBox({"Error opening output file.", BoxIcon::None, BoxButtons::Ok});
    return;
  }
  const CWaitCursor wait(GetHost());
  const std::vector<Column> columns =
      ExportColumns(m_list->Header().GetColumnOrder(), g_activeColumns, dialog.m_hiddenColumns);
  WriteExportHeader(file.Buffer(), columns);
  file.EndLine();
  VisitRows(dialog.m_selectedOnly, [&](int row) {
    // The row above, whether it is written or not.
    WriteExportLine(file.Buffer(), columns, *m_rows.EventAt(row), EventOfRow(row - 1),
                    m_document.m_names, g_useUtc);
    return file.EndLine();
  });
  // Kept: a write that fails, on a full disk for instance, ends the export without a word.
  file.Close();
}

void CTraceView::OnSaveTraces() {
  CSaveAsDialog dialog(GetHost(), SuggestedNameOf(m_document), m_list->SelectedCount() > 0);
  if (dialog.DoModal() != CDialog::kIdOk) return;
  // Kept: a capture that runs shares the marks of the names; those that it wrote already come again
  // in its file, and those that this file takes first are missing there.
  const bool saved = SaveTraces(GetHost(), dialog.GetPathName(), m_document.m_names, BoxIcon::None,
                                [&](const TraceSink& sink) {
                                  VisitRows(dialog.m_selectedOnly,
                                            [&](int row) { return sink(*m_rows.EventAt(row)); });
                                });
  // Kept: also when a filter hid traces, which then are not in the file.
  if (saved && !dialog.m_selectedOnly) m_document.SetModifiedFlag(false);
}
