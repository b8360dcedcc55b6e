#include "shell/mdi/ui/child_window.h"

#include <QApplication>
#include <QCloseEvent>
#include <QKeyEvent>
#include <QMenu>
#include <algorithm>

#include "docview/ui/qt_control.h"
#include "docview/ui/qt_host.h"
#include "docview/ui/screen_fit.h"

namespace {

// The positions of these actions in Qt's menu of a child window.
constexpr int kRestoreAction = 0, kMaximiseAction = 4;

}  // namespace

ChildWindow::ChildWindow(CMDIChildWnd& child, MdiArea& area)
    : m_child(&child),
      m_area(area),
      m_room(new QWidget),
      m_layout(new QVBoxLayout(m_room)),
      m_split(new ViewSplit(m_room)) {
  m_layout->setContentsMargins(0, 0, 0, 0);
  m_layout->setSpacing(0);
  m_layout->addWidget(m_split, 1);
  m_split->m_extentChanged = [this](int extentPx) {
    if (m_child) m_child->OnBesideExtent(extentPx);
  };
  m_room->setFocusPolicy(Qt::StrongFocus);
  setWidget(m_room);
  setWindowIcon(QApplication::windowIcon());
  setMinimumSize(160, 90);
  ReplaceMenuKeys();
  m_settled.setSingleShot(true);
  m_settled.setInterval(0);
  connect(&m_settled, &QTimer::timeout, this, [this] { ReportSize(); });
}

// Otherwise its keys would be ambiguous: Ctrl+W is the wizard's, Ctrl+F6 the tree's, and the shown
// keys work for the whole main window.
void ChildWindow::ReplaceMenuKeys() {
  const QList<QAction*> actions = systemMenu()->actions();
  for (QAction* action : actions) action->setShortcuts(QList<QKeySequence>());
  const auto show = [](QAction* action, const char* key) {
    action->setText(action->text().section(QLatin1Char('\t'), 0, 0) + QLatin1Char('\t') +
                    QLatin1String(key));
  };
  show(actions.value(kRestoreAction), "Ctrl+F5");
  show(actions.value(kMaximiseAction), "Ctrl+F10");
  show(actions.constLast(), "Ctrl+F4");
}

void ChildWindow::Detach() {
  m_child = nullptr;
  m_settled.stop();
  for (const auto& control : m_controls) {
    if (control) ReleaseControl(*control);
  }
  m_controls.clear();
  ShowBar(nullptr);
  ShowStrip(nullptr);
  m_split->ShowBeside(nullptr, BesideEdge::Below, 0);
}

void ChildWindow::ShowAbove(QPointer<QWidget>& place, QWidget* widget, int index) {
  if (place && place != widget) {
    m_layout->removeWidget(place);
    ReleaseControl(*place);
  }
  place = widget;
  if (!widget) return;
  m_layout->insertWidget(index, widget);
  widget->show();
}

void ChildWindow::ShowControl(QWidget* control) {
  if (std::find(m_controls.begin(), m_controls.end(), control) == m_controls.end()) {
    m_controls.emplace_back(control);
    m_split->AddControl(control);
  }
  // Hide the others first: two visible controls would share the space, and the one that is hidden
  // would scroll for half of it.
  for (const auto& other : m_controls) {
    if (other && other != control) other->hide();
  }
  control->show();
  m_room->setFocusProxy(control);
}

// Keys come here that no control has taken.
void ChildWindow::keyPressEvent(QKeyEvent* event) {
  if (event->key() == Qt::Key_Escape && m_child && m_child->OnEscape()) return;
  QMdiSubWindow::keyPressEvent(event);
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

// A main window that opens maximised does not have its size yet.
QSize ChildWindow::Room() const {
  return window()->isMaximized() ? ScreenRoom(*window()).size() : m_area.contentsRect().size();
}

void ChildWindow::FitIntoArea() {
  const QSize room = Room();
  resize(size().boundedTo(room.expandedTo(minimumSize())));
  move(std::max(std::min(x(), room.width() - width()), 0),
       std::max(std::min(y(), room.height() - height()), 0));
}

// When the window is first shown restored, perhaps after it began maximised: the area may have
// become smaller meanwhile.
void ChildWindow::ReportSize() {
  if (!m_child || !isVisible()) return;
  const bool restored = !isMaximized() && !isMinimized() && !isShaded();
  if (restored && !m_placed) FitIntoArea();
  m_placed = restored;
  const SizeType type = isMinimized() || isShaded() ? SizeType::Minimised
                        : isMaximized()             ? SizeType::Maximised
                                                    : SizeType::Restored;
  m_child->OnSize(type, width(), height());
}
