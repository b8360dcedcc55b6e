// The size of a fake control. A window system sets the size of a control when the control is shown
// in a visible frame. Until then, and while it is hidden, the control keeps its size.
#pragma once

class SizedControl {
 public:
  static constexpr int kRowHeightPx = 20;
  // The size before any layout.
  static constexpr int kUnseenHeightPx = 480;

  virtual void SetHeight(int heightPx) = 0;

 protected:
  ~SizedControl() = default;
};
