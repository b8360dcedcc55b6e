// A picture of the main window without anyone at the screen.
#pragma once

#include <QString>

class CTesseraApp;

// While it stands, boxes and dialogs are told on standard error and answered by their default, so
// that a program nobody watches does not wait for an answer.
class BoxAnswerer {
 public:
  BoxAnswerer();
  ~BoxAnswerer();
  BoxAnswerer(const BoxAnswerer&) = delete;
  BoxAnswerer& operator=(const BoxAnswerer&) = delete;

 private:
  class QTimer* m_timer;
};

// Runs the event loop until no document is loading and the window has settled; false when that
// takes longer than ten minutes.
bool WaitForLoads(CTesseraApp& tessera);

// Runs the event loop until every open monitor holds more than a page of traces; false after 10 s.
bool WaitForTraces(CTesseraApp& tessera);

// Writes the main window as it stands.
bool RenderMainWindow(CTesseraApp& tessera, const QString& path);
