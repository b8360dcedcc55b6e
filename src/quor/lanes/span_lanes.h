// Lanes for spans of time that overlap, so that on each lane begins and ends nest.
//
// Shape    A span is [start, end] in any unit. One whose parent is the innermost on its lane, and
//          that ends inside of it, is on that lane; any other on the lowest lane that is free. On a
//          lane, time does not run backwards, also between two calls, unless there are no more
//          lanes. Spans that find all of kLanesMax lanes taken are given after the others on one
//          more lane, each whole before the next one, so these nest as well.
// Errors   None: ids that are double, parents in a circle and parents that are missing are allowed.
// Threads  One.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

struct LaneSpan {
  static constexpr std::size_t kNoParent = SIZE_MAX;
  // The span around it on the lowest lane where it can be.
  static constexpr std::size_t kAnyParent = SIZE_MAX - 1;

  std::uint64_t start = 0, end = 0;  // an end before the start counts as the start
  std::size_t parent = kNoParent;    // its place in the set
  // Of what happened in it, in any order. What lies outside of the span is moved to its border.
  std::vector<std::uint64_t> moments;
};

struct LaneStep {
  enum Kind : std::uint8_t { Begin, Moment, End };
  Kind kind = Begin;
  std::uint32_t lane = 0;
  std::size_t span = 0, moment = 0;  // places in the set, and in its moments
};

class SpanLanes {
 public:
  static constexpr std::size_t kLanesMax = 256;

  explicit SpanLanes(std::size_t lanesMax = kLanesMax) : m_lanesMax(lanesMax) {}
  // The steps of these spans by their time.
  std::vector<LaneStep> Place(const std::vector<LaneSpan>& spans);

 private:
  std::size_t m_lanesMax;
  std::vector<std::uint64_t> m_ends;  // by lane: the latest end of the sets before
};
