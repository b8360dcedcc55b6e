// The area for the child windows.
//
// Reports only real changes of activation to a child: Qt also reports that no window is active
// while a dialog or another program has the focus.
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
  // The window's frame is destroyed. If it is in front, the window used before comes to the front,
  // in the same state.
  void Leave(ChildWindow* window);
  // Shows the windows as tabs over the whole area, or as windows of their earlier size.
  void ShowTabs(bool on);
  // A child was activated, maximised, restored or destroyed.
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
