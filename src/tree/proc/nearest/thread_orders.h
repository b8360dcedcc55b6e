// Which threads have their traces in rising order of sequence numbers, or in two runs that rise:
// there a search needs no walk.
//
// A stream breaks the order where it has a word on lost traces, which has no number, and where the
// numbers begin anew: behind the greatest one, or when the service was started again. The thread
// that it happens in then has two runs, and more after the next time. It has its order again when
// its older traces have been trimmed.
//
// Owner    Borrows the threads; cleared before they go.
// Cost     The traces of a thread that is out of order are looked at once for each time that all of
//          them have been trimmed and others have come.
// Threads  Interface thread.
#pragma once

#include <cstdint>
#include <vector>

#include "tree/proc/nodes/nodes.h"

class ThreadOrders {
 public:
  // A trace is about to be filed as leaf number `leaf`, ever counted. True when it costs its thread
  // the order or the second run.
  bool Note(CProcessThread& thread, std::uint32_t number, std::uint64_t leaf);
  // Looks at the threads whose run began at the oldest leaf or before it. True when one of them has
  // its order again.
  bool Recover(std::uint64_t oldestLeaf, std::uint64_t nextLeaf);
  void Clear() { m_broken.clear(); }

 private:
  std::vector<CProcessThread*> m_broken;
};
