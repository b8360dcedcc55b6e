// Makes a picture of the main window without a user.
#pragma once

#include <QString>

class CTesseraApp;

// While it exists, boxes and dialogs are printed to standard error and answered by their default,
// so that a program without a user does not wait for an answer.
class BoxAnswerer {
 public:
  BoxAnswerer();
  ~BoxAnswerer();
  BoxAnswerer(const BoxAnswerer&) = delete;
  BoxAnswerer& operator=(const BoxAnswerer&) = delete;

 private:
  class QTimer* m_timer;
};

// Runs the event loop until no document is loading and the window is up to date; false after ten
// minutes.
bool WaitForLoads(CTesseraApp& tessera);

// Runs the event loop until every open monitor has more than a page of traces; false after 10 s.
bool WaitForTraces(CTesseraApp& tessera);

// Writes a picture of the main window.
bool RenderMainWindow(CTesseraApp& tessera, const QString& path);
