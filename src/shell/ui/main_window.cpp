#include "shell/ui/main_window.h"

#include <QApplication>
#include <QCloseEvent>

#include "docview/ui/dialog_parts.h"
#include "docview/ui/dropped_files.h"
#include "docview/ui/qt_host.h"
#include "docview/ui/screen_fit.h"
#include "shell/main_frame.h"

namespace {

constexpr int kIdleMs = 250;
constexpr int kFramedMs = 100;

}  // namespace

MainWindow::MainWindow(CMainFrame& frame) : m_frame(&frame) {
  setAcceptDrops(true);
  for (QTimer* timer : {&m_settled, &m_soon, &m_framed}) timer->setSingleShot(true);
  connect(&m_framed, &QTimer::timeout, this, [this] {
    if (size() == m_shownAs) KeepOnScreen(*this);
  });
  connect(&m_settled, &QTimer::timeout, this, [this] { ReportSize(); });
  connect(&m_soon, &QTimer::timeout, this, [this] { OnIdle(); });
  connect(&m_regular, &QTimer::timeout, this, [this] { OnIdle(); });
  m_regular.start(kIdleMs);
}

void MainWindow::SetTitle(const QString& title) {
  SetPlainTitle(*this, title);
  m_title = windowTitle();
}

void MainWindow::OnIdle() {
  if (m_frame && m_idle && isVisible() && !isMinimized()) m_idle();
}

void MainWindow::showEvent(QShowEvent* event) {
  QMainWindow::showEvent(event);
  if (event->spontaneous()) return;
  m_shownAs = size();
  m_framed.start(kFramedMs);
}

// The frame asks its questions inside the event, so that the end of a session learns the answer. A
// window manager may close the window although an open menu grabs the mouse: close the menu first.
void MainWindow::closeEvent(QCloseEvent* event) {
  while (QWidget* const menu = QApplication::activePopupWidget())
    if (!menu->close()) break;
  if (m_frame && !m_mayClose && !QtHost::InModal()) m_frame->OnClose();
  event->setAccepted(!m_frame || m_mayClose);
}

void MainWindow::resizeEvent(QResizeEvent* event) {
  QMainWindow::resizeEvent(event);
  m_settled.start();
}

void MainWindow::changeEvent(QEvent* event) {
  QMainWindow::changeEvent(event);
  if (event->type() == QEvent::WindowStateChange) m_settled.start();
  if (event->type() == QEvent::ActivationChange) ScheduleIdle();
  // For a maximised child Qt sets a title of its own, at several moments.
  if (event->type() == QEvent::WindowTitleChange && windowTitle() != m_title) {
    QMetaObject::invokeMethod(
        this, [this] { setWindowTitle(m_title); }, Qt::QueuedConnection);
  }
}

void MainWindow::ReportSize() {
  if (!m_frame || !isVisible()) return;
  const SizeType type = isMinimized()                     ? SizeType::Minimised
                        : isMaximized() || isFullScreen() ? SizeType::Maximised
                                                          : SizeType::Restored;
  m_frame->OnSize(type, width(), height());
}

void MainWindow::dragEnterEvent(QDragEnterEvent* event) {
  if (!DroppedFiles(*event->mimeData()).empty()) event->acceptProposedAction();
}

// Opened after the event: until it returns, the program that the files were dragged from waits, and
// an older file asks a question.
void MainWindow::dropEvent(QDropEvent* event) {
  const std::vector<std::string> paths = DroppedFiles(*event->mimeData());
  if (!m_frame || paths.empty()) return;
  event->acceptProposedAction();
  QMetaObject::invokeMethod(
      this,
      [this, paths] {
        if (m_frame) m_frame->OnDropFiles(paths);
      },
      Qt::QueuedConnection);
}
