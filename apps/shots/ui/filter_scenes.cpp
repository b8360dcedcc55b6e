#include "filter_scenes.h"

#include <QApplication>
#include <QKeyEvent>

#include "docview/commands/command_ids.h"
#include "shell/tessera_app.h"

FilterLineWidget& FilterScenes::Line() {
  return *static_cast<FilterLineWidget*>(
      m_scenes.Window().findChild<QWidget*>(QStringLiteral("filter line")));
}

void FilterScenes::Type(const QString& text) {
  FilterEdit& edit = Line().Edit();
  edit.clear();
  for (const QChar letter : text) {
    QKeyEvent press(QEvent::KeyPress, 0, Qt::NoModifier, letter);
    QApplication::sendEvent(&edit, &press);
  }
}

void FilterScenes::Save(const QString& name) {
  m_scenes.Settle();
  m_scenes.Save(m_scenes.Window(), QStringLiteral("filter-line-") + name);
}

void FilterScenes::All() {
  const auto press = [this](int key) {
    QKeyEvent event(QEvent::KeyPress, key, Qt::NoModifier);
    QApplication::sendEvent(&Line().Edit(), &event);
  };
  // Without a list Escape would put the line away.
  const auto closeList = [&] {
    if (Line().Completions() && Line().Completions()->isVisible()) press(Qt::Key_Escape);
  };
  m_tessera.Frame()->OnCommand(ID_VIEW_FILTERTEXT);
  Save(QStringLiteral("empty"));
  Type(QStringLiteral("severity >= warn and componet == Sql"));
  closeList();
  Save(QStringLiteral("error"));
  Type(
      QStringLiteral("severity >= warn and not text contains \"retry\" and time > end - 5m and "
                     "machine != \"a machine with a long name\" and component == "));
  Save(QStringLiteral("long"));
  closeList();
  Type(QStringLiteral("severity >= warn"));
  closeList();
  press(Qt::Key_Return);
  Save(QStringLiteral("applied"));
  press(Qt::Key_Escape);
}
