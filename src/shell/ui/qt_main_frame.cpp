#include "shell/ui/qt_main_frame.h"

#include <QApplication>
#include <QContextMenuEvent>
#include <QThread>

#include "docview/commands/command_ids.h"
#include "shell/main_frame.h"
#include "shell/mdi/ui/child_window.h"
#include "shell/mdi/ui/mdi_layout.h"
#include "shell/mdi/ui/qt_child_frame.h"
#include "shell/menus/menu_resources.h"

namespace {

constexpr int kButtonPx = 16;
constexpr int kReadingTimeMs = 12000;  // for a message in the status bar

// The same as the keyboard's menu key.
void AskForContextMenu() {
  QWidget* const widget = QApplication::focusWidget();
  if (!widget) return;
  const QPoint middle = widget->rect().center();
  QContextMenuEvent asked(QContextMenuEvent::Keyboard, middle, widget->mapToGlobal(middle));
  QApplication::sendEvent(widget, &asked);
}

}  // namespace

QtMainFrame::QtMainFrame(CMainFrame& frame, int widthPx, int heightPx, std::function<void()> closed)
    : m_frame(frame),
      m_closed(std::move(closed)),
      m_window(new MainWindow(frame)),
      m_actions(new CommandActions(frame, *m_window)),
      m_menus(new Menus(*m_actions, frame, *m_window)),
      m_keys(new AcceleratorKeys(*m_actions, *m_window)),
      m_area(new MdiArea(m_window)),
      m_panes(new StatusPanes(m_window)),
      m_toolBar(new QToolBar(m_window)) {
  m_window->setCentralWidget(m_area);
  m_window->setStatusBar(m_panes);
  MakeToolBar();
  AddSystemKeys();
  m_window->resize(widthPx, heightPx);
  m_window->m_idle = [this] { Idle(); };
  m_actions->m_afterCommand = [this] { m_window->ScheduleIdle(); };
  m_actions->m_refused = [this](const QString& whyNot) {
    m_panes->showMessage(whyNot, kReadingTimeMs);
  };
  m_area->m_changed = [this] { ChildChanged(); };
}

// A window that is handling an event is destroyed after that.
QtMainFrame::~QtMainFrame() {
  m_area->m_changed = {};
  m_actions->m_afterCommand = {};
  m_actions->m_refused = {};
  m_actions->Detach();
  m_menus->Detach();
  m_window->Detach();
  m_window->hide();
  if (QThread::currentThread()->loopLevel() > 0) {
    m_window->deleteLater();
  } else {
    delete m_window;
  }
}

void QtMainFrame::MakeToolBar() {
  m_toolBar->setObjectName(QStringLiteral("toolBar"));
  m_toolBar->setWindowTitle(QObject::tr("Tool Bar"));
  m_toolBar->setIconSize(QSize(kButtonPx, kButtonPx));
  m_toolBar->setToolButtonStyle(Qt::ToolButtonIconOnly);
  m_toolBar->setMovable(true);
  m_toolBar->setFloatable(false);
  m_toolBar->setAllowedAreas(Qt::TopToolBarArea | Qt::BottomToolBarArea);
  for (const unsigned id : ToolBarButtons()) {
    if (id == 0) {
      m_toolBar->addSeparator();
    } else {
      QAction* const action = m_actions->Action(id);
      m_toolBar->addAction(action);
      m_toolBar->widgetForAction(action)->setAccessibleName(action->toolTip());
    }
  }
  m_window->addToolBar(Qt::TopToolBarArea, m_toolBar);
}

// On other systems the window system handles these keys. Without a window manager, or with one that
// leaves them to the program, the program handles them.
void QtMainFrame::AddSystemKeys() {
  m_keys->AddWindowKey(QKeySequence(Qt::CTRL | Qt::Key_F4),
                       [actions = m_actions] { actions->Run(ID_FILE_CLOSE); });
  m_keys->AddWindowKey(QKeySequence(Qt::CTRL | Qt::Key_F5), [area = m_area] {
    if (ChildWindow* const child = area->Active()) child->showNormal();
  });
  m_keys->AddWindowKey(QKeySequence(Qt::CTRL | Qt::Key_F10), [area = m_area] {
    if (ChildWindow* const child = area->Active()) child->showMaximized();
  });
  m_keys->AddWindowKey(QKeySequence(Qt::ALT | Qt::Key_F4),
                       [window = m_window] { window->close(); });
  m_keys->AddWindowKey(QKeySequence(Qt::SHIFT | Qt::Key_F10), AskForContextMenu);
}

void QtMainFrame::Idle() {
  m_actions->UpdateAll();
  m_menus->Refresh();
  m_frame.OnIdle();
  if (m_window->isActiveWindow()) m_panes->ShowLocks(ReadKeyboardLocks());
}

void QtMainFrame::ChildChanged() {
  m_frame.m_childMaximised = m_area->Active() && m_area->Active()->isMaximized();
  m_frame.UpdateTitle();
  m_window->ScheduleIdle();
}

void QtMainFrame::SetTitle(const std::string& title) {
  m_window->SetTitle(QString::fromStdString(title));
}

void QtMainFrame::SetMenu(unsigned resource) {
  m_menus->SetBar(resource);
  m_window->ScheduleIdle();
}

void QtMainFrame::SetPaneText(unsigned pane, const std::string& text) {
  m_panes->SetPaneText(pane, QString::fromStdString(text));
}

void QtMainFrame::SetPaneToolTip(unsigned pane, const std::string& text) {
  m_panes->SetPaneToolTip(pane, QString::fromStdString(text));
}

void QtMainFrame::Show(bool maximised) {
  m_actions->UpdateAll();
  if (maximised)
    m_window->showMaximized();
  else
    m_window->show();
}

void QtMainFrame::Close() {
  m_window->AllowClose();
  m_window->close();
  if (m_closed) m_closed();
}

std::unique_ptr<ChildFrameFace> QtMainFrame::CreateChild(CMDIChildWnd& child, int widthPx,
                                                         int heightPx) {
  return std::make_unique<QtChildFrame>(child, *m_area, widthPx, heightPx);
}

void QtMainFrame::LayOutChildren(WindowLayout layout) {
  LayOut(*m_area, layout);
}

void QtMainFrame::ShowTabs(bool on) {
  m_area->ShowTabs(on);
}

void QtMainFrame::TrackPopupMenu(unsigned resource, int screenXPx, int screenYPx,
                                 const std::vector<MenuItem>& more) {
  const QPointer<CommandActions> actions(m_actions);
  const unsigned id = m_menus->Track(resource, QPoint(screenXPx, screenYPx), more);
  if (actions && id != 0) actions->Run(id);
}

QWidget* QtMainFrame::Bar(unsigned id) const {
  if (id == ID_VIEW_TOOLBAR) return m_toolBar;
  return id == ID_VIEW_STATUS_BAR ? m_panes : nullptr;
}

void QtMainFrame::ShowBar(unsigned id, bool on) {
  if (QWidget* bar = Bar(id)) bar->setVisible(on);
}

bool QtMainFrame::IsBarShown(unsigned id) const {
  const QWidget* bar = Bar(id);
  return bar && !bar->isHidden();
}

void QtMainFrame::RecentFilesChanged() {
  m_menus->Refresh();
}
