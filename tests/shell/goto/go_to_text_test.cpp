// What a user writes to go to a time or to a row.
#include "shell/goto/go_to_text.h"

#include <gtest/gtest.h>

#include "support/zone_guard.h"

namespace {

constexpr std::int64_t kMs = 1'000'000, kSecond = 1000 * kMs;

// A moment of UTC.
std::int64_t At(unsigned month, unsigned day, unsigned hour, unsigned minute, unsigned second,
                unsigned ms = 0) {
  return *MomentOfStamp(std::uint64_t{PackDate(2026, month, day)} << 32 |
                        PackTime(hour, minute, second, ms));
}

class GoToTime : public testing::Test {
 protected:
  GoToTime() {
    m_clock.where.utc = true;
    m_clock.focused = m_clock.day = At(11, 21, 9, 41, 7, 123);
    m_clock.where.end = At(11, 21, 10, 0, 0);
  }
  // Seconds and milliseconds behind the row with the focus; -1 and the reason in m_why.
  std::int64_t Read(const char* text) {
    m_why.clear();
    const auto moment = ReadGoToTime(text, m_clock, &m_why);
    EXPECT_EQ(moment.has_value(), m_why.empty()) << text;
    return moment.value_or(-1);
  }
  const ZoneGuard m_zone{"CET-1CEST,M3.5.0,M10.5.0/3"};
  GoToClock m_clock;
  std::string m_why;
};

TEST_F(GoToTime, ATimeIsWhatAFilterTextTakes) {
  EXPECT_EQ(Read("2026-11-21"), At(11, 21, 0, 0, 0));
  EXPECT_EQ(Read("2026-11-21 09:41"), At(11, 21, 9, 41, 0));
  EXPECT_EQ(Read("  2026-11-21T09:41:07.5 "), At(11, 21, 9, 41, 7, 500));
  EXPECT_EQ(Read("2026-11-21T09:41:07.123+01:00"), At(11, 21, 8, 41, 7, 123));
}

TEST_F(GoToTime, ATimeWithoutAZoneIsOfTheZoneThatIsShown) {
  m_clock.where.utc = false;
  EXPECT_EQ(Read("2026-11-21 09:41"), At(11, 21, 8, 41, 0));
  EXPECT_EQ(Read("2026-07-21 09:41"), At(7, 21, 7, 41, 0)) << "in summer";
}

TEST_F(GoToTime, ATimeOfDayIsOnTheDateThatTheFocusedRowShows) {
  EXPECT_EQ(Read("10:00"), At(11, 21, 10, 0, 0));
  EXPECT_EQ(Read("9:00:01"), At(11, 21, 9, 0, 1));
  m_clock.where.utc = false;
  m_clock.day = At(11, 21, 23, 30, 0);  // it is the 22nd there
  EXPECT_EQ(Read("00:45"), At(11, 21, 23, 45, 0));
}

TEST_F(GoToTime, ASignCountsFromTheRowWithTheFocus) {
  EXPECT_EQ(Read("+5s"), *m_clock.focused + 5 * kSecond);
  EXPECT_EQ(Read("- 1m"), *m_clock.focused - 60 * kSecond);
  EXPECT_EQ(Read("+1.5ms"), *m_clock.focused + 1'500'000);
  m_clock.focused.reset();
  EXPECT_EQ(Read("+5s"), -1);
  EXPECT_EQ(m_why, "+ and - count from the row with the focus.");
}

TEST_F(GoToTime, TheEndIsTheNewestTrace) {
  EXPECT_EQ(Read("end"), At(11, 21, 10, 0, 0));
  EXPECT_EQ(Read("END - 5m"), At(11, 21, 9, 55, 0));
  EXPECT_EQ(Read("end-10s"), At(11, 21, 9, 59, 50));
  m_clock.where.end.reset();
  EXPECT_EQ(Read("end - 5m"), -1);
  EXPECT_EQ(m_why, "There is no trace with a time.");
}

TEST_F(GoToTime, AnythingElseHasAReason) {
  for (const char* text : {"", " ", "tomorrow", "2026-13-01", "25:00", "9:4", "end of it", "12"}) {
    EXPECT_EQ(Read(text), -1) << text;
    EXPECT_EQ(m_why, "A time is 2026-11-21 09:41:07.123, 09:41:07, +5s, -1m or end - 5m.") << text;
  }
  EXPECT_EQ(Read("+5"), -1);
  EXPECT_EQ(m_why.find("A time span is a number and its unit"), 0U) << m_why;
  EXPECT_EQ(Read("+106751d"), -1) << "beyond what 64 bits hold";
  EXPECT_EQ(m_why, "This is too far away.");
  m_clock.day.reset();
  EXPECT_EQ(Read("10:00"), -1) << "of no day";
}

class GoToRow : public testing::Test {
 protected:
  // -1 and the reason in m_why.
  int Read(const char* text, int rows = 5000) {
    m_why.clear();
    const auto row = ReadGoToRow(text, rows, &m_why);
    EXPECT_EQ(row.has_value(), m_why.empty()) << text;
    return row.value_or(-1);
  }
  std::string m_why;
};

TEST_F(GoToRow, RowsCountFromOneAndFromTheEnd) {
  EXPECT_EQ(Read("1"), 0);
  EXPECT_EQ(Read(" 4,711 "), 4710);
  EXPECT_EQ(Read("5000"), 4999);
  EXPECT_EQ(Read("-1"), 4999);
  EXPECT_EQ(Read("-5000"), 0);
}

TEST_F(GoToRow, APercentageIsAPartOfAllRows) {
  EXPECT_EQ(Read("0%"), 0);
  EXPECT_EQ(Read("50%", 101), 50);
  EXPECT_EQ(Read("12.5 %", 801), 100);
  EXPECT_EQ(Read("100%"), 4999);
  EXPECT_EQ(Read("100%", 1), 0);
  EXPECT_EQ(Read("101%"), -1);
  EXPECT_EQ(m_why, "100% is the last row.");
}

TEST_F(GoToRow, OutsideOfTheRowsTheRangeIsTold) {
  for (const char* text : {"0", "5001", "-5001", "-0", "99999999999999999999999"}) {
    EXPECT_EQ(Read(text), -1) << text;
    EXPECT_EQ(m_why, "The rows are 1 to 5,000, from the end -1 to -5,000.") << text;
  }
  EXPECT_EQ(Read("2", 1), -1);
  EXPECT_EQ(m_why, "There is one row, 1.");
  EXPECT_EQ(Read("1", 0), -1);
  EXPECT_EQ(m_why, "There are no rows.");
}

TEST_F(GoToRow, AnythingElseHasAReason) {
  for (const char* text : {"", "x", "1x", "0x10", "--1", "+5", "%", ".5%", "5.%", "1e2", "-50%"}) {
    EXPECT_EQ(Read(text), -1) << text;
    EXPECT_EQ(m_why, "A row is a number such as 4711, 50%, or -1 for the last one.") << text;
  }
}

}  // namespace
