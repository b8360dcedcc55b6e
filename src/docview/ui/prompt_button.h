// A button or check box whose access key presses it at once.
//
// Qt takes a tenth of a second over that key. An Enter that follows sooner would find the box
// without its new tick, and the key hit again meanwhile would be lost.
//
// Threads  Interface thread.
#pragma once

#include <QShortcutEvent>

template <class Button>
class PromptButton final : public Button {
 public:
  using Button::Button;

 protected:
  bool event(QEvent* event) override {
    // A key that two controls have in common goes from one to the other.
    if (event->type() != QEvent::Shortcut || static_cast<QShortcutEvent*>(event)->isAmbiguous())
      return Button::event(event);
    if (this->isCheckable()) this->setFocus(Qt::ShortcutFocusReason);
    this->click();
    return true;
  }
};
