// The main window's widget: reports the events of the user and the window system.
//
// The stored size is the window's own, without the decoration of the window manager: the decoration
// is not known before the window is shown, and some systems never report it.
//
// Threads  Interface thread.
#pragma once

#include <QMainWindow>
#include <QTimer>
#include <functional>

class CMainFrame;

class MainWindow : public QMainWindow {
 public:
  explicit MainWindow(CMainFrame& frame);
  // The frame is destroyed; the window reports nothing any more.
  void Detach() { m_frame = nullptr; }
  CMainFrame* Frame() const { return m_frame; }

  // The title to keep, whatever Qt sets for a maximised child.
  void SetTitle(const QString& title);
  // The next close event is accepted.
  void AllowClose() { m_mayClose = true; }
  // Called a few times a second while the window is visible, and soon after ScheduleIdle.
  std::function<void()> m_idle;
  void ScheduleIdle() { m_soon.start(); }

 protected:
  void showEvent(QShowEvent* event) override;
  void closeEvent(QCloseEvent* event) override;
  void resizeEvent(QResizeEvent* event) override;
  void changeEvent(QEvent* event) override;
  void dragEnterEvent(QDragEnterEvent* event) override;
  void dropEvent(QDropEvent* event) override;
  QMenu* createPopupMenu() override { return nullptr; }

 private:
  void ReportSize();
  void OnIdle();

  CMainFrame* m_frame;
  QString m_title;
  bool m_mayClose = false;
  QTimer m_settled;  // sizes and states come in several events: checked after the last one
  QTimer m_soon, m_regular;
  QTimer m_framed;  // by then the window manager has reported its decoration
  QSize m_shownAs;  // a size that was requested since then is kept
};
