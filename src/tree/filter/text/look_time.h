// How long a filter text may be compared with the names of a document before that is given up.
//
// Shape    The time of the thread, from the beginning; and how many steps one search in a name may
//          take. What was found until then says nothing once it is over.
// Threads  One.
#pragma once

#include <chrono>
#include <cstdint>

#include "base/thread_time.h"
#include "where/where_regex.h"

class LookTime {
 public:
  LookTime(std::chrono::nanoseconds most, std::uint32_t steps)
      : m_steps(steps), m_endNs(ThreadNanoseconds() + static_cast<std::uint64_t>(most.count())) {}

  void Bound(WhereRegexSearch& search) const {
    search.Bound({.steps = m_steps, .textBytes = ~std::size_t{0}});
    search.EndAt(m_endNs);
  }
  bool IsOver() {
    m_isOver = m_isOver || ThreadNanoseconds() >= m_endNs;
    return m_isOver;
  }
  // A search was given up.
  void End() { m_isOver = true; }

 private:
  const std::uint32_t m_steps;
  const std::uint64_t m_endNs;
  bool m_isOver = false;
};
