// Filters of monitors at the hub: what passes, what is withheld, and that nothing is counted twice.
#include "quor/monitors/source_filters.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <random>
#include <thread>

#include "base/thread_time.h"
#include "quor/hub/hub_fixture.h"

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class SourceFilterTest : public testing::Test {
 protected:
  std::shared_ptr<SourceFilter> Open(const std::string& text, const Account& account = {}) {
    WhereError error;
    auto filter = m_filters.Open(account, text, error);
    m_error = filter ? "" : std::to_string(error.place) + ": " + error.reason;
    return filter;
  }
  // A stream with the filter.
  void Filter(TakingStream& stream, const std::string& text) {
    const auto filter = Open(text);
    ASSERT_TRUE(filter) << m_error;
    stream.change = [filter](const SharedBatch& batch) { return filter->Of(batch); };
    stream.onDelivered = [filter] { filter->ForgetBatch(); };
  }

  Hub m_hub;
  SourceFilters m_filters{m_hub.Names()};
  std::string m_error;
};

TEST_F(SourceFilterTest, OnlyWhatMatchesComesAndTheRestIsCountedForItsSource) {
  FedSource one(m_hub, "orders", 1), two(m_hub, "billing", 2);
  TakingStream filtered(m_hub), all(m_hub);
  Filter(filtered, "text contains x");
  one.Trace("ax");
  two.Trace("b");
  one.Trace("c");
  two.Trace("xd");
  one.Trace("e");
  EXPECT_THAT(filtered.Read(), ElementsAre("1 orders Net/Connect ax", "4 billing Net/Connect xd"));
  EXPECT_EQ(all.Read().size(), 5u);
  const auto& orders = filtered.ledger[std::string("\1", 1) + std::string(15, '\0')];
  const auto& billing = filtered.ledger[std::string("\2", 1) + std::string(15, '\0')];
  EXPECT_EQ(orders.delivered(), 1u);
  EXPECT_EQ(orders.withheld(), 2u);
  EXPECT_EQ(orders.serial(), 3u);
  EXPECT_EQ(billing.delivered(), 1u);
  EXPECT_EQ(billing.withheld(), 1u);
  EXPECT_EQ(filtered.Lost(), 0u);
  EXPECT_EQ(all.Withheld(), 0u);
}

TEST_F(SourceFilterTest, ABatchOfWhichNothingPassesIsALedgerWithoutData) {
  FedSource one(m_hub, "orders");
  TakingStream stream(m_hub);
  Filter(stream, "component == Other");
  for (int i = 0; i < 10; ++i) one.Trace("a");
  stream.Deliver();
  Outgoing out;
  ASSERT_TRUE(stream.Queue().Next(out));
  EXPECT_TRUE(out.records->empty());
  EXPECT_FALSE(out.names);
  ASSERT_EQ(out.ledger.sources_size(), 1);
  EXPECT_EQ(out.ledger.sources(0).withheld(), 10u);
  EXPECT_EQ(out.ledger.sources(0).serial(), 10u);
}

TEST_F(SourceFilterTest, AReportOfALossAlwaysComes) {
  FedSource one(m_hub, "orders");
  TakingStream stream(m_hub);
  Filter(stream, "text contains x");
  one.Trace("a");
  one.Lose(12, "the ring of the application was full");
  one.Trace("xb");
  EXPECT_THAT(stream.Read(),
              ElementsAre("- orders Quor/Loss 12 traces lost: the ring of the application was full",
                          "2 orders Net/Connect xb"));
  EXPECT_EQ(stream.Withheld(), 1u);
  EXPECT_EQ(stream.Lost(), 12u);
  EXPECT_EQ(stream.Delivered(), 1u);
}

TEST_F(SourceFilterTest, ANameThatComesLaterIsComparedToo) {
  FedSource one(m_hub, "orders");
  TakingStream stream(m_hub);
  Filter(stream, "component == Later or application matches \"^bil\"");
  one.Trace("a");
  EXPECT_THAT(stream.Read(), IsEmpty());
  one.Name(9, "Later");
  one.Trace("b", {.component = AppNameId{9}});
  FedSource two(m_hub, "billing", 2);
  two.Trace("c");
  EXPECT_THAT(stream.Read(), ElementsAre("2 orders Later/Connect b", "3 billing Net/Connect c"));
}

TEST_F(SourceFilterTest, AFilterOutlivesTheNamesOfTheHub) {
  FedSource one(m_hub, "orders");
  const auto filter = Open("component == Net");
  {
    TakingStream stream(m_hub);
    Filter(stream, "component == Net");
    for (const char* const name : {"Other", "Net"}) {
      one.Name(3, name);
      one.Trace("a");
    }
    EXPECT_EQ(stream.Read().size(), 1u);
  }
  // The ids have other meanings now.
  TakingStream stream(m_hub);
  Filter(stream, "component == Net");
  for (const char* const name : {"Net", "Other"}) {
    one.Name(3, name);
    one.Trace("b");
  }
  EXPECT_THAT(stream.Read(), ElementsAre("3 orders Net/Connect b"));
  EXPECT_EQ(m_filters.Count(), 1u);
}

TEST_F(SourceFilterTest, ASlowMonitorLosesOnlyWhatMatches) {
  FedSource one(m_hub, "orders");
  StreamLimits limits;
  limits.queueBytes = 64u << 10;
  TakingStream stream(m_hub, limits);
  Filter(stream, "text startswith x");
  const std::string text(100, 'y');
  for (int i = 0; i < 50'000; ++i) {
    one.Trace((i % 5 == 0 ? "x" : "") + text);
    if (i % 500 == 0) stream.Deliver();
  }
  stream.Read();
  EXPECT_GT(stream.Lost(), 0u);
  EXPECT_EQ(stream.Withheld(), 40'000u);
  EXPECT_EQ(stream.Delivered() + stream.Lost(), 10'000u);
  EXPECT_EQ(stream.Delivered(), stream.numbered);
}

TEST_F(SourceFilterTest, EqualTextsAskOnceAndShareTheAnswer) {
  FedSource one(m_hub, "orders");
  TakingStream first(m_hub), second(m_hub), other(m_hub);
  std::vector<SharedBatch> answers;
  const auto filter = Open("text contains x"), again = Open("text contains x");
  EXPECT_EQ(filter, again);
  EXPECT_NE(filter, Open("text contains y"));
  EXPECT_EQ(m_filters.Count(), 1u) << "a text without a monitor is forgotten";
  for (TakingStream* const stream : {&first, &second})
    stream->change = [&answers, filter](const SharedBatch& batch) {
      answers.push_back(filter->Of(batch));
      return answers.back();
    };
  one.Trace("x");
  one.Trace("y");
  first.Deliver();
  ASSERT_EQ(answers.size(), 2u);
  EXPECT_EQ(answers[0], answers[1]);
  EXPECT_EQ(answers[0]->traces, 1u);
}

TEST_F(SourceFilterTest, NothingOfASourceIsUnderWayWhenItsTracesHaveGone) {
  FedSource one(m_hub, "orders");
  TakingStream stream(m_hub);
  Filter(stream, "text contains x");
  one.Trace("x");
  one.Trace("y");
  stream.Read();
  one.Trace("z");
  stream.Deliver();
  stream.Read();
  EXPECT_FALSE(one.Get()->IsUnderWay());
}

TEST_F(SourceFilterTest, ATraceThatCannotBeJudgedWithinTheLimitsIsDelivered) {
  FedSource one(m_hub, "orders");
  TakingStream stream(m_hub);
  Filter(stream, "text matches \"(a+)+$\" or component matches \"(b+)+$\"");
  one.Trace(std::string(40, 'a') + "!");    // tries all ways
  one.Trace(std::string(3000, 'c') + "!");  // too long to be searched
  one.Trace("c");
  one.Name(9, std::string(40, 'b') + "!");
  for (int i = 0; i < 3; ++i) one.Trace("c", {.component = AppNameId{9}});
  stream.Read();
  EXPECT_EQ(stream.Delivered(), 5u);
  EXPECT_EQ(stream.Withheld(), 1u);
}

TEST_F(SourceFilterTest, AnotherReasonToPassIsNoVerdictOnANameThatCannotBeJudged) {
  FedSource one(m_hub, "orders");
  TakingStream stream(m_hub);
  Filter(stream, "component matches \"(b+)+$\" or category == Connect");
  one.Name(9, std::string(40, 'b') + "!");
  one.Name(8, "Close");
  one.Trace("a", {.component = AppNameId{9}});
  for (int i = 0; i < 3; ++i) one.Trace("b", {.component = AppNameId{9}, .category = AppNameId{8}});
  one.Trace("c", {.category = AppNameId{8}});
  stream.Read();
  EXPECT_EQ(stream.Delivered(), 4u);
  EXPECT_EQ(stream.Withheld(), 1u);
}

TEST_F(SourceFilterTest, AHostileExpressionTakesNoMoreThanTheShareOfItsAccount) {
  FedSource one(m_hub, "orders");
  TakingStream stream(m_hub);
  const std::string hostile =
      "text matches \"(a+)+$\" or text matches \"(?:a|aa)+$\" or text matches \"(?:a?a)*[bc]\"";
  const auto filter = Open(hostile);
  Filter(stream, hostile);
  const std::string text = std::string(1000, 'a') + "!";
  const auto began = std::chrono::steady_clock::now();
  std::uint64_t deliveringNs = 0;
  constexpr int kBatches = 600;
  for (int batch = 0; batch < kBatches; ++batch) {
    for (int i = 0; i < 30; ++i) one.Trace(text);
    const std::uint64_t before = ThreadNanoseconds();
    stream.Deliver();
    deliveringNs += ThreadNanoseconds() - before;
    Outgoing out;
    while (stream.Queue().Next(out)) stream.Take(out);
  }
  const auto tookNs = static_cast<std::uint64_t>(
      std::chrono::nanoseconds(std::chrono::steady_clock::now() - began).count());
  EXPECT_EQ(stream.Delivered(), 30u * kBatches) << "in doubt all come";
  EXPECT_EQ(stream.Withheld(), 0u);
  // The filter may have a quarter of the time that passed and the burst; asking about all takes
  // nearly all of the time.
  EXPECT_LT(deliveringNs, tookNs / 2 + 2 * std::uint64_t{WorkShare::kBurstNs});
  EXPECT_GT(filter->Unasked(), 0u);
}

// Texts of many clients, all handed over between two looks at the rings.
TEST_F(SourceFilterTest, TheMakingOfTextsHasAShareOfTheTimeWhoeverWantsThem) {
  constexpr uid_t kMost = 20'000;
  const auto began = WorkShare::Clock::now();
  const auto since = [](WorkShare::Clock::time_point then) {
    return std::chrono::nanoseconds(WorkShare::Clock::now() - then).count();
  };
  std::int64_t longestNs = 0, workedNs = 0;
  uid_t made = 0;
  for (; made < kMost; ++made) {
    const Account account{made, "account" + std::to_string(made)};
    const std::string text = "text matches \"" + std::to_string(made) + "(x|yz)+[a-f]*\"";
    if (m_filters.WaitFor(account, text).count() > 0) break;
    const auto before = WorkShare::Clock::now();
    ASSERT_TRUE(Open(text, account));
    const std::int64_t took = since(before);
    longestNs = std::max(longestNs, took);
    workedNs += took;
  }
  EXPECT_GT(made, 1u);
  EXPECT_LT(made, kMost);
  // And what the filters cost at their end.
  EXPECT_LT(workedNs, 2 * (WorkShare::kBurstNs + since(began) / 2 + longestNs));
}

TEST_F(SourceFilterTest, AnAccountDeepInDebtWaitsAndOthersDoNot) {
  const Account alice{1000, "alice"}, bob{1001, "bob"};
  const auto kept = Open("pid == 1", alice);
  m_filters.SharesOf(alice)->share.Worked(3 * WorkShare::kBurstNs);
  EXPECT_GT(m_filters.WaitFor(alice, "pid == 2").count(), 0);
  EXPECT_EQ(m_filters.WaitFor(alice, "pid == 1").count(), 0) << "it is made";
  EXPECT_EQ(m_filters.WaitFor(bob, "pid == 2").count(), 0);
}

TEST_F(SourceFilterTest, TheLogSaysOnceInAWhileThatTextsOfAnAccountTakeTooLong) {
  const auto now = WorkShare::Clock::now();
  FilterAccount alice("a monitor of account alice"), bob("a monitor of account bob");
  testing::internal::CaptureStderr();
  for (const int minutes : {0, 1, 9, 10, 11, 19})
    alice.ReportBusy(now + std::chrono::minutes(minutes));
  bob.ReportBusy(now);
  const std::string log = testing::internal::GetCapturedStderr();
  EXPECT_EQ(std::count(log.begin(), log.end(), '\n'), 3) << log;
  EXPECT_NE(log.find("a filter text of a monitor of account bob takes too long"), log.npos);
}

TEST_F(SourceFilterTest, TheNamesGoWithTheLastTextAndAreLearnedAnew) {
  FedSource one(m_hub, "orders");
  one.Name(9, "Other");
  for (int round = 0; round < 2; ++round) {
    TakingStream stream(m_hub);
    {
      const auto filter = Open("component == Net");
      EXPECT_EQ(m_filters.NamesHeld(), 0u);
      stream.change = [&](const SharedBatch& batch) { return filter->Of(batch); };
      one.Trace("a");
      one.Trace("b", {.component = AppNameId{9}});
      stream.Deliver();
      filter->ForgetBatch();
      EXPECT_GT(m_filters.NamesHeld(), 0u);
      stream.change = nullptr;
    }
    EXPECT_EQ(m_filters.NamesHeld(), 0u);
    stream.Read();
    EXPECT_EQ(stream.Delivered(), 1u);
    EXPECT_EQ(stream.Withheld(), 1u);
  }
}

TEST_F(SourceFilterTest, ATextThatIsNotTakenHasItsPlaceAndReason) {
  EXPECT_FALSE(Open("delta > 5ms"));
  EXPECT_EQ(m_error,
            "0: the source does not know the trace before: \"delta\" works in the window only");
  EXPECT_FALSE(Open("componet == x"));
  EXPECT_EQ(m_error.substr(0, 3), "0: ");
  EXPECT_FALSE(Open("text matches \"(\""));
  EXPECT_NE(m_error.find("wrong expression"), m_error.npos) << m_error;
  EXPECT_FALSE(Open(""));
}

TEST_F(SourceFilterTest, AnAccountHasABoundOnItsTextsAndNoPartInThoseOfOthers) {
  const Account alice{1000, "alice"}, bob{1001, "bob"};
  std::vector<std::shared_ptr<SourceFilter>> held;
  for (std::size_t i = 0; i < SourceFilters::kFiltersOfAccountMax; ++i) {
    held.push_back(Open("pid == " + std::to_string(i), alice));
    ASSERT_TRUE(held.back()) << m_error;
  }
  EXPECT_FALSE(Open("pid == 4711", alice));
  EXPECT_EQ(m_error, "0: an account has at most 16 filter texts");
  EXPECT_EQ(Open("pid == 0", alice), held[0]);
  EXPECT_NE(Open("pid == 0", bob), held[0]);
  EXPECT_TRUE(Open("pid == 4711"));
  held.pop_back();
  EXPECT_TRUE(Open("pid == 4711", alice)) << m_error;
}

TEST(WorkShare, APartOfTheTimeMayBeUsedAndWhatWasUsedTooMuchIsADebt) {
  using namespace std::chrono_literals;
  const auto begin = WorkShare::Clock::time_point();
  WorkShare share(4, begin);
  EXPECT_EQ(share.Left(begin), WorkShare::kBurstNs);
  share.Worked(WorkShare::kBurstNs + 3'000'000);
  EXPECT_EQ(share.Left(begin), -3'000'000);
  EXPECT_EQ(share.Left(begin + 8ms), -1'000'000);
  EXPECT_EQ(share.Left(begin + 16ms), 1'000'000);
  EXPECT_EQ(share.Left(begin + 1h), WorkShare::kBurstNs);
  share.Worked(WorkShare::kBurstNs + 1'000'000);
  EXPECT_EQ(share.WaitFor(0, begin + 1h), 4'000'000);
  EXPECT_EQ(share.WaitFor(-1'000'000, begin + 1h), 0);
  EXPECT_EQ(share.WaitFor(0, begin + 1h + 3ms), 1'000'000);
  EXPECT_EQ(share.WaitFor(0, begin + 1h + 4ms), 0);
}

// Random sources, losses, ends, texts and speeds: the numbers of each source add up always.
TEST_F(SourceFilterTest, SerialsAreDeliveredWithheldAndLostWhateverHappens) {
  for (unsigned seed = 1; seed <= 30; ++seed) {
    std::minstd_rand random(seed);
    const auto below = [&random](unsigned most) { return static_cast<unsigned>(random() % most); };
    Hub hub(seed % 3 == 0 ? HubBatches::OfOneSource : HubBatches::Mixed);
    SourceFilters filters(hub.Names());
    StreamLimits limits;
    limits.queueBytes = 4096u << below(5);
    limits.oneSourceEach = seed % 3 == 0;
    TakingStream stream(hub, limits);
    std::shared_ptr<SourceFilter> filter;
    stream.change = [&](const SharedBatch& batch) { return filter ? filter->Of(batch) : batch; };
    stream.onDelivered = [&] {
      if (filter) filter->ForgetBatch();
    };
    std::vector<std::unique_ptr<FedSource>> sources;
    std::uint64_t made = 0, lost = 0, wanted = 0;
    std::uint32_t pid = 1;
    bool filters1 = false;
    for (int step = 0; step < 3000; ++step) {
      const unsigned what = below(1000);
      if (sources.empty() || what < 5)
        sources.push_back(std::make_unique<FedSource>(hub, "app" + std::to_string(pid), pid)),
            ++pid;
      const std::size_t at = below(static_cast<unsigned>(sources.size()));
      if (what > 5 && what < 9 && sources.size() > 1) {
        hub.EndSource(sources[at]->Get());
        sources.erase(sources.begin() + static_cast<std::ptrdiff_t>(at));
      } else if (what < 30) {
        const unsigned count = 1 + below(20);
        sources[at]->Lose(count, "a reason");
        made += count;
        lost += count;
      } else if (what < 40) {
        stream.Deliver();
        WhereError error;
        filters1 = below(3) != 0;
        filter = filters1 ? filters.Open({}, "text contains x", error) : nullptr;
      } else if (what < 60) {
        stream.Read();
      } else if (what < 120) {
        stream.Deliver();
      } else {
        const bool matches = below(4) == 0;
        sources[at]->Trace(std::string(below(200), 'a') + (matches ? "x" : ""));
        ++made;
        wanted += matches || !filters1;
      }
    }
    stream.Read();
    std::uint64_t serials = 0;
    for (const auto& [instance, word] : stream.ledger) {
      EXPECT_EQ(word.serial(), word.delivered() + word.withheld() + word.lost());
      serials += word.serial();
    }
    EXPECT_EQ(serials, made) << "seed " << seed;
    EXPECT_EQ(stream.Delivered(), stream.numbered);
    EXPECT_EQ(stream.Delivered() + stream.Lost(), wanted + lost) << "seed " << seed;
    EXPECT_EQ(stream.Withheld(), made - lost - wanted) << "seed " << seed;
  }
}

}  // namespace
