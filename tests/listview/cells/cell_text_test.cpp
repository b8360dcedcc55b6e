#include "listview/cells/cell_text.h"

#include <gtest/gtest.h>

#include "support/make_event.h"
#include "support/zone_guard.h"

namespace {

const NameMap kNames = {{1, {"node-7", 0}}, {2, {"shop", 0}}, {3, {"db", 0}},
                        {4, {"sql", 0}},    {5, {"4711", 0}}, {6, {"worker", 0}},
                        {7, {"a.cpp", 0}},  {8, {"4711", 0}}};

std::string Cell(Column column, const TraceFields& fields, const TraceEvent_i* previous = nullptr) {
  return CellText(column, *MakeEvent(fields), previous, kNames, true);
}

TEST(CellText, TheSeverityColumnHasNoText) {
  EXPECT_EQ(Cell(Column::Sev, {.attributes = 4}), "");
}

TEST(CellText, CountIsAnUnsignedNumber) {
  EXPECT_EQ(Cell(Column::Count, {.count = 0}), "0");
  EXPECT_EQ(Cell(Column::Count, {.count = 4000000000}), "4000000000");
}

TEST(CellText, ATraceWithoutANumberShowsAnEmptyCount) {
  EXPECT_EQ(Cell(Column::Count, {.count = 0xFFFFFFFF}), "");
  EXPECT_EQ(Cell(Column::Count, {.count = 0xFFFFFFFE}), "4294967294");
}

TEST(CellText, TicCountIsAnUnsignedNumberOfSixtyFourBits) {
  EXPECT_EQ(Cell(Column::TicCount, {.tic = 1}), "1");
  EXPECT_EQ(Cell(Column::TicCount, {.tic = 0xFF00000000000001}), "18374686479671623681");
}

TEST(CellText, ATicCountOfZeroIsNotAvailable) {
  EXPECT_EQ(Cell(Column::TicCount, {.tic = 0}), "n/a");
}

TEST(CellText, TicDiffIsTheDifferenceToTheRowAbove) {
  const EventPtr above = MakeEvent({.tic = 100, .pid = 5});
  EXPECT_EQ(Cell(Column::TicDiff, {.tic = 175, .pid = 5}, above.get()), "75");
  EXPECT_EQ(Cell(Column::TicDiff, {.tic = 100, .pid = 5}, above.get()), "0");
}

TEST(CellText, TicDiffOfTheFirstRowIsNotAvailable) {
  EXPECT_EQ(Cell(Column::TicDiff, {.tic = 175, .pid = 5}), "n/a");
}

TEST(CellText, TicDiffWithoutATicCountIsNotAvailable) {
  const EventPtr above = MakeEvent({.tic = 100, .pid = 5});
  EXPECT_EQ(Cell(Column::TicDiff, {.tic = 0, .pid = 5}, above.get()), "n/a");
}

TEST(CellText, TicDiffToAnotherProcessIsNotAvailableEvenIfTheTextsReadAlike) {
  const EventPtr above = MakeEvent({.tic = 100, .pid = 5});
  ASSERT_EQ(kNames.at(5).name, kNames.at(8).name);
  EXPECT_EQ(Cell(Column::TicDiff, {.tic = 175, .pid = 8}, above.get()), "n/a");
}

TEST(CellText, ARowAboveWithoutATicCountStillYieldsADifference) {
  const EventPtr above = MakeEvent({.tic = 0, .pid = 5});
  EXPECT_EQ(Cell(Column::TicDiff, {.tic = 175, .pid = 5}, above.get()), "175");
}

TEST(CellText, ARowAboveWithALaterTicCountYieldsAHugeDifference) {
  const EventPtr above = MakeEvent({.tic = 176, .pid = 5});
  EXPECT_EQ(Cell(Column::TicDiff, {.tic = 175, .pid = 5}, above.get()), "18446744073709551615");
}

TEST(CellText, TimeIsThatOfTheTraceInUtcOrLocal) {
  const ZoneGuard zone("EST5");
  const EventPtr event = MakeEvent({});
  EXPECT_EQ(CellText(Column::Time, *event, nullptr, kNames, true), "2026-11-21 09:41:07.123");
  EXPECT_EQ(CellText(Column::Time, *event, nullptr, kNames, false), "2026-11-21 04:41:07.123");
}

TEST(CellText, NamesComeFromTheDocumentsMap) {
  const TraceFields fields{
      .machine = 1, .app = 2, .component = 3, .category = 4, .pid = 5, .tid = 6};
  EXPECT_EQ(Cell(Column::Machine, fields), "node-7");
  EXPECT_EQ(Cell(Column::Application, fields), "shop");
  EXPECT_EQ(Cell(Column::Component, fields), "db");
  EXPECT_EQ(Cell(Column::Category, fields), "sql");
  EXPECT_EQ(Cell(Column::Pid, fields), "4711");
  EXPECT_EQ(Cell(Column::Tid, fields), "worker");
}

TEST(CellText, TheAccountIsTheSecondWordOfAProcess) {
  const NameMap names = {{1, {"812 alice"}}, {2, {"812"}}};
  const auto text = [&names](Column column, NameId pid) {
    return CellText(column, *MakeEvent({.pid = pid}), nullptr, names, true);
  };
  EXPECT_EQ(text(Column::Account, 1), "alice");
  EXPECT_EQ(text(Column::Pid, 1), "812 alice");
  EXPECT_EQ(text(Column::Account, 2), "");
  EXPECT_EQ(text(Column::Account, 3), "") << "a name that the map lacks";
}

TEST(CellText, ANameThatTheMapLacksIsEmpty) {
  for (const Column column : {Column::Machine, Column::Application, Column::Component,
                              Column::Category, Column::Pid, Column::Tid})
    EXPECT_EQ(
        Cell(column,
             {.machine = 99, .app = 99, .component = 99, .category = 99, .pid = 99, .tid = 99}),
        "");
}

TEST(CellText, AttributesAreTheWordsOfTheKnownBits) {
  EXPECT_EQ(Cell(Column::Attributes, {.attributes = 1 | 8 | 16}), "Info, Developer, Verbose");
  EXPECT_EQ(Cell(Column::Attributes, {.attributes = 0x300}), "");
}

TEST(CellText, TraceAndStackAreTheTextsOfTheRecord) {
  EXPECT_EQ(Cell(Column::Trace, {.text = "Gr\xC3\xBC\xC3\x9F"}), "Gr\xC3\xBC\xC3\x9F");
  EXPECT_EQ(Cell(Column::Stack, {.stack = "main\nrun"}), "main\nrun");
}

TEST(CellText, SourceIsFileColonLine) {
  EXPECT_EQ(Cell(Column::Source, {.file = 7, .line = 4000000000}), "a.cpp:4000000000");
}

TEST(CellText, ATraceWithoutASourceFileShowsColonZero) {
  EXPECT_EQ(Cell(Column::Source, {}), ":0");
  EXPECT_EQ(Cell(Column::Source, {.file = 99, .line = 3}), ":3");
}

TEST(CellText, ACellIsNotCutHere) {
  const std::string text(5000, 'x');
  EXPECT_EQ(Cell(Column::Trace, {.text = text}), text);
}

TEST(CellText, AColumnThatDoesNotExistIsEmpty) {
  EXPECT_EQ(Cell(static_cast<Column>(15), {.text = "x"}), "");
  EXPECT_EQ(Cell(static_cast<Column>(-1), {.text = "x"}), "");
}

int Icon(std::uint16_t attributes) {
  return SeverityIcon(*MakeEvent({.attributes = attributes}));
}

TEST(SeverityIcon, InfoWarnAndErrorHaveTheirsWhateverTheOtherBits) {
  EXPECT_EQ(Icon(1), 0);
  EXPECT_EQ(Icon(2), 1);
  EXPECT_EQ(Icon(4), 2);
  EXPECT_EQ(Icon(1 | 8), 0);
  EXPECT_EQ(Icon(4 | 16 | 0x8000), 2);
}

TEST(SeverityIcon, AnUnknownSeverityHasNone) {
  for (const std::uint16_t attributes : {0, 3, 5, 6, 7, 8, 24}) EXPECT_EQ(Icon(attributes), -1);
}

}  // namespace
