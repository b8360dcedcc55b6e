// The commands of the tree view.
#include "listview/details/trace_detail_dialog.h"
#include "listview/source/open_source.h"
#include "tree/filter/filter_dialog.h"
#include "tree/find/find_settings.h"
#include "tree/proc/proc_view.h"
#include "tree/proc/proc_view_iterator.h"

void CProcView::MapCommands() {
  const auto hasItems = [this] { return m_tree->Walk(0, TreeStep::FirstChild) != 0; };
  MapCommand(
      ID_EDIT_FIND, [this] { OnFind(); }, [hasItems](CCmdUI& ui) { ui.Enable(hasItems()); });
  MapCommand(
      ID_EDIT_FINDNEXT, [this] { OnFindNext(); },
      [hasItems](CCmdUI& ui) { ui.Enable(hasItems() && MayFindNext()); });
  // Kept: without a selected item the state stays as it was, here and for Goto Source. Safe: the
  // commands then do nothing.
  MapCommand(
      ID_VIEW_PROPERTIES, [this] { OnViewProperties(); },
      [this](CCmdUI& ui) {
        if (m_tree->SelectedItem()) ui.Enable(CurrentEvent() != nullptr);
      });
  MapCommand(
      ID_VIEW_GOTOSOURCE, [this] { OnGotoSource(); },
      [this](CCmdUI& ui) { OnUpdateGotoSource(ui); });
  // The state of the menu item is the document's.
  MapCommand(ID_VIEW_SYNCHRONIZE, [this] { OnSynchronize(); });
  MapCommand(ID_VIEW_FILTER, [this] { OnFilter(); });
  MapCommand(ID_FILE_EXPORT, [this] { OnExport(); });
}

// A node whose trace has been trimmed has nothing to show.
void CProcView::OnViewProperties() {
  const TreeItem item = m_tree->SelectedItem();
  if (!CurrentEvent()) return;
  CProcViewIterator iterator(*this, item);
  CTraceDetailDialog dialog(GetHost(), iterator, m_document.m_names);
  dialog.DoModal();
}

// Kept: only plain traces have a source here; a block, though a trace made it, has none.
void CProcView::OnUpdateGotoSource(CCmdUI& ui) {
  const CTraceEvent* const node = NodeOf(m_tree->SelectedItem());
  if (!node) return;
  ui.Enable(node->Kind() == NodeKind::Leaf && node->event &&
            !node->event->GetSourceFileName(m_document.m_names).empty());
  if (node->Kind() == NodeKind::Leaf && node->event && !ui.IsEnabled()) ui.SetWhyNot(kNoSourceFile);
}

void CProcView::OnGotoSource() {
  const CTraceEvent* const node = NodeOf(m_tree->SelectedItem());
  if (!node || node->Kind() != NodeKind::Leaf || !node->event) return;
  const TraceEvent_i& event = *node->event;
  // The last thing done: the view may be gone when it returns.
  OpenSourceAt(event.GetSourceFileName(m_document.m_names), event.GetSourceLine());
}

void CProcView::OnSynchronize() {
  m_document.m_synchronize = !m_document.m_synchronize;
  Follow(CurrentEvent());
}

void CProcView::OnFilter() {
  m_filter.MergeDocumentNames(m_document);
  CTraceFilter before = m_filter;
  CFilterDialog dialog(GetHost(), m_filter, m_document.m_names);
  if (dialog.DoModal() != CDialog::kIdOk) return;
  if (RebuildTree())
    m_filterChanged = true;
  else
    m_filter = std::move(before);
}
