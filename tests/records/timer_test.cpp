#include "records/timer.h"

#include <gtest/gtest.h>

#include <limits>
#include <sstream>

#include "base/quor_ptr.h"
#include "support/comma_locale.h"
#include "support/place_in_table.h"

namespace {

std::int64_t now, tics, readings, frequencyReadings;

// A counter of the test's own: it stands still unless the test moves it.
class Timer : public ::testing::Test {
 protected:
  Timer() : m_before(SetTicCounter({&Now, &Frequency})) {
    now = 5000;
    tics = 1'000'000'000;
    readings = frequencyReadings = 0;
    m_timer = QuorPtr<trc_Timer_i>(CreateTimer());
  }
  ~Timer() override { SetTicCounter(m_before); }

  std::string Format(double picoseconds) {
    m_timer->SetPicoseconds(picoseconds);
    return m_timer->Format();
  }
  static std::int64_t Now() {
    ++readings;
    return now;
  }
  static std::int64_t Frequency() {
    ++frequencyReadings;
    return tics;
  }

  const TicCounter m_before;
  QuorPtr<trc_Timer_i> m_timer;
};

// ---- text

TEST_F(Timer, Below1000ASpanReadsInPicoseconds) {
  EXPECT_EQ(Format(0), "0 ps");
  EXPECT_EQ(Format(999), "999 ps");
  EXPECT_EQ(Format(0.5), "0.5 ps");
}

TEST_F(Timer, ASpanOfExactlyAUnitTakesThatUnitAndNeverTheSingular) {
  EXPECT_EQ(Format(1000), "1 ns");
  EXPECT_EQ(Format(1e6), "1 us");
  EXPECT_EQ(Format(1e9), "1 ms");
  EXPECT_EQ(Format(1e12), "1 secs");
  EXPECT_EQ(Format(60e12), "1 minutes");
  EXPECT_EQ(Format(3600e12), "1 hours");
  EXPECT_EQ(Format(86400e12), "1 days");
}

TEST_F(Timer, JustBelowAUnitTheSmallerOneStays) {
  EXPECT_EQ(Format(59999000000000), "60 secs");  // three digits round it up
  EXPECT_EQ(Format(999999), "1e+03 ns");
}

TEST_F(Timer, ThreeSignificantDigits) {
  EXPECT_EQ(Format(1500), "1.5 ns");
  EXPECT_EQ(Format(1234567), "1.23 us");
  EXPECT_EQ(Format(1.25e9), "1.25 ms");
  EXPECT_EQ(Format(86400e12 * 1234), "1.23e+03 days");
}

TEST_F(Timer, ANegativeSpanReadsInPicosecondsHoweverLongItIs) {
  EXPECT_EQ(Format(-5), "-5 ps");
  EXPECT_EQ(Format(-86400e12), "-8.64e+16 ps");
}

TEST_F(Timer, TheDecimalPointIsAPointInEveryLocale) {
  const CommaLocale locale;
  EXPECT_EQ(Format(1500), "1.5 ns");
}

TEST_F(Timer, AStreamGetsTheText) {
  m_timer->SetPicoseconds(1500);
  std::ostringstream stream;
  stream << *m_timer;
  EXPECT_EQ(stream.str(), "1.5 ns");
}

// ---- stopwatch

TEST_F(Timer, ANewTimerIsStoppedAtZero) {
  EXPECT_FALSE(m_timer->IsRunning());
  EXPECT_EQ(m_timer->GetPicoseconds(), 0);
}

TEST_F(Timer, StopAddsTheTimeSinceTheStart) {
  m_timer->SetPicoseconds(500);
  m_timer->Start();
  EXPECT_TRUE(m_timer->IsRunning());
  now += 3;
  m_timer->Stop();
  EXPECT_FALSE(m_timer->IsRunning());
  EXPECT_EQ(m_timer->GetPicoseconds(), 3500);
  m_timer->Start();
  now += 2;
  m_timer->Stop();
  EXPECT_EQ(m_timer->GetPicoseconds(), 5500);
}

TEST_F(Timer, ReadingARunningTimerTwiceGivesTwoSmallValuesAndDropsWhatWasThere) {
  m_timer->SetPicoseconds(1e12);
  m_timer->Start();
  now += 7;
  EXPECT_EQ(m_timer->GetPicoseconds(), 7000);
  now += 2;
  EXPECT_EQ(m_timer->GetPicoseconds(), 2000);
}

TEST_F(Timer, StopAfterAReadAddsToWhatWasRead) {
  m_timer->Start();
  now += 7;
  m_timer->GetPicoseconds();
  now += 2;
  m_timer->Stop();
  EXPECT_EQ(m_timer->GetPicoseconds(), 9000);
}

TEST_F(Timer, StartOfARunningTimerChangesNothing) {
  m_timer->Start();
  now += 4;
  m_timer->Start();
  now += 1;
  m_timer->Stop();
  EXPECT_EQ(m_timer->GetPicoseconds(), 5000);
}

TEST_F(Timer, StopOfAStoppedTimerChangesNothing) {
  m_timer->SetPicoseconds(42);
  now += 10;
  m_timer->Stop();
  EXPECT_EQ(m_timer->GetPicoseconds(), 42);
}

TEST_F(Timer, SetPicosecondsWhileRunningKeepsItRunningFromNow) {
  m_timer->Start();
  now += 100;
  m_timer->SetPicoseconds(50);
  EXPECT_TRUE(m_timer->IsRunning());
  now += 1;
  m_timer->Stop();
  EXPECT_EQ(m_timer->GetPicoseconds(), 1050);
}

TEST_F(Timer, AStoppedTimerNeverReadsTheCounter) {
  m_timer->SetPicoseconds(1e13);
  m_timer->Format();
  m_timer->GetNanoseconds();
  m_timer->GetMicroseconds();
  m_timer->GetMilliseconds();
  m_timer->GetSeconds();
  m_timer->Stop();
  EXPECT_EQ(readings, 0);
}

TEST_F(Timer, FormatOfARunningTimerIsARead) {
  m_timer->Start();
  now += 1;
  EXPECT_EQ(m_timer->Format(), "1 ns");
  EXPECT_EQ(m_timer->Format(), "0 ps");
}

// ---- numbers

TEST_F(Timer, OtherUnitsAreThePicosecondsDivided) {
  m_timer->SetPicoseconds(1234567);
  EXPECT_DOUBLE_EQ(m_timer->GetNanoseconds(), 1234.567);
  EXPECT_DOUBLE_EQ(m_timer->GetMicroseconds(), 1.234567);
}

TEST_F(Timer, MillisecondsAndSecondsAreCutTowardsZero) {
  m_timer->SetPicoseconds(2.9e12);
  EXPECT_EQ(m_timer->GetMilliseconds(), 2900);
  EXPECT_EQ(m_timer->GetSeconds(), 2);
  m_timer->SetPicoseconds(-2.9e12);
  EXPECT_EQ(m_timer->GetSeconds(), -2);
  m_timer->SetPicoseconds(-2.9e9);
  EXPECT_EQ(m_timer->GetMilliseconds(), -2);
}

TEST_F(Timer, ASpanThatNoIntegerHoldsIsCutToTheNearest) {
  m_timer->SetPicoseconds(1e300);
  EXPECT_EQ(m_timer->GetSeconds(), std::numeric_limits<std::int64_t>::max());
  m_timer->SetPicoseconds(-1e300);
  EXPECT_EQ(m_timer->GetSeconds(), std::numeric_limits<std::int64_t>::min());
  m_timer->SetPicoseconds(std::numeric_limits<double>::quiet_NaN());
  EXPECT_EQ(m_timer->GetMilliseconds(), 0);
}

TEST_F(Timer, SumAndDifferenceBringBothUpToDate) {
  const QuorPtr<trc_Timer_i> other(CreateTimer());
  m_timer->Start();
  other->Start();
  now += 5;
  *m_timer += *other;
  EXPECT_EQ(readings, 4);  // two starts, two reads
  m_timer->Stop();
  other->Stop();
  EXPECT_EQ(m_timer->GetPicoseconds(), 10000);
  EXPECT_EQ(other->GetPicoseconds(), 5000);
  *m_timer -= *other;
  EXPECT_EQ(m_timer->GetPicoseconds(), 5000);
  EXPECT_EQ(&(*m_timer -= *m_timer), m_timer.Get());
  EXPECT_EQ(m_timer->GetPicoseconds(), 0);
}

TEST_F(Timer, ProductAndQuotientBringThisUpToDate) {
  m_timer->SetPicoseconds(1);
  m_timer->Start();
  now += 6;
  EXPECT_EQ(&(*m_timer *= 3), m_timer.Get());
  m_timer->Stop();
  EXPECT_EQ(m_timer->GetPicoseconds(), 18000);
  EXPECT_EQ(&(*m_timer /= 4), m_timer.Get());
  EXPECT_EQ(m_timer->GetPicoseconds(), 4500);
  *m_timer *= -1;
  EXPECT_EQ(m_timer->GetPicoseconds(), -4500);
}

// ---- life and shared state

TEST_F(Timer, CountsItsReferencesAndGoesWithTheLast) {
  trc_Timer_i* const timer = CreateTimer();
  EXPECT_EQ(timer->AddRef(), 1);
  EXPECT_EQ(timer->AddRef(), 2);
  EXPECT_EQ(timer->Release(), 1);
  EXPECT_EQ(timer->Release(), 0);  // under a leak checker: it has gone
}

TEST_F(Timer, ReleaseOfACountThatNeverRoseGivesMinusOneAndDestroysNothing) {
  trc_Timer_i* const timer = CreateTimer();
  EXPECT_EQ(timer->Release(), -1);
  timer->SetPicoseconds(3);
  EXPECT_EQ(timer->GetPicoseconds(), 3);
  EXPECT_EQ(timer->AddRef(), 0);
  EXPECT_EQ(timer->AddRef(), 1);
  EXPECT_EQ(timer->Release(), 0);
}

TEST_F(Timer, AssignmentCopiesAllButTheCount) {
  const QuorPtr<trc_Timer_i> other(CreateTimer());
  other->SetPicoseconds(9);
  other->Start();
  m_timer->AddRef();
  now += 2;
  EXPECT_EQ(&(*m_timer = *other), m_timer.Get());
  EXPECT_TRUE(m_timer->IsRunning());
  m_timer->Stop();
  EXPECT_EQ(m_timer->GetPicoseconds(), 2009);
  EXPECT_TRUE(other->IsRunning());
  EXPECT_EQ(m_timer->Release(), 1);
}

TEST_F(Timer, ACopyHasTheOthersTimeAndACountOfItsOwn) {
  m_timer->SetPicoseconds(77);
  trc_Timer_i* const copy = CreateTimer(*m_timer);
  EXPECT_EQ(copy->GetPicoseconds(), 77);
  EXPECT_EQ(copy->AddRef(), 1);
  copy->Release();
}

TEST_F(Timer, TheFrequencyIsFetchedByTheFirstTimerAndAgainOnlyWhileItIsZero) {
  EXPECT_EQ(frequencyReadings, 1);
  EXPECT_EQ(m_timer->GetTicPeriod(), 1000);
  tics = 0;
  SetTicCounter({&Now, &Frequency});
  const QuorPtr<trc_Timer_i> zero(CreateTimer());
  EXPECT_EQ(frequencyReadings, 2);
  tics = 4;
  const QuorPtr<trc_Timer_i> four(CreateTimer());
  const QuorPtr<trc_Timer_i> again(CreateTimer());
  EXPECT_EQ(frequencyReadings, 3);
  EXPECT_EQ(zero->GetTicPeriod(), 2.5e11);  // shared by all
}

TEST(RealTimer, RunsForward) {
  const QuorPtr<trc_Timer_i> timer(CreateTimer());
  EXPECT_EQ(timer->GetTicPeriod(), 1000);
  timer->Start();
  double read = 0;
  for (int reads = 0; read == 0 && reads < 1'000'000; ++reads) read = timer->GetPicoseconds();
  EXPECT_GT(read, 0);
}

TEST(TimerInterface, TheNineteenOperationsStandInTheirOrder) {
  using T = trc_Timer_i;
  const std::size_t places[] = {
      PlaceInTable(&T::AddRef),          PlaceInTable(&T::Release),
      PlaceInTable(&T::Start),           PlaceInTable(&T::Stop),
      PlaceInTable(&T::SetPicoseconds),  PlaceInTable(&T::GetTicPeriod),
      PlaceInTable(&T::GetPicoseconds),  PlaceInTable(&T::GetNanoseconds),
      PlaceInTable(&T::GetMicroseconds), PlaceInTable(&T::GetMilliseconds),
      PlaceInTable(&T::GetSeconds),      PlaceInTable(&T::Format),
      PlaceInTable(&T::IsRunning),       PlaceInTable(&T::operator-=),
      PlaceInTable(&T::operator+=),      PlaceInTable(&T::operator/=),
      PlaceInTable(&T::operator*=),
  };
  for (std::size_t at = 0; at < std::size(places); ++at) EXPECT_EQ(places[at], at);
  // The destructor, which takes two places, stands between.
  using Assign = trc_Timer_i& (trc_Timer_i::*)(const trc_Timer_i&);
  EXPECT_EQ(PlaceInTable(static_cast<Assign>(&T::operator=)), 19u);
}

}  // namespace
