#include "filter_scenes.h"

#include <QApplication>
#include <QComboBox>
#include <QElapsedTimer>
#include <QKeyEvent>

#include "docview/commands/command_ids.h"
#include "shell/tessera_app.h"
#include "statistics/window/statistics_dialog.h"

namespace {

constexpr int kCountingMs = 600;

}  // namespace

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

void FilterScenes::Statistics() {
  m_tessera.Frame()->OnCommand(ID_VIEW_STATISTICS);
  for (QWidget* const widget : QApplication::topLevelWidgets()) {
    if (widget->objectName() != QStringLiteral("statistics") || !widget->isVisible()) continue;
    auto* const field = widget->findChild<QComboBox*>(QString::number(CStatisticsDlg::kField));
    for (const StatField counted : {StatField::Component, StatField::Pattern}) {
      field->setCurrentIndex(static_cast<int>(counted));
      // Threads count.
      QElapsedTimer clock;
      for (clock.start(); clock.elapsed() < kCountingMs;) m_scenes.Settle();
      m_scenes.Save(*widget,
                    QStringLiteral("statistics-") + QString::fromLatin1(WordOf(counted).data()));
    }
  }
  m_tessera.Frame()->OnCommand(ID_VIEW_STATISTICS);
}

void FilterScenes::Overview() {
  const auto settle = [this] {
    QElapsedTimer clock;
    for (clock.start(); clock.elapsed() < kCountingMs;) m_scenes.Settle();
  };
  m_tessera.Frame()->OnCommand(ID_VIEW_OVERVIEW);
  QWidget* const strip = m_scenes.Window().findChild<QWidget*>(QStringLiteral("overview"));
  const auto press = [&](int key, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
    QKeyEvent event(QEvent::KeyPress, key, modifiers);
    QApplication::sendEvent(strip, &event);
  };
  settle();
  m_scenes.Save(m_scenes.Window(), QStringLiteral("overview"));
  for (int bars = 0; bars < 20; ++bars) press(Qt::Key_Right);
  for (int bars = 0; bars < 12; ++bars) press(Qt::Key_Right, Qt::ShiftModifier);
  settle();
  m_scenes.Save(m_scenes.Window(), QStringLiteral("overview-chosen"));
  press(Qt::Key_Plus);
  press(Qt::Key_Plus);
  settle();
  m_scenes.Save(m_scenes.Window(), QStringLiteral("overview-zoomed"));
  strip->setFocus();
  m_tessera.Frame()->OnCommand(ID_VIEW_OVERVIEW);
}
