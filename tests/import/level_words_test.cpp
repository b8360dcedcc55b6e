#include "import/fields/level_words.h"

#include <gtest/gtest.h>

#include "records/trace_event.h"

namespace {

std::string Level(std::string_view word, LevelNumbers numbers = LevelNumbers::Any) {
  const auto attributes = AttributesOfLevel(word, numbers);
  return attributes ? AttributesToLabel(*attributes) : "none";
}

TEST(LevelWords, WordsAreReadInAnyCase) {
  for (const char* word : {"error", "ERROR", "Err", "E", "fatal", "CRITICAL", "crit", "alert",
                           "emerg", "panic", "SEVERE", "F"})
    EXPECT_EQ(Level(word), "Error") << word;
  for (const char* word : {"warn", "WARNING", "W"}) EXPECT_EQ(Level(word), "Warn") << word;
  for (const char* word : {"info", "INFO", "I", "notice", "Information"})
    EXPECT_EQ(Level(word), "Info") << word;
  for (const char* word : {"debug", "DEBUG", "D", "fine"})
    EXPECT_EQ(Level(word), "Info, Developer") << word;
  for (const char* word : {"trace", "TRACE", "verbose", "FINEST"})
    EXPECT_EQ(Level(word), "Info, Developer, Verbose") << word;
}

TEST(LevelWords, TheWordsOfAnExportAreReadTogether) {
  EXPECT_EQ(Level("Warn, Developer"), "Warn, Developer");
  EXPECT_EQ(Level("Error+Verbose"), "Error, Verbose");
  EXPECT_EQ(Level(" info "), "Info");
}

TEST(LevelWords, NumbersBelow8AreOfSyslogAndFrom10OnOfPino) {
  const char* const kSyslog[] = {"Error", "Error", "Error", "Error",
                                 "Warn",  "Info",  "Info",  "Info, Developer"};
  for (int number = 0; number < 8; ++number)
    EXPECT_EQ(Level(std::to_string(number)), kSyslog[number]) << number;
  EXPECT_EQ(Level("10"), "Info, Developer, Verbose");
  EXPECT_EQ(Level("20"), "Info, Developer");
  EXPECT_EQ(Level("30"), "Info");
  EXPECT_EQ(Level("40"), "Warn");
  EXPECT_EQ(Level("50"), "Error");
  EXPECT_EQ(Level("60"), "Error");
  EXPECT_EQ(Level("35"), "Info");
  EXPECT_EQ(Level("8"), "none");
}

TEST(LevelWords, TheNumbersOfOtherLibrariesAreReadWhenAsked) {
  EXPECT_EQ(Level("10", LevelNumbers::Python), "Info, Developer");
  EXPECT_EQ(Level("20", LevelNumbers::Python), "Info");
  EXPECT_EQ(Level("30", LevelNumbers::Python), "Warn");
  EXPECT_EQ(Level("40", LevelNumbers::Python), "Error");
  EXPECT_EQ(Level("4", LevelNumbers::Otel), "Info, Developer, Verbose");
  EXPECT_EQ(Level("5", LevelNumbers::Otel), "Info, Developer");
  EXPECT_EQ(Level("9", LevelNumbers::Otel), "Info");
  EXPECT_EQ(Level("13", LevelNumbers::Otel), "Warn");
  EXPECT_EQ(Level("24", LevelNumbers::Otel), "Error");
  EXPECT_EQ(Level("25", LevelNumbers::Otel), "none");
  EXPECT_EQ(Level("10", LevelNumbers::Syslog), "none");
}

TEST(LevelWords, AnythingElseIsNone) {
  for (const char* word : {"", "banana", "info,", "info,banana", "-1", "1e9", "nan", "3x"})
    EXPECT_EQ(Level(word), "none") << word;
}

}  // namespace
