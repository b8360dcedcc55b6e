// The state of the search by number for one thread, in two parts: the last result, which each
// search reads, and the rest.
//
// Threads  Interface thread.
#pragma once

#include <algorithm>
#include <cstdint>

#include "tree/proc/nearest/thread_order.h"

// The result of the last search in a thread. It is valid for the numbers from `from` up to before
// `until`, until something is added to the thread or removed from it.
struct LastFound {
  static constexpr std::uint64_t kNone = UINT64_MAX;

  std::uint64_t from = 0, until = 0;
  std::uint64_t leaf = kNone;       // the nearest with a greater number
  std::uint64_t neighbour = kNone;  // before that leaf, with a number up to `from`

  void BeginSearch() { *this = {0, kNone, kNone, kNone}; }
  // A number from this one up to the wanted one takes the same path.
  void HoldsFrom(std::uint32_t number) { from = std::max<std::uint64_t>(from, number); }
  void HoldsBefore(std::uint32_t number) { until = std::min<std::uint64_t>(until, number); }
  void Forget() { until = 0; }
  bool Knows(std::uint64_t wanted) const { return wanted >= from && wanted < until; }
  bool IsNothing() const { return leaf == kNone && until == kNone; }

  void MeetLeaf(std::uint32_t number) { leaf = std::min<std::uint64_t>(leaf, number); }
  void MeetNeighbour(std::uint32_t number) {
    neighbour = neighbour == kNone ? number : std::max<std::uint64_t>(neighbour, number);
  }
  std::uint64_t DistanceFrom(std::uint64_t wanted) const {
    const std::uint64_t above = leaf == kNone ? kNone : leaf - wanted;
    return neighbour == kNone ? above : std::min(above, wanted - neighbour);
  }
};

struct ThreadRow {
  explicit ThreadRow(CProcessThread& ofThread) : thread(&ofThread), start(&ofThread) {}

  CProcessThread* thread;
  // An open block, or the thread: nothing outside it counts, and while it is open nothing is
  // added there. So a chain of open blocks that only contain one another is walked down once.
  CExecutionBlock* start;
  ThreadOrder order;
};
