#include "shell/ui/child_window.h"

#include <QApplication>
#include <QCloseEvent>
#include <QMenu>
#include <algorithm>

#include "docview/ui/qt_control.h"
#include "docview/ui/qt_host.h"

ChildWindow::ChildWindow(CMDIChildWnd& child, MdiArea& area)
    : m_child(&child), m_area(area), m_room(new QWidget), m_layout(new QVBoxLayout(m_room)) {
  m_layout->setContentsMargins(0, 0, 0, 0);
  m_room->setFocusPolicy(Qt::StrongFocus);
  setWidget(m_room);
  setWindowIcon(QApplication::windowIcon());
  setMinimumSize(160, 90);
  TameSystemMenu();
  m_settled.setSingleShot(true);
  m_settled.setInterval(0);
  connect(&m_settled, &QTimer::timeout, this, [this] { ReportSize(); });
}

// Its keys would be known twice: Ctrl+W is the wizard's, Ctrl+F6 the tree's, and Ctrl+F4 works for
// the whole main window.
void ChildWindow::TameSystemMenu() {
  for (QAction* action : systemMenu()->actions()) action->setShortcuts(QList<QKeySequence>());
  QAction* close = systemMenu()->actions().constLast();
  close->setText(close->text().section(QLatin1Char('\t'), 0, 0) + QStringLiteral("\tCtrl+F4"));
}

void ChildWindow::Detach() {
  m_child = nullptr;
  m_settled.stop();
  for (const auto& control : m_controls) {
    if (control) ReleaseControl(*control);
  }
  m_controls.clear();
}

void ChildWindow::ShowControl(QWidget* control) {
  if (std::find(m_controls.begin(), m_controls.end(), control) == m_controls.end()) {
    m_controls.emplace_back(control);
    m_layout->addWidget(control);
  }
  for (const auto& other : m_controls) {
    if (other) other->setVisible(other == control);
  }
  m_room->setFocusProxy(control);
}

void ChildWindow::closeEvent(QCloseEvent* event) {
  event->ignore();
  // While a dialog asks about a document its window stays.
  if (!m_child || QtHost::InModal()) return;
  m_closing = true;
  const QPointer<ChildWindow> alive(this);
  m_child->OnClose();
  if (alive) m_closing = false;
}

void ChildWindow::showEvent(QShowEvent* event) {
  QMdiSubWindow::showEvent(event);
  m_settled.start();
}

void ChildWindow::resizeEvent(QResizeEvent* event) {
  QMdiSubWindow::resizeEvent(event);
  m_settled.start();
}

void ChildWindow::changeEvent(QEvent* event) {
  QMdiSubWindow::changeEvent(event);
  if (event->type() != QEvent::WindowStateChange) return;
  m_settled.start();
  if (m_area.m_changed) m_area.m_changed();
}

// A window that is larger than the room is placed with its beginning out of sight.
void ChildWindow::ShowBeginning() {
  if (m_placed || isMaximized() || isMinimized()) return;
  m_placed = true;
  move(std::max(x(), 0), std::max(y(), 0));
}

void ChildWindow::ReportSize() {
  if (!m_child || !isVisible()) return;
  ShowBeginning();
  const SizeType type = isMinimized() || isShaded() ? SizeType::Minimised
                        : isMaximized()             ? SizeType::Maximised
                                                    : SizeType::Restored;
  m_child->OnSize(type, width(), height());
}
