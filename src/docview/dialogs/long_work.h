// Work on the interface thread that may take long, done in parts, so that it never freezes the
// program.
//
// What is done within a moment shows no box. Longer work goes on in short pieces below a box that
// tells how far it is and has a Cancel button, while windows repaint and timers run.
//
// Owner    The caller owns the work and what it works on. Cancelled work is left where it stands:
//          whoever runs it keeps its result apart until it is whole, and then takes it over.
// Threads  Interface thread.
#pragma once

#include <chrono>
#include <cstdint>

#include "docview/host.h"

class CDocument;

class LongWork {
 public:
  // Goes on by what takes a millisecond or so; true when all is done.
  virtual bool DoPart() = 0;
  // How many thousandths are done; nothing when that cannot be told.
  virtual std::optional<int> Progress() const { return std::nullopt; }

  // How long work may hold the window: before its box comes up, and then at a time. Tests shorten
  // them.
  static inline std::chrono::milliseconds s_firstPiece{200}, s_piece{40};
  // Does parts until all is done, then true, or the time is up. At least one.
  bool DoPiece(std::chrono::milliseconds time);

 protected:
  ~LongWork() = default;
};

// How far `done` of `all` is, for Progress.
inline int Thousandths(std::uint64_t done, std::uint64_t all) {
  return all == 0 ? 0 : static_cast<int>(done * 1000 / all);
}

// What the box says.
struct LongWorkWords {
  const char* title;
  const char* message;
};

// Runs the work to its end; false when the person cancelled it. `document`, which may be null, is
// what the work reads: while the box is up it IsWorkedOn, and nothing changes it.
bool RunLongWork(Host& host, CDocument* document, const LongWorkWords& words, LongWork& work);
