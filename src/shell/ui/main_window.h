// The main window's widget: reports what the user and the window system do with it.
//
// The stored size is the window's own, without the decoration of the window manager: it is not
// known before the window stands, and some systems never tell it.
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
  // The frame goes; the window reports nothing any more.
  void Detach() { m_frame = nullptr; }
  CMainFrame* Frame() const { return m_frame; }

  // The title to be kept, whatever Qt makes of a maximised child.
  void SetTitle(const QString& title);
  // The window may go: the next close event is taken.
  void AllowClose() { m_mayClose = true; }
  // Called a few times a second while the window is seen, and soon after SoonIdle.
  std::function<void()> m_idle;
  void SoonIdle() { m_soon.start(); }

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
  QTimer m_settled;  // sizes and states come in several events, in any order: looked at afterwards
  QTimer m_soon, m_regular;
  QTimer m_framed;  // by now the window manager has told how much its decoration takes
  QSize m_shownAs;  // whoever asked for another size meanwhile gets it
};
