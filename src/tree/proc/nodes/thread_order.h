// What a thread knows of the order of its traces' numbers (tree/proc/nearest/thread_orders.h).
#pragma once

#include <cstdint>

struct ThreadOrder {
  bool rising = true;  // each trace in the thread has a greater number than the one before
  // Not rising, but broken only once: a node that was open then has `openAtRun` from `runs` and
  // knows how many of its children came before, a node that came later has `madeInRun` from it.
  bool twoRuns = false;
  std::uint32_t runs = 0;       // how often an order that was whole was broken
  std::int64_t last = -1;       // number of the trace that was filed last
  std::uint64_t runBegins = 0;  // the leaf, ever counted, behind which the numbers have risen
};
