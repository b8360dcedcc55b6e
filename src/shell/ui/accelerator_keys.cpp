#include "shell/ui/accelerator_keys.h"

#include <QApplication>
#include <QKeyEvent>
#include <QWindow>

#include "docview/ui/key_keeper.h"
#include "shell/menus/menu_resources.h"

AcceleratorKeys::AcceleratorKeys(CommandActions& actions, QWidget& window)
    : QObject(&window), m_window(window) {
  for (const Accelerator& accelerator : Accelerators()) {
    const unsigned id = accelerator.id;
    Add(QKeySequence(QString::fromLatin1(accelerator.key), QKeySequence::PortableText),
        Qt::ApplicationShortcut, [&actions, id] { actions.Run(id); });
  }
  qApp->installEventFilter(this);
  connect(qApp, &QGuiApplication::focusWindowChanged, this,
          [this](const QWindow* focus) { Arm(focus); });
}

// A modeless box of ours, such as the progress of a load, belongs to the main window: the keys work
// there too. Without a focus they do not work.
void AcceleratorKeys::Arm(const QWindow* focus) {
  const QWindow* const main = m_window.windowHandle();
  const QWindow* top = focus;
  while (top && top != main && top->transientParent()) top = top->transientParent();
  for (QShortcut* const shortcut : m_everywhere) shortcut->setEnabled(!focus || top == main);
}

void AcceleratorKeys::AddWindowKey(const QKeySequence& key, const std::function<void()>& run) {
  Add(key, Qt::WindowShortcut, run);
}

void AcceleratorKeys::Add(const QKeySequence& key, Qt::ShortcutContext context,
                          const std::function<void()>& run) {
  auto* shortcut = new QShortcut(key, &m_window);
  shortcut->setContext(context);
  if (context == Qt::ApplicationShortcut) m_everywhere << shortcut;
  connect(shortcut, &QShortcut::activated, this, run);
  connect(shortcut, &QShortcut::activatedAmbiguously, this, run);
  m_keys.insert(key[0].toCombined());
}

// A focused widget may claim a key before the shortcuts. Inside the main window it does not get an
// accelerator, whatever the state of the command. A text keeps its own.
bool AcceleratorKeys::eventFilter(QObject* watched, QEvent* event) {
  if (event->type() != QEvent::ShortcutOverride) return false;
  const auto* key = static_cast<QKeyEvent*>(event);
  auto* widget = qobject_cast<QWidget*>(watched);
  if (!widget || widget->window() != &m_window) return false;
  if (!m_keys.contains(key->keyCombination().toCombined())) return false;
  const auto* keeper = dynamic_cast<const KeyKeeper*>(widget);
  if (keeper && keeper->KeepsKey(*key)) return false;
  event->ignore();
  return true;
}
