// The size of a fake control: a window system gives it to the control that a frame shows, as soon
// as both are seen; until then, and while it is hidden, the control keeps the one that it has.
#pragma once

class SizedControl {
 public:
  static constexpr int kRowHeightPx = 20;
  // What a window system makes before anybody has laid the control out.
  static constexpr int kUnseenHeightPx = 480;

  virtual void SetHeight(int heightPx) = 0;

 protected:
  ~SizedControl() = default;
};
