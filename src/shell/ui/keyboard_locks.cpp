#include "shell/ui/keyboard_locks.h"

#include <QGuiApplication>
#include <QLibrary>

namespace {

// The only needed function of Xlib's keyboard extension. It is looked up at run time, so that
// neither the build nor a Wayland system needs the library.
using GetIndicatorState = int (*)(void* display, unsigned device, unsigned* state);
constexpr unsigned kCoreKeyboard = 0x0100;
constexpr unsigned kCaps = 1, kNum = 2, kScroll = 4;

GetIndicatorState IndicatorCall() {
  static const auto call = reinterpret_cast<GetIndicatorState>(
      QLibrary::resolve(QStringLiteral("X11"), 6, "XkbGetIndicatorState"));
  return call;
}

}  // namespace

KeyboardLocks ReadKeyboardLocks() {
  const auto* x11 = qApp->nativeInterface<QNativeInterface::QX11Application>();
  unsigned lamps = 0;
  if (!x11 || !x11->display() || !IndicatorCall()) return {};
  if (IndicatorCall()(x11->display(), kCoreKeyboard, &lamps) != 0) return {};
  return {(lamps & kCaps) != 0, (lamps & kNum) != 0, (lamps & kScroll) != 0};
}
