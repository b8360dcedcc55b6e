// Where the text that a user searched for stands in a text, for views that tint it.
//
// Shape    Places in bytes, in their order, no two overlapping. Empty hits are left out, and so is
//          what a costly pattern or a long text holds behind the first hits: tinting must not hold
//          the window.
// Owner    Keeps a plan of its own of the pattern that was prepared last when it was made: a search
//          that is under way goes on undisturbed, and a later pattern changes nothing here.
// Errors   None: no search before it was made, no hits.
// Threads  Interface thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>
#include <vector>

#include "controls/text/cell_parts.h"

class RegexPlan;

class FindHits {
 public:
  static constexpr std::size_t kMostHits = 500;
  // Of the matcher in one text: some ten milliseconds where it is read for itself, a tenth of one
  // where it is one of those that a window paints.
  static constexpr std::int64_t kSteps = 1'000'000, kStepsToPaint = 20'000;

  FindHits();
  ~FindHits();

  // Those that begin within the first `shownBytes`. Good until the next call.
  const std::vector<HitRange>& In(std::string_view text, std::int64_t steps = kSteps,
                                  std::size_t shownBytes = std::string_view::npos);

 private:
  std::unique_ptr<RegexPlan> m_plan;  // null without a search
  std::vector<HitRange> m_hits;
};
