// One pass over a .trc file by several threads, with the result of a pass by one.
//
// Shape    The file is divided into chunks. A walker begins its chunk at a guess (trc_guess.h) and
//          puts what it finds into a part of its own. A part is taken only when the walk before it
//          arrives exactly at its beginning. What lies between is walked from where that walk
//          arrived, and a chunk whose guess it passes is walked anew. So the parts that are taken
//          are those of one walk over the whole file, whatever the bytes are, and no byte is walked
//          more than twice.
// Errors   Throws what a part or the taker threw. With fewer threads than wanted it goes on.
//          REQUIRES the bytes behind the end that WalkTrc requires.
// Threads  The caller's is the first walker. All others have ended when the walk returns.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>

#include "base/bytes.h"

struct TrcWalkers {
  static constexpr unsigned kMost = 8;

  // One for each processor, and one alone for a file that is not large.
  static TrcWalkers For(std::uint64_t fileBytes);

  unsigned count = 1;
  std::uint64_t chunkBytes = ~std::uint64_t{0};
};

// What is found in a piece of the file: a walk, and all that it collects. Threads: one at a time.
class TrcPart {
 public:
  // At a few places of the walk; false: end there.
  using Look = std::function<bool(std::uint64_t position)>;

  virtual ~TrcPart() = default;
  // Walks on from a record's beginning to the first one at or behind `limit`, and returns its
  // position. Called once.
  virtual std::uint64_t Walk(Bytes file, std::uint64_t from, std::uint64_t limit,
                             const Look& look) = 0;
};

// Where the parts go.
class TrcParts {
 public:
  virtual ~TrcParts() = default;
  // For a walk between these positions. Any thread, several at a time.
  virtual std::unique_ptr<TrcPart> NewPart(std::uint64_t from, std::uint64_t limit) = 0;
  // Each part in the order of the file. One at a time, on any thread.
  virtual void Take(TrcPart& part) = 0;
  // So many bytes of the file have been walked. False: cancelled; the parts that are taken then end
  // at some record. Any thread, several at a time.
  virtual bool OnProgress(std::uint64_t bytes) = 0;
};

// Returns the position reached, as WalkTrc does.
std::uint64_t WalkTrcTogether(Bytes file, const TrcWalkers& walkers, TrcParts& parts);
