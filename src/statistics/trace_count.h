// Counts many traces by one field, on all processors.
//
// Shape    Threads take pieces of the traces and count them; whoever calls Take joins the counts in
//          the order of the pieces. So the table is at each moment that of one count from the first
//          trace on, and at the end it is the same however many threads there were.
// Owner    The threads share the traces and outlive the count where they must: its end does not
//          wait for them.
// Errors   Failed: no memory, or the traces could not be read.
// Threads  One, and those that it begins. `more` is called on these.
#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <vector>

#include "statistics/stat_table.h"

// The traces that are counted, as numbered places. Each thread makes a reader of its own. Nothing
// of it may change while a count is under way.
class CountedTraces {
 public:
  using Events = std::vector<const TraceEvent_i*>;
  class Reader {
   public:
    virtual ~Reader() = default;
    // Appends the traces at [from, end) that are to be counted, in their order.
    virtual void Take(std::size_t from, std::size_t end, Events& events) = 0;
  };

  virtual ~CountedTraces() = default;
  virtual std::size_t Size() const = 0;
  virtual std::unique_ptr<Reader> MakeReader() const = 0;
};

struct TraceCountSetup {
  std::size_t perPiece = 32768;
  std::size_t perLook = 512;  // until a stop is looked at
  std::size_t threads = 0;    // 0: as many as there are processors
  StatBounds bounds = {};
};

class TraceCount {
 public:
  enum class State { More, Whole, Failed };
  using Clock = std::chrono::steady_clock;

  // `more`, which may be empty: the next part has come, or the threads have failed.
  TraceCount(std::shared_ptr<const CountedTraces> traces, StatField field,
             std::function<void()> more = {}, const TraceCountSetup& setup = {});
  ~TraceCount();
  TraceCount(const TraceCount&) = delete;
  TraceCount& operator=(const TraceCount&) = delete;

  // Joins what is there; if that is nothing, waits for something until then. At least one part.
  State Take(Clock::time_point until);
  const StatTable& Table() const { return m_table; }
  int Thousandths() const;

 private:
  class Pieces;
  State TakeAlone(Clock::time_point until);

  StatTable m_table;
  std::shared_ptr<Pieces> m_pieces;
  bool m_alone = false;  // the system gave no thread
  std::size_t m_next = 0;
};
