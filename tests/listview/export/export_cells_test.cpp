// The cells of an export, byte for byte.
#include "listview/export/export_cells.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/addresses_as_text.h"
#include "support/make_event.h"
#include "support/zone_guard.h"

namespace {

using testing::MatchesRegex;

NameMap Names() {
  NameMap names;
  names[1].name = "we\"b\\1";
  names[2].name = "C:\\src\\\"a\".c";
  names[3].name = "812";
  return names;
}

std::string CellOf(Column column, const TraceFields& fields, const TraceFields* above = nullptr) {
  const EventPtr event = MakeEvent(fields);
  const EventPtr previous = above ? MakeEvent(*above) : EventPtr();
  std::string out;
  WriteExportCell(out, column, *event, previous.get(), Names(), true);
  return out;
}

std::string Quoted(std::string_view text) {
  std::string out;
  WriteQuoted(out, text);
  return out;
}

std::vector<Column> AllColumns() {
  return ExportColumns(kDefaultColumnOrder, {}, true);
}

TEST(ExportQuoted, AQuoteAndABackslashGetABackslashBeforeThem) {
  EXPECT_EQ(Quoted("say \"a\\b\""), "\"say \\\"a\\\\b\\\"\"");
  EXPECT_EQ(Quoted(""), "\"\"");
  EXPECT_EQ(Quoted("\\"), "\"\\\\\"");
}

TEST(ExportQuoted, LineEndsCommasAndBytesThatAreNotUtf8GoOutAsTheyAre) {
  EXPECT_EQ(Quoted("a\nb\r\nc,\t\xFF"), "\"a\nb\r\nc,\t\xFF\"");
}

TEST(ExportCell, TheSeverityIsAQuotedWordOrNothing) {
  EXPECT_EQ(CellOf(Column::Sev, {.attributes = 1}), "\"Info\"");
  EXPECT_EQ(CellOf(Column::Sev, {.attributes = 2}), "\"Warn\"");
  EXPECT_EQ(CellOf(Column::Sev, {.attributes = 4}), "\"Error\"");
  EXPECT_EQ(CellOf(Column::Sev, {.attributes = 8 + 4}), "\"Error\"");
  for (const std::uint16_t attributes : {0, 3, 5, 6, 7, 8, 16})
    EXPECT_EQ(CellOf(Column::Sev, {.attributes = attributes}), "") << attributes;
}

TEST(ExportCell, TheCountIsABareNumberAndMinusOneWithoutOne) {
  EXPECT_EQ(CellOf(Column::Count, {.count = 17}), "17");
  EXPECT_EQ(CellOf(Column::Count, {.count = 0}), "0");
  EXPECT_EQ(CellOf(Column::Count, {.count = 0xFFFFFFFE}), "4294967294");
  EXPECT_EQ(CellOf(Column::Count, {.count = 0xFFFFFFFF}), "-1");
}

TEST(ExportCell, TheTicColumnsHoldBareAddressesAndNotTheirValues) {
  const TraceFields above{.tic = 1111111111111111111};
  const TraceFields trace{.tic = 2222222222222222222};
  EXPECT_THAT(CellOf(Column::TicCount, trace), MatchesRegex("0x[0-9a-f]+"));
  EXPECT_THAT(CellOf(Column::TicDiff, trace, &above), MatchesRegex("0x[0-9a-f]+"));
  EXPECT_EQ(CellOf(Column::TicCount, trace).find("2222222222222222222"), std::string::npos);
  EXPECT_EQ(CellOf(Column::TicDiff, trace, &above).find("1111111111111111111"), std::string::npos);
}

TEST(ExportCell, ADifferenceThatIsNotAvailableIsAnAddressToo) {
  const TraceFields otherProcess{.tic = 5, .pid = 9};
  EXPECT_THAT(CellOf(Column::TicDiff, {.tic = 6}), MatchesRegex("0x[0-9a-f]+"));
  EXPECT_THAT(CellOf(Column::TicDiff, {.tic = 6}, &otherProcess), MatchesRegex("0x[0-9a-f]+"));
}

TEST(ExportCell, TheAttributesAreAnAddressInQuotes) {
  EXPECT_THAT(CellOf(Column::Attributes, {.attributes = 9}), MatchesRegex("\"0x[0-9a-f]+\""));
  EXPECT_THAT(CellOf(Column::Attributes, {.attributes = 0}), MatchesRegex("\"0x[0-9a-f]+\""));
}

TEST(ExportCell, TheAddressesAreThoseOfTheDecimalTicsTheDifferenceAndTheLabel) {
  const AddressesAsText asText;
  const TraceFields above{.tic = 18446744073709551000u, .pid = 7};
  const TraceFields trace{
      .tic = 18446744073709551615u, .pid = 7, .attributes = kAttributeWarn | kAttributeVerbose};
  EXPECT_EQ(CellOf(Column::TicCount, trace), "18446744073709551615");
  EXPECT_EQ(CellOf(Column::TicCount, {.tic = 0}), "0");
  EXPECT_EQ(CellOf(Column::TicDiff, trace, &above), "615");
  EXPECT_EQ(CellOf(Column::TicDiff, {.tic = 5, .pid = 7}, &trace), "6");  // of 64 bits
  EXPECT_EQ(CellOf(Column::TicDiff, {.tic = 0, .pid = 7}, &trace), "1");  // also without tics
  EXPECT_EQ(CellOf(Column::Attributes, trace), "\"Warn, Verbose\"");
}

TEST(ExportCell, ADifferenceWithoutPreviousOrToAnotherProcessIsTheAddressOfQuotedWords) {
  const AddressesAsText asText;
  const TraceFields otherProcess{.tic = 5, .pid = 9};
  EXPECT_EQ(CellOf(Column::TicDiff, {.tic = 6}), "\"n/a\"");
  EXPECT_EQ(CellOf(Column::TicDiff, {.tic = 6}, &otherProcess), "\"n/a\"");
}

TEST(ExportCell, TheTimeIsQuoted) {
  EXPECT_EQ(CellOf(Column::Time, {}), "\"2026-11-21 09:41:07.123\"");
}

TEST(ExportCell, TheTimeIsLocalUnlessUtcIsWanted) {
  const ZoneGuard zone("EST5");
  const EventPtr event = MakeEvent({});
  std::string out;
  WriteExportCell(out, Column::Time, *event, nullptr, {}, false);
  EXPECT_EQ(out, "\"2026-11-21 04:41:07.123\"");
}

TEST(ExportCell, NamesAreQuotedAndNotEscaped) {
  constexpr char kAsItStands[] = "\"we\"b\\1\"";
  EXPECT_EQ(CellOf(Column::Machine, {.machine = 1}), kAsItStands);
  EXPECT_EQ(CellOf(Column::Application, {.app = 1}), kAsItStands);
  EXPECT_EQ(CellOf(Column::Component, {.component = 1}), kAsItStands);
  EXPECT_EQ(CellOf(Column::Category, {.category = 1}), kAsItStands);
  EXPECT_EQ(CellOf(Column::Pid, {.pid = 1}), kAsItStands);
  EXPECT_EQ(CellOf(Column::Tid, {.tid = 1}), kAsItStands);
  EXPECT_EQ(CellOf(Column::Tid, {.tid = 99}), "\"\"");
}

TEST(ExportCell, TextAndStackAreEscaped) {
  EXPECT_EQ(CellOf(Column::Trace, {.text = "a \"b\"\nc\\d"}), "\"a \\\"b\\\"\nc\\\\d\"");
  EXPECT_EQ(CellOf(Column::Stack, {.stack = "f\n\"g\""}), "\"f\n\\\"g\\\"\"");
}

TEST(ExportCell, TheSourceIsItsEscapedNameWithTheLine) {
  EXPECT_EQ(CellOf(Column::Source, {.file = 2, .line = 4294967295}),
            "\"C:\\\\src\\\\\\\"a\\\".c:4294967295\"");
}

TEST(ExportCell, WithoutASourceFileThereIsAColonAndAZero) {
  EXPECT_EQ(CellOf(Column::Source, {}), "\":0\"");
}

TEST(ExportLine, TheHeaderHasTheQuotedNamesInScreenOrder) {
  std::string out;
  WriteExportHeader(out, AllColumns());
  EXPECT_EQ(out,
            "\"Sev\",\"Count\",\"Tic Count\",\"Tic Diff\",\"Time\",\"Machine\",\"Application\","
            "\"Component\",\"Category\",\"Attributes\",\"PID\",\"TID\",\"Stack\",\"Trace\","
            "\"Source\"");
}

TEST(ExportLine, CellsArePartedByOneCommaAlsoAfterAnEmptyOne) {
  const EventPtr event = MakeEvent({.text = "up", .count = 3, .attributes = 8});
  std::string out;
  WriteExportLine(out, {Column::Sev, Column::Count, Column::Trace}, *event, nullptr, {}, true);
  EXPECT_EQ(out, ",3,\"up\"");
}

TEST(ExportLine, WithoutColumnsALineIsEmpty) {
  std::string out;
  WriteExportHeader(out, {});
  WriteExportLine(out, {}, *MakeEvent({}), nullptr, {}, true);
  EXPECT_EQ(out, "");
}

TEST(ExportColumns, HiddenOnesAreLeftOut) {
  EXPECT_EQ(ExportColumns(kDefaultColumnOrder, kDefaultActiveColumns, false),
            (std::vector{Column::Sev, Column::Application, Column::Component, Column::Category,
                         Column::Trace}));
}

TEST(ExportColumns, WithHiddenOnesAllFifteenStandInScreenOrder) {
  ColumnOrder order = kDefaultColumnOrder;
  std::swap(order[0], order[14]);
  const std::vector<Column> columns = ExportColumns(order, kDefaultActiveColumns, true);
  ASSERT_EQ(columns.size(), 15u);
  EXPECT_EQ(columns.front(), Column::Source);
  EXPECT_EQ(columns.back(), Column::Sev);
}

}  // namespace
