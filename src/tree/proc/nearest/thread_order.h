// Whether the traces of a thread have rising sequence numbers, or are in two runs that rise. A
// search by number then needs no walk.
//
// Two things break the order: a report of lost traces, which has no number, and numbers that begin
// again, after the greatest number or because the service was restarted. The thread in which this
// happens then has two runs, and after the next time it has no order at all. It gets its order back
// when its older traces have been trimmed.
//
// Owner    Borrows the thread.
// Cost     A thread without order is checked completely once for each time that all its traces have
//          been trimmed and others have come.
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

  // A trace will be filed as leaf number `leaf`, counted over all leaves that ever came. True if
  // the thread was rising until then.
  bool Note(const CProcessThread& thread, std::uint32_t number, std::uint64_t leaf);
  // For a thread without order: checks it again if its latest run began at the oldest leaf or
  // before it. True when it has its order back.
  bool Recover(CProcessThread& thread, std::uint64_t oldestLeaf, std::uint64_t nextLeaf);

 private:
  bool m_rising = true;
  std::unique_ptr<TwoRuns> m_runs;
  std::int64_t m_last = -1;       // number of the trace that was filed last
  std::uint64_t m_runBegins = 0;  // number of the leaf after which the numbers have risen
};
