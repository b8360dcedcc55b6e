#include "config/tcf/tcf_read.h"

#include <gmock/gmock.h>

#include <ctime>
#include <fstream>
#include <map>
#include <sstream>

#include "config/tcf/tcf_lines.h"
#include "support/sanitizer_slowdown.h"
#include "support/temp_dir.h"

namespace {

class Taken final : public TcfHandler {
 public:
  bool OnApp(const std::string& name) override { return Line("app " + name); }
  bool OnSink(unsigned char type, const std::string& name, const std::string& options) override {
    return Line("sink " + std::to_string(type) + " " + name + " " + options);
  }
  bool OnTrace(const std::string& component, const std::string& category,
               unsigned short settings) override {
    return Line("trace " + component + "/" + category + " " + std::to_string(settings));
  }
  bool Line(const std::string& line) {
    m_lines += line + "\n";
    ++m_count;
    return line != m_stopAt;
  }
  std::string m_lines, m_stopAt = "none";
  int m_count = 0;
};

std::string Read(std::istream& in, const std::string& stopAt = "none") {
  Taken taken;
  taken.m_stopAt = stopAt;
  TcfFault fault;
  switch (ReadTcf(in, taken, &fault)) {
    case TcfEnd::Whole:
      return taken.m_lines + "whole";
    case TcfEnd::Stopped:
      return taken.m_lines + "stopped";
    default:
      return taken.m_lines + "bad " + std::to_string(fault.line) + " [" + fault.text + "] " +
             fault.why;
  }
}
std::string Read(const std::string& text, const std::string& stopAt = "none") {
  std::istringstream in(text);
  return Read(in, stopAt);
}

TEST(ReadTcf, TellsTheLinesInTheirOrder) {
  EXPECT_EQ(Read("TCF Version 3.2\n"
                 "APP: \"a\"\n"
                 "SINK: Socket \"web\" \"\"\n"
                 "\n"
                 "TRACE: \"Net\" \"Close\" Warn\n"
                 "APP: \"b\""),
            "app a\nsink 1 web \ntrace Net/Close 2\napp b\nwhole");
}

TEST(ReadTcf, AFileThatEndsAfterTheHeaderIsWhole) {
  EXPECT_EQ(Read("TCF Version 3.2\n"), "whole");
  EXPECT_EQ(Read("TCF Version 3.2"), "whole");
  EXPECT_EQ(Read("\xEF\xBB\xBFTCF Version 3.2\r\n\r\n"), "whole");
}

TEST(ReadTcf, AnotherHeaderIsBad) {
  const std::string why = "] the first line is not \"TCF Version 3.2\"";
  EXPECT_EQ(Read("TCF Version 3.1\nAPP: \"a\"\n"), "bad 1 [TCF Version 3.1" + why);
  EXPECT_EQ(Read("APP: \"a\"\n"), "bad 1 [APP: \"a\"" + why);
  EXPECT_EQ(Read("\n"), "bad 1 [" + why);
  EXPECT_EQ(Read(""), "bad 1 [] the file is empty");
}

TEST(ReadTcf, TheHandlerIsToldOfAGoodHeaderInFrontOfAllLines) {
  struct Begun final : TcfHandler {
    void OnHeader() override { words += "header "; }
    bool OnApp(const std::string& name) override {
      words += name;
      return true;
    }
    bool OnSink(unsigned char, const std::string&, const std::string&) override { return true; }
    bool OnTrace(const std::string&, const std::string&, unsigned short) override { return true; }
    std::string words;
  };
  for (const auto& [file, words] :
       std::map<std::string, std::string>{{"TCF Version 3.2\nAPP: \"a\"\n", "header a"},
                                          {"TCF Version 3.2", "header "},
                                          {"TCF Version 3.2\nSINK: File \"s\" \"\"\n", "header "},
                                          {"TCF Version 3.1\nAPP: \"a\"\n", ""}}) {
    Begun begun;
    std::istringstream in(file);
    ReadTcf(in, begun);
    EXPECT_EQ(begun.words, words) << file;
  }
}

TEST(ReadTcf, ABadLineIsReportedByNumberTextAndReason) {
  EXPECT_EQ(Read("TCF Version 3.2\n\nAPP: \"a\"\n\n\nTRACE: \"b\" \"c\" Nonsense\r\nAPP: \"d\"\n"),
            "app a\nbad 6 [TRACE: \"b\" \"c\" Nonsense] \"Nonsense\" is no setting");
  EXPECT_EQ(Read("TCF Version 3.2\nAPP: \"a\"\nSNIK: x\n"),
            "app a\nbad 3 [SNIK: x] the line begins with none of APP:, SINK: and TRACE:");
}

TEST(ReadTcf, ABadLastLineWithoutALineEndIsReportedToo) {
  EXPECT_EQ(Read("TCF Version 3.2\nAPP: \"a\"\nTRACE: \"b\""),
            "app a\nbad 3 [TRACE: \"b\"] TRACE: takes a component and a category in quotes");
  EXPECT_EQ(Read("TCF Version 3.2\nAPP: \"a\"\nTRA"),
            "app a\nbad 3 [TRA] the line begins with none of APP:, SINK: and TRACE:");
}

TEST(ReadTcf, ASinkOrATraceInFrontOfTheFirstApplicationIsBad) {
  EXPECT_EQ(Read("TCF Version 3.2\nSINK: File \"a\" \"\"\n"),
            "bad 2 [SINK: File \"a\" \"\"] no APP: line stands in front of it");
  EXPECT_EQ(Read("TCF Version 3.2\nTRACE: \"a\" \"b\" Info\n"),
            "bad 2 [TRACE: \"a\" \"b\" Info] no APP: line stands in front of it");
}

TEST(ReadTcf, TheHandlerMayStopIt) {
  const std::string file = "TCF Version 3.2\nAPP: \"a\"\nSINK: File \"s\" \"\"\nAPP: \"b\"\n";
  EXPECT_EQ(Read(file, "app a"), "app a\nstopped");
  EXPECT_EQ(Read(file, "sink 0 s "), "app a\nsink 0 s \nstopped");
}

TEST(ReadTcf, AFileThatCannotBeReadIsBad) {
  std::ifstream folder("/tmp");
  EXPECT_EQ(Read(folder), "bad 1 [] the file cannot be read");
}

TEST(ReadTcf, AnEndlessLineEnds) {
  std::ifstream zeros("/dev/zero");
  const std::string reported = Read(zeros);
  EXPECT_TRUE(reported.ends_with("the line is too long")) << reported.size();
  EXPECT_LT(reported.size(), 2 * kLongestTcfLineBytes);
}

TEST(ReadTcf, AHundredThousandLinesTakeLessThanASecond) {
  std::string text = "TCF Version 3.2\n";
  for (int app = 0; app < 100; ++app) {
    text +=
        "APP: \"application " + std::to_string(app) + "\"\nSINK: File \"/tmp/a\" \"flush=1;\"\n";
    for (int trace = 0; trace < 998; ++trace)
      text += "TRACE: \"Component " + std::to_string(trace) + "\" \"Cat\" Info Warn Developer\n";
  }
  const TempDir folder;
  std::ifstream in(folder.File("many.tcf", text));
  Taken taken;
  // The processor's time, so that a busy machine does not count.
  const std::clock_t began = std::clock();
  EXPECT_EQ(ReadTcf(in, taken), TcfEnd::Whole);
  EXPECT_LT(std::clock() - began, kSanitizerSlowdown * CLOCKS_PER_SEC);
  EXPECT_EQ(taken.m_count, 100'000);
}

}  // namespace
