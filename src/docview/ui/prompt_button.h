// A button or check box whose access key presses it immediately.
//
// Qt delays that key by a tenth of a second. An Enter that follows sooner would find the box
// without its new tick, and a second press of the key in that time would be lost.
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
    // A key that two controls share moves from one to the other.
    if (event->type() != QEvent::Shortcut || static_cast<QShortcutEvent*>(event)->isAmbiguous())
      return Button::event(event);
    if (this->isCheckable()) this->setFocus(Qt::ShortcutFocusReason);
    this->click();
    return true;
  }
};
