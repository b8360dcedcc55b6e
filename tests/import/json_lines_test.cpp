#include "import/lines/json_lines.h"

#include <gtest/gtest.h>

#include "shown_import.h"

namespace {

class ImportJson : public testing::Test {
 protected:
  std::string Read(std::string_view line) { return ReadOf(m_lines, line); }

  ImportClock m_clock{{.zone = ImportZone(0), .format = {}}};
  ImportFields m_fields{{}, m_clock};
  JsonLines m_lines{m_fields, {{"svc", ImportField::Application}}};
};

constexpr const char* kDumped =
    R"({"i":4,"count":7,"date":[2026,11,21],"time":[9,41,7,123],"tic":99,"machine":"m",)"
    R"("application":"a","component":"c","category":"g","pid":"1","tid":"2","attributes":24,)"
    R"("file":"f.cpp","line":12,"text":"up","stack":"s"})";

TEST_F(ImportJson, ALineOfADumpHasEveryFieldOfItsTrace) {
  EXPECT_EQ(Read(kDumped),
            "2026-11-21 09:41:07.123 [Developer, Verbose] machine=m app=a component=c category=g "
            "pid=1 tid=2 file=f.cpp line=12 count=7 tic=99 'up' stack 's'");
}

TEST_F(ImportJson, BytesOfADumpThatAreNotUtf8AndMissingNamesComeBack) {
  EXPECT_EQ(Read(R"({"date":[1,2,3],"time":[4,5,6,7],"machine":null,"text":{"hex":"61ff"}})"),
            "0001-02-03 04:05:06.007 [Info] 'a\xFF'");
  EXPECT_EQ(Read(R"({"text":{"hex":"6"}})"), "no time [Info] 'text.hex=6'");
}

TEST_F(ImportJson, ADateThatNoCalendarHasComesBackAndOneThatNoRecordHoldsIsNotUnderstood) {
  EXPECT_EQ(Read(R"({"date":[0,0,0],"time":[127,127,127,2047],"text":"x"})"),
            "0000-00-00 127:127:127.2047 [Info] 'x'");
  for (const char* date : {"[2026,32,1]", "[2026,1,64]", "[-1,1,1]", "[1.5,1,1]", "[2026,1]"})
    EXPECT_EQ(Read(std::string(R"({"date":)") + date + R"(,"time":[1,2,3,4]})"), "not understood")
        << date;
}

TEST_F(ImportJson, TheUsualKeysOfOtherLibrariesAreKnown) {
  EXPECT_EQ(Read(R"({"level":30,"time":1795254067123,"pid":42,"hostname":"web","name":"db.pool",)"
                 R"("msg":"up"})"),
            "2026-11-21 09:41:07.123 [Info] machine=web component=db category=pool pid=42 'up'");
  EXPECT_EQ(Read(R"({"ts":1795254067.5,"level":"warn","logger":"a/b","caller":"x/y.go:12",)"
                 R"("msg":"m","stacktrace":"s"})"),
            "2026-11-21 09:41:07.500 [Warn] component=a category=b file=x/y.go line=12 'm' "
            "stack 's'");
  EXPECT_EQ(Read(R"({"@timestamp":"2026-11-21T09:41:07Z","log.level":"ERROR","message":"m",)"
                 R"("log":{"logger":"com.acme.Shop"},"process":{"pid":7}})"),
            "2026-11-21 09:41:07.000 [Error] component=com category=acme.Shop pid=7 'm'");
  EXPECT_EQ(Read(R"({"time":"2026-11-21T09:41:07Z","level":"DEBUG","msg":"m",)"
                 R"("source":{"file":"a.go","line":3}})"),
            "2026-11-21 09:41:07.000 [Info, Developer] file=a.go line=3 'm'");
  EXPECT_EQ(
      Read(R"({"asctime":"2026-11-21 09:41:07,123","levelno":30,"lineno":5,"filename":"a.py",)"
           R"("threadName":"T","message":"m"})"),
      "2026-11-21 09:41:07.123 [Warn] tid=T file=a.py line=5 'm'");
}

TEST_F(ImportJson, CapitalsOfKeysDoNotMatterAndFurtherKeysAreMapped) {
  EXPECT_EQ(Read(R"({"Time":"2026-11-21 09:41:07","LEVEL":"Info","Message":"m","SVC":"shop"})"),
            "2026-11-21 09:41:07.000 [Info] app=shop 'm'");
}

TEST_F(ImportJson, WhatHasNoFieldStandsBehindTheText) {
  EXPECT_EQ(
      Read(R"({"msg":"m","user":"bob","n":5,"f":1.50,"ok":true,"no":null,"a":[1,{"b":"x y"}],)"
           R"("q":"say \"hi\"\n"})"),
      "no time [Info] 'm user=bob n=5 f=1.50 ok=true no=null a.0=1 a.1.b=\"x y\" "
      "q=\"say \\\"hi\\\"\\n\"'");
  EXPECT_EQ(Read(R"({"user":"bob"})"), "no time [Info] 'user=bob'");
  EXPECT_EQ(Read("{}"), "no time [Info] ''");
}

TEST_F(ImportJson, TheFirstOfTwoKeysForAFieldCountsAndTheOtherIsKept) {
  EXPECT_EQ(Read(R"({"level":"warn","severity":"error","msg":"a","message":"b"})"),
            "no time [Warn] 'a severity=error message=b'");
}

TEST_F(ImportJson, NumbersThatOnlyADumpMeansAreKeptAsTextElsewhere) {
  EXPECT_EQ(Read(R"({"i":1,"count":5,"tic":3,"msg":"m"})"), "no time [Info] 'm i=1 count=5 tic=3'");
}

TEST_F(ImportJson, TheAccountOfADumpStandsBehindItsProcessAgain) {
  const std::string head = R"({"date":[1,2,3],"time":[4,5,6,7],)";
  EXPECT_EQ(Read(head + R"("pid":"4711","account":"alice","text":"x"})"),
            "0001-02-03 04:05:06.007 [Info] pid=4711 alice 'x'");
  EXPECT_EQ(Read(head + R"("account":"alice","pid":"4711","text":"x"})"),
            "0001-02-03 04:05:06.007 [Info] pid=4711 alice 'x'");
  EXPECT_EQ(Read(head + R"("pid":"4711","text":"x"})"),
            "0001-02-03 04:05:06.007 [Info] pid=4711 'x'");
  // Elsewhere an account is anything.
  EXPECT_EQ(Read(R"({"msg":"paid","pid":1,"account":"DE 44"})"),
            "no time [Info] pid=1 'paid account=\"DE 44\"'");
  EXPECT_EQ(Read(R"({"msg":"paid","account":44})"), "no time [Info] 'paid account=44'");
}

TEST_F(ImportJson, ALevelThatIsNotKnownIsInfoAndKeptAndCounted) {
  EXPECT_EQ(Read(R"({"level":"banana","msg":"m"})"), "no time [Info] 'm level=banana'");
  EXPECT_EQ(Read(R"({"line":"x","msg":"m"})"), "no time [Info] 'm line=x'");
  EXPECT_EQ(m_fields.StrangeLevels(), 1u);
  EXPECT_EQ(m_fields.FirstStrangeLevel(), "banana");
}

TEST_F(ImportJson, ALineThatIsNoObjectOrHasNoGoodTimeIsNotUnderstood) {
  for (const char* line : {"", "x", "[]", "5", "\"a\"", "null", "{", R"({"a":1)", R"({"a":1} x)",
                           R"({"a":})", R"({"time":"soon"})", R"({"time":[1,2,3,4]})",
                           R"({"a":nan})", R"({"a":"\x"})", R"({"a":"\ud8"})"})
    EXPECT_EQ(Read(line), "not understood") << line;
  EXPECT_TRUE(m_lines.Notes().empty());
}

TEST_F(ImportJson, AKeyWithoutAGoodTimeIsKeptWhereAnotherOneHasTheTime) {
  EXPECT_EQ(Read(R"({"time":"12 ms","ts":"2026-11-21T09:41:07Z","msg":"done"})"),
            "2026-11-21 09:41:07.000 [Info] 'done time=\"12 ms\"'");
}

TEST_F(ImportJson, ALineThatItsWriterGotNearlyRightIsReadAndCounted) {
  EXPECT_EQ(Read("{\"level\":\"error\",\"msg\":\"a\xFFz\"}"), "no time [Error] 'a\xEF\xBF\xBDz'");
  EXPECT_EQ(Read(R"({"level":"warn","msg":"a\udcffb\ud83d\ude00\ud83d"})"),
            "no time [Warn] 'a\xEF\xBF\xBD"
            "b\xF0\x9F\x98\x80\xEF\xBF\xBD'");
  EXPECT_EQ(Read("{\"msg\":\"a\tb\x1F\"}"), "no time [Info] 'a\tb\x1F'");
  EXPECT_EQ(Read(R"({"msg":"NaN","a":NaN,"b":[-Infinity,1e999,-1.5e3]})"),
            "no time [Info] 'NaN a=NaN b.0=-Infinity b.1=1e999 b.2=-1.5e3'");
  EXPECT_EQ(m_lines.Notes(),
            std::vector<std::string>{
                "4 lines are not quite JSON: what is malformed is shown as \xEF\xBF\xBD"});
}

TEST_F(ImportJson, ALevelOfALineThatIsReadOnceMoreIsCountedOnce) {
  EXPECT_EQ(Read(R"({"level":"banana","a":NaN})"), "no time [Info] 'level=banana a=NaN'");
  EXPECT_EQ(m_fields.StrangeLevels(), 1u);
}

TEST_F(ImportJson, AfterALineThatWasNotUnderstoodTheNextHasNothingOfIt) {
  EXPECT_EQ(Read(R"({"user":"bob","i":3,"date":[2026,11,21],"text":"old")"), "not understood");
  EXPECT_EQ(Read(R"({"n":1})"), "no time [Info] 'n=1'");
}

TEST_F(ImportJson, ADeepNestIsNotUnderstoodAndEndsAtOnce) {
  std::string deep;
  for (int level = 0; level < 1'000'000; ++level) deep += R"({"a":)";
  EXPECT_EQ(Read(deep), "not understood");
  std::string right = "1";
  for (std::size_t level = 0; level < kJsonDepthMax; ++level) right = R"({"a":)" + right + "}";
  EXPECT_NE(Read(right), "not understood");
  EXPECT_EQ(Read(R"({"a":)" + right + "}"), "not understood");
}

TEST_F(ImportJson, EveryBeginningOfADumpedLineIsNotUnderstood) {
  const std::string line = kDumped;
  for (std::size_t length = 0; length < line.size(); ++length)
    EXPECT_EQ(Read(line.substr(0, length)), "not understood") << length;
}

}  // namespace
