// The room for the child windows.
//
// Tells a child of true changes of activation only: Qt also reports that no window is active while
// a dialog or another program has the focus.
//
// Threads  Interface thread.
#pragma once

#include <QMdiArea>
#include <functional>

class ChildWindow;

class MdiArea : public QMdiArea {
 public:
  explicit MdiArea(QWidget* parent);

  ChildWindow* Active() const { return m_active; }
  // The window came to the front.
  void OnActivated(ChildWindow* window);
  // The window's frame goes. If it is in front, the one used before comes there, as large as this
  // one is.
  void Leave(ChildWindow* window);
  // The windows as tabs over the whole room, or as windows, as large as they were before.
  void ShowTabs(bool on);
  // A child was activated, maximised or restored, or has gone.
  std::function<void()> m_changed;

 protected:
  void paintEvent(QPaintEvent* event) override;
  void changeEvent(QEvent* event) override;

 private:
  void TakePalette();
  ChildWindow* UsedBefore(const ChildWindow* window) const;
  ChildWindow* m_active = nullptr;
  bool m_maximisedWithoutTabs = false;
};
