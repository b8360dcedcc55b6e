// The columns of times, and the dialogs that go to a time or a row.
#include <QDialog>
#include <QLineEdit>

#include "dialog_scenes.h"
#include "docview/commands/command_ids.h"
#include "listview/rows/trace_view.h"
#include "shell/tessera_app.h"

void DialogScenes::Times() {
  CMainFrame& frame = *m_tessera.Frame();
  auto* const list = dynamic_cast<CTraceView*>(frame.MDIGetActive()->GetActiveView());
  if (!list) return;
  constexpr unsigned kBoth = kRowFocused | kRowSelected;
  const int row = list->List().TopIndex() + list->List().CountPerPage() / 2;
  list->List().SetItemState(-1, 0, kBoth);
  list->List().SetItemState(row, kBoth, kBoth);
  for (const unsigned column : {ID_VIEW_TIMEDELTA, ID_VIEW_TIMEWALL, ID_VIEW_TIMEREFERENCE})
    frame.OnCommand(column);
  m_scenes.Settle();
  m_scenes.Save(m_scenes.Window(), QStringLiteral("times"));
  Run(ID_VIEW_GOTOTIME, [this](QWidget& dialog) {
    dialog.findChild<QLineEdit*>()->setText(QStringLiteral("23:59"));
    static_cast<QDialog&>(dialog).accept();
    m_scenes.Settle();
    m_scenes.Save(dialog, QStringLiteral("go-to-time"));
    dialog.close();
  });
  m_scenes.SaveModal(ID_VIEW_GOTOROW, QStringLiteral("go-to-row"));
  for (const unsigned column :
       {ID_VIEW_TIMEDELTA, ID_VIEW_TIMEWALL, ID_VIEW_TIMEREFERENCE, ID_VIEW_TIMESINCE})
    frame.OnCommand(column);
}
