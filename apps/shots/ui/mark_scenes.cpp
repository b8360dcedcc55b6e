#include "mark_scenes.h"

#include <QWidget>

#include "docview/commands/command_ids.h"
#include "listview/rows/trace_view.h"
#include "shell/tessera_app.h"

void MarkScenes::All() {
  CMainFrame& frame = *m_tessera.Frame();
  auto* const view = dynamic_cast<CTraceView*>(frame.MDIGetActive()->GetActiveView());
  if (!view) return;
  frame.OnCommand(ID_VIEW_MARKS);
  m_scenes.Settle();
  m_scenes.Save(m_scenes.Window(), QStringLiteral("marks-empty"));
  DocNotes& notes = view->Document().Notes();
  const auto top = static_cast<std::uint64_t>(view->List().TopIndex());
  std::vector<std::uint64_t> all;
  for (std::uint8_t colour = 1; colour <= 9; ++colour) {
    all.push_back(top + colour);
    notes.Mark({all.back()}, colour);
  }
  all.push_back(top);
  notes.SetNote(top + 2, "the first retry\nafter 300 ms");
  notes.SetNote(top, "here it began");
  const unsigned both = kRowFocused | kRowSelected;
  view->List().SetItemState(static_cast<int>(top) + 4, both, both);
  m_scenes.Settle();
  m_scenes.Save(m_scenes.Window(), QStringLiteral("marks"));
  view->List().SetItemState(static_cast<int>(top) + 2, both, both);
  m_scenes.SaveModal(ID_EDIT_NOTE, QStringLiteral("marks-note"));
  m_scenes.SaveMenu(QStringLiteral("Edit"), QStringLiteral("marks-menu"));
  frame.OnCommand(ID_VIEW_PROC);
  m_scenes.Settle();
  m_scenes.Save(m_scenes.Window(), QStringLiteral("marks-tree"));
  frame.OnCommand(ID_VIEW_PROC);
  notes.Remove(all);
  frame.OnCommand(ID_VIEW_MARKS);
  m_scenes.Settle();
}
