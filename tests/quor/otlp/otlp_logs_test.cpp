#include <gmock/gmock.h>

#include "base/text.h"
#include "quor/otlp/otlp_messages.h"
#include "records/record_layout.h"

using testing::ElementsAre;

namespace {

TakenRecords::Taken OneOf(const LogMessage& logs) {
  const TakenRecords taken = TakenOf(logs.message);
  EXPECT_EQ(taken.all.size(), 1u);
  EXPECT_FALSE(taken.anyIsNull);
  return taken.all.empty() ? TakenRecords::Taken{} : taken.all.back();
}

std::string LeveledText(std::uint32_t number, const std::string& word) {
  LogMessage logs;
  auto& log = logs.Add("x");
  log.set_severity_number(number);
  log.set_severity_text(word);
  const auto taken = OneOf(logs);
  return std::to_string(taken.attributes) + " " + taken.text;
}

}  // namespace

TEST(OtlpLogs, BecomeTracesWithEachFieldInItsPlace) {
  LogMessage logs;
  AddText(logs.resource, "host.name", "web1");
  AddText(logs.resource, "service.name", "orders");
  AddText(logs.resource, "service.namespace", "shop");
  AddValue(logs.resource, "process.pid").set_int_value(4711);
  logs.scope.set_name("db.pool");
  auto& log = logs.Add("connected");
  log.set_time_unix_nano(kMidnight + 3 * kSecondNs + 45'678'901);
  log.set_severity_number(13);
  log.set_event_name("db.connect");
  AddText(log, "thread.name", "main");
  AddText(log, "code.file.path", "/src/pool.cpp");
  AddValue(log, "code.line.number").set_int_value(42);
  AddText(log, "exception.stacktrace", "at main");
  AddText(log, "user", "alice");
  const auto taken = OneOf(logs);
  EXPECT_EQ(taken.source, (OtlpSource{"web1", "shop/orders", "4711"}));
  EXPECT_EQ(taken.when, "2026-11-24 00:00:03.045");
  EXPECT_EQ(taken.unixNs, kMidnight + 3 * kSecondNs + 45'678'901);
  EXPECT_EQ(taken.component, "db.pool");
  EXPECT_EQ(taken.category, "db.connect");
  EXPECT_EQ(taken.thread, "main");
  EXPECT_EQ(taken.file, "/src/pool.cpp");
  EXPECT_EQ(taken.line, 42u);
  EXPECT_EQ(taken.attributes, kAttributeWarn);
  EXPECT_EQ(taken.text, "connected user=alice");
  EXPECT_EQ(taken.stack, "at main");
}

TEST(OtlpLogs, ThatAreEmptyBecomeTracesWithAllThatIsOtherwise) {
  LogMessage logs;
  logs.Add();
  const auto taken = OneOf(logs);
  EXPECT_EQ(taken.source.machine, "10.0.0.7");
  EXPECT_EQ(taken.source.application, "unknown_service");
  EXPECT_EQ(taken.source.process.size(), 8u);
  EXPECT_EQ(taken.when, "2026-11-24 12:00:00.000");
  EXPECT_EQ(taken.component, "Otlp");
  EXPECT_EQ(taken.category, "Log");
  EXPECT_EQ(taken.thread, "0");
  EXPECT_EQ(taken.file, "");
  EXPECT_EQ(taken.line, 0u);
  EXPECT_EQ(taken.attributes, kAttributeInfo);
  EXPECT_EQ(taken.text, "");
  EXPECT_EQ(taken.stack, "");
}

TEST(OtlpLogs, OfAnEmptyMessageAreNone) {
  EXPECT_TRUE(TakenOf({}).all.empty());
  quor::otlp::ExportLogs logs;
  logs.add_resource_logs();
  EXPECT_TRUE(TakenOf(logs).all.empty());
  logs.mutable_resource_logs(0)->add_scope_logs();
  EXPECT_TRUE(TakenOf(logs).all.empty());
}

TEST(OtlpLogs, HaveTheTimeOfTheirObservationWhenTheyHaveNone) {
  LogMessage logs;
  logs.Add().set_observed_time_unix_nano(kMidnight + kSecondNs);
  EXPECT_EQ(OneOf(logs).when, "2026-11-24 00:00:01.000");
}

TEST(OtlpLogs, HaveTimesUpToTheLastThatSixtyFourBitsHold) {
  LogMessage logs;
  logs.Add().set_time_unix_nano(UINT64_MAX);
  EXPECT_EQ(OneOf(logs).when, "2554-07-21 23:34:33.709");
  logs.scopeLogs.mutable_log_records(0)->set_time_unix_nano(1);
  EXPECT_EQ(OneOf(logs).when, "1970-01-01 00:00:00.000");
}

TEST(OtlpLogs, HaveTheSeverityOfTheirNumber) {
  const int kInfo = kAttributeInfo;
  for (unsigned number = 1; number <= 24; ++number) {
    int expected = kAttributeError;
    if (number <= 16) expected = kAttributeWarn;
    if (number <= 12) expected = kInfo;
    if (number <= 8) expected = kInfo | kAttributeDeveloper;
    if (number <= 4) expected = kInfo | kAttributeVerbose;
    const std::string text = number <= 20 ? " x" : " FATAL x";
    EXPECT_EQ(LeveledText(number, ""), std::to_string(expected) + text) << number;
  }
}

TEST(OtlpLogs, WithoutANumberHaveTheSeverityOfTheirWordInAnyCase) {
  EXPECT_EQ(LeveledText(0, "error"), "4 x");
  EXPECT_EQ(LeveledText(0, "Warn"), "2 x");
  EXPECT_EQ(LeveledText(0, "WARNING"), "2 x");
  EXPECT_EQ(LeveledText(0, "INFO"), "1 x");
  EXPECT_EQ(LeveledText(0, "debug"), "9 x");
  EXPECT_EQ(LeveledText(0, "Trace"), "17 x");
  EXPECT_EQ(LeveledText(0, "fatal"), "4 fatal x");
  EXPECT_EQ(LeveledText(0, "NOTICE"), "1 NOTICE x");
  EXPECT_EQ(LeveledText(25, "error"), "4 x");
  EXPECT_EQ(LeveledText(4'000'000'000, ""), "1 x");
}

TEST(OtlpLogs, HaveTheirWordInTheTextWhenItIsNotThatOfTheNumber) {
  EXPECT_EQ(LeveledText(9, "INFO"), "1 x");
  EXPECT_EQ(LeveledText(10, "INFO2"), "1 x");
  EXPECT_EQ(LeveledText(10, "NOTICE"), "1 NOTICE x");
  EXPECT_EQ(LeveledText(17, "CRITICAL"), "4 CRITICAL x");
  EXPECT_EQ(LeveledText(21, "FATAL"), "4 FATAL x");
  EXPECT_EQ(LeveledText(24, "EMERGENCY"), "4 EMERGENCY x");
  EXPECT_EQ(LeveledText(17, "warn"), "4 warn x");
}

TEST(OtlpLogs, HaveBodiesThatAreNoTextAsJson) {
  LogMessage logs;
  auto& body = *logs.Add().mutable_body();
  body.set_int_value(-5);
  EXPECT_EQ(OneOf(logs).text, "-5");
  body.set_double_value(0.1);
  EXPECT_EQ(OneOf(logs).text, "0.1");
  body.set_bool_value(true);
  EXPECT_EQ(OneOf(logs).text, "true");
  body.set_bytes_value("\xFF\x01");
  EXPECT_EQ(OneOf(logs).text, "\"/wE=\"");
  auto& list = *body.mutable_array_value();
  list.add_values()->set_string_value("a\"\n");
  list.add_values();
  EXPECT_EQ(OneOf(logs).text, "[\"a\\\"\\n\",null]");
  auto& object = *body.mutable_kvlist_value();
  SetText(*object.add_values(), "k", "v");
  object.add_values()->mutable_value()->mutable_array_value();
  EXPECT_EQ(OneOf(logs).text, "{\"k\":\"v\",\"\":[]}");
}

TEST(OtlpLogs, HaveTheirOtherAttributesBehindTheTextInTheirOrder) {
  LogMessage logs;
  auto& log = logs.Add("sent");
  AddText(log, "z", "1");
  AddText(log, "a b", "two words");
  AddText(log, "empty", "");
  AddValue(log, "n").set_int_value(7);
  AddValue(log, "none");
  AddText(log, "z", "again");
  log.set_dropped_attributes_count(3);
  EXPECT_EQ(OneOf(logs).text,
            "sent z=1 \"a b\"=\"two words\" empty=\"\" n=7 none=null z=again (+3)");
}

TEST(OtlpLogs, EndWithTheFirstDigitsOfTraceAndSpan) {
  LogMessage logs;
  auto& log = logs.Add("sent");
  log.set_trace_id("\x71\x9E\xB6\x6A\x01\x02\x03\x04\x05\x06\x07\x08\x09\x0A\x0B\x0C");
  log.set_span_id("\x9A\xD9\x30\x66\x01\x02\x03\x04");
  EXPECT_EQ(OneOf(logs).text, "sent trace=719eb66a span=9ad93066");
  log.set_trace_id(std::string(16, '\0'));
  log.set_span_id("");
  EXPECT_EQ(OneOf(logs).text, "sent");
}

TEST(OtlpLogs, HaveFieldsByTheKeysOfEarlierVersionsToo) {
  LogMessage logs;
  auto& log = logs.Add("x");
  AddText(log, "code.lineno", "17");
  AddText(log, "code.filepath", "old.c");
  AddText(log, "code.stacktrace", "old");
  AddValue(log, "thread.id").set_int_value(99);
  const auto taken = OneOf(logs);
  EXPECT_EQ(taken.file, "old.c");
  EXPECT_EQ(taken.line, 17u);
  EXPECT_EQ(taken.stack, "old");
  EXPECT_EQ(taken.thread, "99");
  EXPECT_EQ(taken.text, "x");
}

TEST(OtlpLogs, PreferTheKeysOfTodayAndKeepTheOthersInTheText) {
  LogMessage logs;
  auto& log = logs.Add("x");
  AddText(log, "code.filepath", "old.c");
  AddText(log, "code.file.path", "new.c");
  AddValue(log, "thread.id").set_int_value(99);
  AddText(log, "thread.name", "main");
  AddText(log, "thread.name", "second");
  const auto taken = OneOf(logs);
  EXPECT_EQ(taken.file, "new.c");
  EXPECT_EQ(taken.thread, "main");
  EXPECT_EQ(taken.text, "x code.filepath=old.c thread.id=99 thread.name=second");
}

TEST(OtlpLogs, KeepValuesInTheTextThatTheirFieldCannotHave) {
  LogMessage logs;
  auto& log = logs.Add("x");
  AddValue(log, "code.line.number").set_int_value(-1);
  AddValue(log, "code.lineno").set_int_value(std::int64_t{1} << 32);
  AddText(log, "thread.name", "");
  const auto taken = OneOf(logs);
  EXPECT_EQ(taken.line, 0u);
  EXPECT_EQ(taken.thread, "0");
  EXPECT_EQ(taken.text, "x code.line.number=-1 code.lineno=4294967296 thread.name=\"\"");
}

TEST(OtlpLogs, AreCutBeforeACharacterAndCounted) {
  LogMessage logs;
  logs.Add(std::string(kLongestText - 1, 'x') + "\xC3\xA4");
  AddText(*logs.scopeLogs.mutable_log_records(0), "exception.stacktrace",
          std::string(kLongestText + 1, 's'));
  TakenRecords taken;
  OtlpMapper mapper(taken);
  mapper.Take(logs.message, ArrivalAt());
  EXPECT_EQ(taken.all[0].text, std::string(kLongestText - 1, 'x'));
  EXPECT_EQ(taken.all[0].stack.size(), kLongestText);
  EXPECT_EQ(mapper.Counts().cutTexts, 2u);
}

TEST(OtlpLogs, KeepMalformedTextsAndShowNuls) {
  LogMessage logs;
  logs.scope.set_name(std::string("a\0b", 3));
  logs.Add(std::string("x\xFF\0y", 4));
  TakenRecords taken;
  OtlpMapper mapper(taken);
  mapper.Take(logs.message, ArrivalAt());
  EXPECT_EQ(taken.all[0].text, "x\xFF\xE2\x90\x80y");
  EXPECT_EQ(taken.all[0].component,
            "a\xE2\x90\x80"
            "b");
  EXPECT_EQ(mapper.Counts().nulBytes, 2u);
}

TEST(OtlpLogs, CutNamesThatAreTooLong) {
  LogMessage logs;
  logs.scope.set_name(std::string(kLongestText + 5, 'n'));
  AddText(logs.resource, "service.name", std::string(kLongestText + 5, 's'));
  logs.Add("x");
  TakenRecords taken;
  OtlpMapper mapper(taken);
  mapper.Take(logs.message, ArrivalAt());
  EXPECT_EQ(taken.all[0].component.size(), kLongestText);
  EXPECT_EQ(taken.all[0].source.application.size(), kLongestText);
  EXPECT_EQ(mapper.Counts().cutNames, 2u);
}

TEST(OtlpLogs, OfAProcessWithTooManyNamesHaveTheFurtherOnesInTheirTexts) {
  TakenRecords taken;
  OtlpMapper mapper(taken);
  LogMessage logs;
  for (int i = 0; i < 1100; ++i) logs.Add("x").set_event_name("event " + std::to_string(i));
  mapper.Take(logs.message, ArrivalAt());
  EXPECT_EQ(taken.all[1000].category, "event 1000");
  EXPECT_EQ(taken.all[1000].text, "x");
  EXPECT_EQ(taken.all.back().category, "...");
  EXPECT_EQ(taken.all.back().text, "x category=\"event 1099\"");
  EXPECT_GT(mapper.Counts().namesInTexts, 70u);
  EXPECT_EQ(mapper.Counts().records, 1100u);
}
