#include "config/traces/traces_list.h"

#include <cstdlib>

#include "base/text.h"
#include "config/traces/modify_trace_dialog.h"
#include "quor/client/trace_config.h"

namespace {

constexpr int kComponent = 0, kCategory = 1, kMask = 2;

}  // namespace

void CTracesList::Attach(TracesControls& controls) {
  m_controls = &controls;
  for (const char* const heading : {"Component", "Category", "Attribute Mask"})
    controls.List().InsertColumn(heading);
  ShowRows();
}

void CTracesList::Fill(TraceItems items, const char* emptyText) {
  m_emptyText = emptyText;
  m_items = std::move(items);
  SortItems(m_items, m_nSortKey);
  ShowRows();
}

void CTracesList::ShowRows() {
  if (!m_controls) return;
  m_controls->List().SetItemCount(static_cast<int>(m_items.size()));
  m_controls->List().ShowSort(std::abs(m_nSortKey) - 1, m_nSortKey > 0);
}

// A heading that the rows were not sorted by starts descending, a second click turns it.
void CTracesList::OnReportHeading(int column) {
  const int subItem = column + 1;
  m_nSortKey = std::abs(m_nSortKey) == subItem ? -m_nSortKey : subItem;
  SortItems(m_items, m_nSortKey);
  ShowRows();
}

void CTracesList::OnReportSelection() {
  if (m_controls) m_controls->EnableButtons(HasSelection());
}

void CTracesList::ApplySettings(unsigned settings) {
  if (!HasSelection()) return;
  for (const int row : m_controls->List().SelectedRows()) Item(row).m_settings = settings;
  m_controls->List().Repaint();
  m_changed();
}

void CTracesList::OnCustom() {
  if (!HasSelection()) return;
  unsigned settings = 0;
  for (const int row : m_controls->List().SelectedRows()) settings |= Item(row).m_settings;
  CModifyTraceDialog dialog(m_host, settings);
  if (dialog.DoModal() == CDialog::kIdOk) ApplySettings(dialog.GetDialogSettings());
}

std::string CTracesList::ReportText(int row, int column) {
  const CTraceItem& item = Item(row);
  switch (column) {
    case kComponent:
      return _UTF2MBS(item.m_component);
    case kCategory:
      return _UTF2MBS(item.m_category);
    default:
      return SettingsToLabel(item.m_settings);
  }
}

std::vector<ReportMark> CTracesList::ReportMarks(int row, int column) {
  return column == kMask ? SettingsMarks(Item(row).m_settings) : std::vector<ReportMark>();
}
