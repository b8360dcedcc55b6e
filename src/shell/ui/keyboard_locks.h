// The keyboard's lock states, for the status bar.
//
// Errors   If the window system does not report them (anything but X11), all are off and their
//          panes stay blank.
// Threads  Interface thread.
#pragma once

struct KeyboardLocks {
  bool caps = false, num = false, scroll = false;
};

// Asks the X server: one round trip.
KeyboardLocks ReadKeyboardLocks();
