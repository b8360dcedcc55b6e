// The window of one child frame inside the MDI area.
//
// Threads  Interface thread.
#pragma once

#include <QMdiSubWindow>
#include <QPointer>
#include <QTimer>
#include <QVBoxLayout>

#include "docview/frame.h"
#include "shell/mdi/ui/mdi_area.h"
#include "shell/mdi/ui/view_split.h"

class ChildWindow : public QMdiSubWindow {
 public:
  ChildWindow(CMDIChildWnd& child, MdiArea& area);
  // The frame will be destroyed: gives the controls back to their views and reports nothing any
  // more.
  void Detach();

  // Null after Detach.
  CMDIChildWnd* Child() const { return m_child; }
  // Makes it the only visible control.
  void ShowControl(QWidget* control);
  // A widget above the control, and one between them, in place of the one before; null: none.
  void ShowBar(QWidget* bar) { ShowAbove(m_bar, bar, 0); }
  void ShowStrip(QWidget* strip) { ShowAbove(m_strip, strip, m_bar ? 1 : 0); }
  ViewSplit& Split() { return *m_split; }
  bool IsClosing() const { return m_closing; }
  // Makes the window small enough for the area and moves it there.
  void FitIntoArea();

 protected:
  void closeEvent(QCloseEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;
  void showEvent(QShowEvent* event) override;
  void resizeEvent(QResizeEvent* event) override;
  void changeEvent(QEvent* event) override;

 private:
  void ShowAbove(QPointer<QWidget>& place, QWidget* widget, int index);
  void ReplaceMenuKeys();
  QSize Room() const;
  void ReportSize();

  CMDIChildWnd* m_child;
  MdiArea& m_area;
  QWidget* m_room;
  QVBoxLayout* m_layout;
  ViewSplit* m_split;
  std::vector<QPointer<QWidget>> m_controls;
  QPointer<QWidget> m_bar, m_strip;
  QTimer m_settled;       // sizes and states come in several events: checked after the last one
  bool m_placed = false;  // shown restored, inside the area
  bool m_closing = false;
};
