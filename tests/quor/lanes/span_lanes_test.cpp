#include "quor/lanes/span_lanes.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <random>
#include <string>

namespace {

using Spans = std::vector<LaneSpan>;

LaneSpan Span(std::uint64_t start, std::uint64_t end, std::size_t parent = LaneSpan::kNoParent,
              std::vector<std::uint64_t> moments = {}) {
  return {start, end, parent, std::move(moments)};
}

// "0:(a 1:(b 1:b) 0:a)": begins and ends with lanes, spans as letters.
std::string Shown(const std::vector<LaneStep>& steps) {
  std::string shown;
  for (const LaneStep& step : steps) {
    const char letter = static_cast<char>('a' + step.span);
    if (!shown.empty()) shown.push_back(' ');
    shown += std::to_string(step.lane) + ":";
    if (step.kind == LaneStep::Begin) shown += std::string("(") + letter;
    if (step.kind == LaneStep::End) shown += std::string(1, letter) + ")";
    if (step.kind == LaneStep::Moment) shown += letter + std::to_string(step.moment);
  }
  return shown;
}

std::string Placed(const Spans& spans, std::size_t lanesMax = SpanLanes::kLanesMax) {
  return Shown(SpanLanes(lanesMax).Place(spans));
}

std::uint64_t EndOf(const LaneSpan& span) {
  return std::max(span.start, span.end);
}

// A machine of its own that replays steps on stacks.
class Replay {
 public:
  explicit Replay(std::uint32_t lanesMax) : m_lanesMax(lanesMax) {}

  // One set. `inOrder`: there are lanes enough for time never to run backwards.
  void Run(const Spans& spans, const std::vector<LaneStep>& steps, bool inOrder) {
    std::vector<int> begun(spans.size()), ended(spans.size());
    std::map<std::pair<std::size_t, std::size_t>, int> moments;
    std::size_t all = 2 * spans.size();
    for (const LaneSpan& span : spans) all += span.moments.size();
    ASSERT_EQ(all, steps.size());
    for (const LaneStep& step : steps) {
      ASSERT_LT(step.span, spans.size());
      ASSERT_LE(step.lane, m_lanesMax);
      const std::uint64_t time = TimeOf(spans, step);
      if (inOrder) {
        ASSERT_GE(time, m_times[step.lane]);
      }
      m_times[step.lane] = time;
      if (step.kind == LaneStep::Begin) {
        ASSERT_EQ(++begun[step.span], 1);
        Push(spans, step);
      } else if (step.kind == LaneStep::Moment) {
        ASSERT_EQ((++moments[{step.span, step.moment}]), 1);
        auto& open = m_open[step.lane];
        ASSERT_NE(std::find(open.begin(), open.end(), step.span), open.end());
      } else {
        ASSERT_EQ(++ended[step.span], 1);
        ASSERT_FALSE(m_open[step.lane].empty());
        ASSERT_EQ(m_open[step.lane].back(), step.span);
        m_open[step.lane].pop_back();
      }
      if (testing::Test::HasFatalFailure()) return;
    }
    for (const auto& [lane, open] : m_open) ASSERT_TRUE(open.empty());
  }

  std::size_t Lanes() const { return m_times.size(); }

 private:
  static std::uint64_t TimeOf(const Spans& spans, const LaneStep& step) {
    const LaneSpan& span = spans[step.span];
    if (step.kind == LaneStep::Begin) return span.start;
    if (step.kind == LaneStep::End) return EndOf(span);
    return std::clamp(span.moments[step.moment], span.start, EndOf(span));
  }

  void Push(const Spans& spans, const LaneStep& step) {
    const LaneSpan& span = spans[step.span];
    auto& open = m_open[step.lane];
    if (!open.empty()) {
      const LaneSpan& around = spans[open.back()];
      if (span.parent != LaneSpan::kAnyParent) {
        ASSERT_EQ(open.back(), span.parent);
      }
      ASSERT_LE(around.start, span.start);
      ASSERT_LE(EndOf(span), EndOf(around));
    } else if (step.lane < m_lanesMax && span.parent < spans.size()) {
      // Its parent must not be innermost anywhere with room for it.
      for (const auto& [lane, others] : m_open)
        if (lane != step.lane && !others.empty() && others.back() == span.parent &&
            EndOf(spans[span.parent]) > span.start) {
          ASSERT_GT(EndOf(span), EndOf(spans[span.parent]));
        }
    }
    open.push_back(step.span);
  }

  std::uint32_t m_lanesMax;
  std::map<std::uint32_t, std::vector<std::size_t>> m_open;
  std::map<std::uint32_t, std::uint64_t> m_times;
};

Spans RandomSpans(std::mt19937_64& random, bool anyParent) {
  const auto below = [&random](std::uint64_t bound) { return random() % bound; };
  const std::uint64_t width = below(3) == 0 ? 8 : 200;  // with many equal times, or with few
  const std::uint64_t from = below(20) == 0 ? UINT64_MAX - width : below(100);
  Spans spans(below(60));
  for (LaneSpan& span : spans) {
    span.start = from + below(width);
    const std::uint64_t length = below(4) == 0 ? 0 : below(below(2) == 0 ? width : 10);
    span.end = std::min(UINT64_MAX - span.start, length) + span.start;
    if (below(10) == 0) span.end = below(from + 1);            // before the start
    if (below(5) != 0) span.parent = below(spans.size() + 2);  // itself, circles, none of the set
    if (anyParent) span.parent = LaneSpan::kAnyParent;
    // Most children lie in their parents, as true ones do.
    if (span.parent < spans.size() && below(3) != 0) {
      const LaneSpan& parent = spans[span.parent];
      span.start = parent.start + below(EndOf(parent) - parent.start + 1);
      span.end = span.start + below(EndOf(parent) - span.start + 1);
    }
    for (std::uint64_t left = below(4); left > 0 && below(2) == 0; --left)
      span.moments.push_back(from + below(width));
  }
  return spans;
}

// How many spans there are at one moment, both ends included.
std::size_t MostTogether(const Spans& spans) {
  std::size_t most = 0;
  for (const LaneSpan& at : spans) {
    std::size_t together = 0;
    for (const LaneSpan& span : spans)
      together += span.start <= at.start && at.start <= EndOf(span) ? 1 : 0;
    most = std::max(most, together);
  }
  return most;
}

}  // namespace

TEST(SpanLanes, PutChildrenInsideTheirParentsOnOneLane) {
  EXPECT_EQ(Placed({Span(2, 3, 1), Span(0, 9), Span(4, 8, 1), Span(5, 6, 2)}),
            "0:(b 0:(a 0:a) 0:(c 0:(d 0:d) 0:c) 0:b)");
}

TEST(SpanLanes, PutASiblingThatOverlapsOnAnotherLane) {
  EXPECT_EQ(Placed({Span(0, 9), Span(1, 4, 0), Span(3, 6, 0)}), "0:(a 0:(b 1:(c 0:b) 1:c) 0:a)");
}

TEST(SpanLanes, PutAChildThatEndsAfterItsParentOnAnotherLane) {
  EXPECT_EQ(Placed({Span(0, 5), Span(1, 6, 0)}), "0:(a 1:(b 0:a) 1:b)");
}

TEST(SpanLanes, DoNotNestAStrangerThatLiesInside) {
  EXPECT_EQ(Placed({Span(0, 9), Span(2, 3)}), "0:(a 1:(b 1:b) 0:a)");
}

TEST(SpanLanes, UseALaneAgainWhenItsSpanEndsAsTheNextBegins) {
  EXPECT_EQ(Placed({Span(0, 5), Span(5, 7)}), "0:(a 0:a) 0:(b 0:b)");
}

TEST(SpanLanes, KeepAChildWithoutLengthAtTheEndOfItsParentInside) {
  EXPECT_EQ(Placed({Span(0, 5), Span(5, 5, 0)}), "0:(a 0:(b 0:b) 0:a)");
}

TEST(SpanLanes, PutTheParentFirstWhenBothHaveTheSameTimes) {
  EXPECT_EQ(Placed({Span(1, 4, 1), Span(1, 4)}), "0:(b 0:(a 0:a) 0:b)");
}

TEST(SpanLanes, TakeAnEndBeforeTheStartForTheStart) {
  EXPECT_EQ(Placed({Span(5, 2)}), "0:(a 0:a)");
}

TEST(SpanLanes, PlaceParentsInACircleSomewhere) {
  EXPECT_EQ(Placed({Span(0, 9, 1), Span(0, 9, 0)}), "0:(b 0:(a 0:a) 0:b)");
  EXPECT_EQ(Placed({Span(0, 9, 0)}), "0:(a 0:a)");
}

TEST(SpanLanes, MoveMomentsOutsideOfTheirSpanToItsBorder) {
  EXPECT_EQ(Placed({Span(2, 4, LaneSpan::kNoParent, {9, 3, 0})}), "0:(a 0:a2 0:a1 0:a0 0:a)");
}

TEST(SpanLanes, PutSpansOfOneThreadInsideEachOtherByTheirTimes) {
  const std::size_t any = LaneSpan::kAnyParent;
  EXPECT_EQ(Placed({Span(0, 9, any), Span(1, 3, any), Span(4, 5, any), Span(8, 12, any)}),
            "0:(a 0:(b 0:b) 0:(c 0:c) 1:(d 0:a) 1:d)");
}

TEST(SpanLanes, PutTheLongerOfTwoFirstThatBeginTogether) {
  const std::size_t any = LaneSpan::kAnyParent;
  EXPECT_EQ(Placed({Span(0, 3, any), Span(0, 9, any)}), "0:(b 0:(a 0:a) 0:b)");
}

TEST(SpanLanes, PutALateSpanOnALaneWhereTimeNeedNotRunBackwards) {
  SpanLanes lanes;
  EXPECT_EQ(Shown(lanes.Place({Span(10, 20)})), "0:(a 0:a)");
  EXPECT_EQ(Shown(lanes.Place({Span(12, 14)})), "1:(a 1:a)");
  EXPECT_EQ(Shown(lanes.Place({Span(15, 16), Span(20, 21)})), "1:(a 1:a) 0:(b 0:b)");
}

TEST(SpanLanes, GiveSpansThatFindNoLaneWholeOneAfterTheOther) {
  EXPECT_EQ(Placed({Span(0, 9), Span(1, 8), Span(2, 7), Span(3, 6, 2, {4})}, 1),
            "0:(a 0:a) 1:(b 1:b) 1:(c 1:c) 1:(d 1:d0 1:d)");
}

TEST(SpanLanes, LetTimeRunBackwardsOnlyWhereThereIsNoOtherLane) {
  SpanLanes lanes(1);
  EXPECT_EQ(Shown(lanes.Place({Span(10, 20)})), "0:(a 0:a)");
  EXPECT_EQ(Shown(lanes.Place({Span(3, 4)})), "0:(a 0:a)");
}

TEST(SpanLanes, NestAnySetsOfSpansOnLanesThatAreKept) {
  constexpr unsigned kRuns = 1000;
  for (unsigned seed = 1; seed <= kRuns; ++seed) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937_64 random(seed);
    const bool few = seed % 4 == 0;
    const std::uint32_t most = few ? 3 : 512;
    SpanLanes lanes(most);
    Replay replay(most);
    for (unsigned set = 0; set < 3; ++set) {
      const Spans spans = RandomSpans(random, seed % 5 == 0);
      replay.Run(spans, lanes.Place(spans), !few);
      if (HasFatalFailure()) return;
      if (set == 0 && !few) {
        ASSERT_LE(replay.Lanes(), MostTogether(spans));
      }
    }
  }
}
