// The commands of every pane.
#include "base/text.h"
#include "docview/commands/command_ids.h"
#include "listview/copy/copy_rows.h"
#include "listview/details/trace_detail_dialog.h"
#include "listview/source/open_source.h"
#include "panes/trace_pane.h"
#include "panes/tree_as_text.h"
#include "tree/filter/filter_dialog.h"
#include "tree/find/find_search.h"
#include "tree/find/find_settings.h"

void TracePane::MapCommands() {
  MapCommand(
      ID_EDIT_FIND, [this] { OnFind(); }, [this](CCmdUI& ui) { ui.Enable(ShowsAny()); });
  MapCommand(
      ID_EDIT_FINDNEXT, [this] { Find(false); },
      [this](CCmdUI& ui) { ui.Enable(ShowsAny() && MayFindNext()); });
  MapCommand(
      ID_VIEW_PROPERTIES, [this] { OnViewProperties(); },
      [this](CCmdUI& ui) {
        if (HasSelection()) ui.Enable(CurrentEvent() != nullptr);
      });
  MapCommand(
      ID_VIEW_GOTOSOURCE, [this] { OnGotoSource(); },
      [this](CCmdUI& ui) { OnUpdateGotoSource(ui); });
  // The state of the menu item is the document's.
  MapCommand(ID_VIEW_SYNCHRONIZE, [this] { OnSynchronize(); });
  MapCommand(ID_VIEW_FILTER, [this] { OnFilter(); });
  MapCommand(ID_FILE_EXPORT, [this] { OnExport(); });
  MapCopies();
}

std::unique_ptr<CopiedTraces> TracePane::Selected() {
  return nullptr;
}

void TracePane::MapCopies() {
  const auto map = [this](unsigned command, auto formOf) {
    MapCommand(
        command,
        [this, formOf] {
          if (!FinishFilter()) return;
          if (const auto traces = Selected()) CopyRowsAs(m_document, *traces, formOf());
        },
        [this](CCmdUI& ui) { ui.Enable(!m_document.m_loading && Selected() != nullptr); });
  };
  map(ID_EDIT_COPYROWS, [] { return LastCopyForm(); });
  for (std::size_t form = 0; form < kCopyForms; ++form)
    map(ID_EDIT_COPYTEXT + static_cast<unsigned>(form),
        [form] { return static_cast<CopyForm>(form); });
  MapCommand(
      ID_EDIT_COPYHEADINGS, [] { StoreCopiesHeadings(!CopiesHeadings()); },
      [](CCmdUI& ui) { ui.SetCheck(CopiesHeadings()); });
}

void TracePane::OnFind() {
  if (RunFindDialog(GetHost())) Find(true);
}

// Opening a source may take as long as the user likes: this pane may be destroyed meanwhile.
void TracePane::OnViewProperties() {
  if (!FinishFilter()) return;
  std::unique_ptr<CTraceIterator> iterator = MakeIterator();
  if (!iterator) return;
  std::string path;
  unsigned line = 0;
  {
    CTraceDetailDialog dialog(GetHost(), *iterator, m_document.m_names);
    dialog.DoModal();
    path = dialog.m_gotoPath;
    line = dialog.m_gotoLine;
  }
  iterator.reset();
  if (!path.empty()) OpenSourceAt(path, line);
}

void TracePane::OnUpdateGotoSource(CCmdUI& ui) {
  if (!HasSelection()) return;
  const TraceEvent_i* const event = SourceEvent();
  ui.Enable(event && !event->GetSourceFileName(m_document.m_names).empty());
  if (event && !ui.IsEnabled()) ui.SetWhyNot(kNoSourceFile);
}

// Opening may take as long as the user likes: this pane may be destroyed meanwhile.
void TracePane::OnGotoSource() {
  if (const TraceEvent_i* const event = SourceEvent())
    OpenSourceAt(_UTF2MBS(event->GetSourceFileName(m_document.m_names)), event->GetSourceLine());
}

void TracePane::OnSynchronize() {
  m_document.m_synchronize = !m_document.m_synchronize;
  Follow(CurrentEvent());
}

void TracePane::OnFilter() {
  if (!FinishFilter()) return;
  m_filter.MergeDocumentNames(m_document);
  CTraceFilter before = m_filter;
  auto* const taker = dynamic_cast<TreeTextTaker*>(GetParentFrame());
  std::string text;
  const int answer = RunFilterDialog(m_document, m_filter, taker ? &text : nullptr);
  if (answer == CFilterDialog::kIdAsText) taker->TakeTreeText(text);
  if (answer != CDialog::kIdOk) return;
  if (Rebuild())
    m_filterChanged = true;
  else
    m_filter = std::move(before);
}
