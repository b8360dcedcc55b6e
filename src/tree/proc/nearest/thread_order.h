// Whether the traces of a thread have rising sequence numbers, or stand in two runs that rise: a
// search by number then needs no walk.
//
// A stream breaks the order where it has a report of lost traces, which has no number, and where
// the numbers begin anew: after the greatest one, or when the service was started again. The thread
// in which it happens then has two runs, and after the next time it has no order at all. It has its
// order again when its older traces have been trimmed.
//
// Owner    Borrows the thread.
// Cost     The traces of a thread that is out of order are looked at once for each time that all of
//          them have been trimmed and others have come.
// Threads  Interface thread.
#pragma once

#include <cstdint>
#include <memory>

#include "tree/proc/nearest/two_runs.h"

class ThreadOrder {
 public:
  // Each trace has a greater number than the one before.
  bool IsRising() const { return m_rising; }
  // The two runs; null when there is one run, or more than two.
  const TwoRuns* Runs() const { return m_runs.get(); }
  TwoRuns* Runs() { return m_runs.get(); }

  // A trace is about to be filed as leaf number `leaf`, ever counted.
  enum class Change { None, SecondRun, NoOrder };
  Change Note(const CProcessThread& thread, std::uint32_t number, std::uint64_t leaf);
  // For a thread that is not rising: looks at it anew if its latest run began at the oldest leaf or
  // before it. True when it has its order again.
  bool Recover(CProcessThread& thread, std::uint64_t oldestLeaf, std::uint64_t nextLeaf);

 private:
  bool m_rising = true;
  std::unique_ptr<TwoRuns> m_runs;
  std::int64_t m_last = -1;       // number of the trace that was filed last
  std::uint64_t m_runBegins = 0;  // the leaf, ever counted, after which the numbers have risen
};
