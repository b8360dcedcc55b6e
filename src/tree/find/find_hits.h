// The hits of the last search in a text, for views that tint them.
//
// Shape    Ranges in bytes, in order, without overlaps. Empty hits are left out. A costly pattern
//          or a long text gives only its first hits, because tinting must not block the window.
// Owner    Has a plan of its own for the pattern that was prepared last at its creation. So it does
//          not disturb a running search, and a later pattern changes nothing here.
// Errors   None: no hits if nothing was searched before its creation.
// Threads  Interface thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>
#include <vector>

#include "controls/text/cell_parts.h"

class RegexProgram;

class FindHits {
 public:
  static constexpr std::size_t kHitsMax = 500;
  // Steps of the matcher in one text: some ten milliseconds for a text that is read by itself, a
  // tenth of a millisecond for a text that is one of many to paint.
  static constexpr std::int64_t kSteps = 1'000'000, kStepsToPaint = 20'000;

  FindHits();
  explicit FindHits(const RegexProgram& program);  // of this pattern
  ~FindHits();

  // The hits that begin within the first `shownBytes`. Valid until the next call.
  const std::vector<HitRange>& In(std::string_view text, std::int64_t steps = kSteps,
                                  std::size_t shownBytes = std::string_view::npos);

 private:
  struct Search;
  std::unique_ptr<Search> m_search;  // null without one
  std::vector<HitRange> m_hits;
};
