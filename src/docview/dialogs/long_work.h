// Long work on the interface thread, done in parts, so that it never freezes the program.
//
// Work that is done within a moment shows no box. Longer work continues in short pieces while a
// modal box shows the progress and a Cancel button, windows repaint and timers run.
//
// Owner    The caller owns the work and its data. Cancelled work stops where it is. So its owner
//          keeps the result separate until it is complete, and only then uses it.
// Threads  Interface thread.
#pragma once

#include <chrono>
#include <cstdint>

#include "docview/host.h"

class CDocument;

class LongWork {
 public:
  // Continues for about a millisecond; true when all is done.
  virtual bool DoPart() = 0;
  // How many thousandths are done; none when that is unknown.
  virtual std::optional<int> Progress() const { return std::nullopt; }

  // Does parts, at least one, until all is done (true) or the time has passed.
  bool DoPiece(std::chrono::milliseconds time);

 protected:
  ~LongWork() = default;
};

// The progress `done` of `all`, for Progress.
inline int Thousandths(std::uint64_t done, std::uint64_t all) {
  return all == 0 ? 0 : static_cast<int>(done * 1000 / all);
}

// The texts of the box.
struct LongWorkTexts {
  const char* title;
  const char* message;
  const char* helpTopic = "";
};

// Runs the work to its end; false when the user cancelled. `document`, which may be null, is the
// document that the work reads: while the box is open it IsBusy, and nothing changes it.
bool RunLongWork(Host& host, CDocument* document, const LongWorkTexts& texts, LongWork& work);
