// Counts many traces into slices of time, on all processors.
//
// Shape    Threads take pieces of the traces; the result is the same however many there are. What
//          is far away from all other times is left out of the slices (far_times.h), unless limits
//          are given. The count notes between which times each piece lies: so a later one of the
//          same traces with limits reads only the pieces that it needs.
// Owner    The threads share the traces and outlive the count where they must: its end does not
//          wait for them.
// Cost     50 KiB when it is whole; each thread as much again until then.
// Errors   Failed: no memory, or the traces could not be read.
// Threads  One, and those that it begins.
#pragma once

#include <chrono>
#include <memory>
#include <optional>
#include <vector>

#include "overview/sliced_reader.h"
#include "statistics/trace_count.h"

// The traces [from, end) of what is counted.
struct PieceTimes {
  std::size_t from = 0, end = 0;
  // Of those that have a time; none: first > last.
  std::int64_t first = std::numeric_limits<std::int64_t>::max(), last = TraceTimes::kNone;
  std::uint32_t timed = 0, withoutTime = 0;

  bool Overlaps(const TimeLimits& limits) const {
    return timed > 0 && last >= limits.from && first < limits.to;
  }
};
using PieceTimesPtr = std::shared_ptr<const std::vector<PieceTimes>>;

struct SliceCountSetup {
  std::optional<TimeLimits> limits = {};
  PieceTimesPtr known = nullptr;  // of an earlier count of the same traces
  std::size_t mostPieces = 256;
  std::size_t perPiece = 32768;  // at least
  std::size_t perLook = 512;     // until a stop is looked at
  std::size_t threads = 0;       // 0: as many as there are processors
};

class SliceCount {
 public:
  enum class State { More, Whole, Failed };
  using Clock = std::chrono::steady_clock;

  SliceCount(std::shared_ptr<const CountedTraces> traces, LossNames losses,
             SliceCountSetup setup = {});
  ~SliceCount();
  SliceCount(const SliceCount&) = delete;
  SliceCount& operator=(const SliceCount&) = delete;

  // Waits until then, or until all is counted. Afterwards Slices has what is counted so far.
  State Take(Clock::time_point until);
  const TimeSlices& Slices() const { return m_slices; }
  int Thousandths() const;
  // Of all traces that are counted. Null until it is whole.
  const PieceTimesPtr& Times() const { return m_setup.known; }

 private:
  class Pieces;
  void Begin();
  void Finish();

  const std::shared_ptr<const CountedTraces> m_traces;
  const LossNames m_losses;
  SliceCountSetup m_setup;
  const bool m_mayNarrow;
  TimeSlices m_slices;
  std::shared_ptr<Pieces> m_pieces;  // null: whole
  bool m_alone = false;              // the system gave no thread
};
