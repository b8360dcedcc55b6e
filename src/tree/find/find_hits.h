// Where the text that a user last searched for stands in a text, for views that tint it.
//
// Shape    Places in bytes, in their order, no two overlapping. Empty hits are left out, and so is
//          what a costly pattern or a long text holds behind the first hits: tinting must not hold
//          the window.
// Owner    Keeps a plan of its own of the pattern last prepared, so that a search that is under way
//          goes on undisturbed.
// Errors   None: no search so far, no hits.
// Threads  Interface thread.
#pragma once

#include <cstddef>
#include <memory>
#include <string_view>
#include <vector>

class RegexPlan;

struct HitRange {
  std::size_t begin, end;
  bool operator==(const HitRange&) const = default;
};

class FindHits {
 public:
  static constexpr std::size_t kMostHits = 500;

  FindHits();
  ~FindHits();

  // Good until the next call.
  const std::vector<HitRange>& In(std::string_view text);

 private:
  bool BringPlanUpToDate();

  std::unique_ptr<RegexPlan> m_plan;
  unsigned m_prepared = 0;  // of RegexPrepared, when the plan was made
  std::vector<HitRange> m_hits;
};
