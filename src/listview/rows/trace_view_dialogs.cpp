// The list's dialogs on one trace and on what it shows: "Trace Properties" and "Filter".
#include "listview/details/trace_detail_dialog.h"
#include "listview/rows/trace_view.h"
#include "listview/rows/trace_view_iterator.h"
#include "tree/filter/filter_dialog.h"

void CTraceView::MapDialogCommands() {
  MapCommand(
      ID_VIEW_PROPERTIES, [this] { OnViewProperties(); },
      [this](CCmdUI& ui) { ui.Enable(CurrentEvent() != nullptr); });
  MapCommand(ID_VIEW_FILTER, [this] { OnFilter(); });
}

void CTraceView::OnViewProperties() {
  const int row = m_list->NextItem(-1, kRowFocused);
  if (!m_rows.Has(row)) return;
  CTraceViewIterator iterator(*this, m_rows, row);
  CTraceDetailDialog(GetHost(), iterator, m_document.m_names).DoModal();
}

void CTraceView::OnFilter() {
  m_filter.MergeDocumentNames(m_document);
  CTraceFilter before = m_filter;
  CFilterDialog dialog(GetHost(), m_filter, m_document.m_names);
  if (dialog.DoModal() != CDialog::kIdOk) return;
  if (RebuildRows())
    m_filterChanged = true;
  else
    m_filter = std::move(before);
}
