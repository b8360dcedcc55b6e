#include "config/tcf/tcf_write.h"

#include <gmock/gmock.h>

#include <fstream>
#include <sstream>

#include "config/tcf/tcf_lines.h"
#include "support/fake_machine.h"
#include "support/file_limit.h"
#include "support/temp_dir.h"

namespace {

class WriteTcfTest : public testing::Test {
 protected:
  FakeMachine::App& Add(const std::string& name, const std::vector<std::string>& traces = {}) {
    FakeMachine::App& app = m_machine.Run(name, traces);
    m_names.push_back(name);
    return app;
  }
  std::list<QuorPtr<trace_App_i>> Apps() {
    std::list<QuorPtr<trace_App_i>> apps;
    for (const std::string& name : m_names) apps.emplace_back(m_machine.Open(name, nullptr));
    return apps;
  }
  std::string Written(TcfWritten wanted = TcfWritten::Whole) {
    std::ostringstream to;
    EXPECT_EQ(WriteTcf(to, Apps()), wanted);
    return to.str();
  }
  FakeMachine m_machine;
  std::vector<std::string> m_names;
};

TEST_F(WriteTcfTest, NoApplicationIsTheHeaderAlone) {
  EXPECT_EQ(Written(), "TCF Version 3.2\n");
}

TEST_F(WriteTcfTest, ApplicationsStandInTheirOrderWithSinkAndTracesThatAreOn) {
  FakeMachine::App& orders = Add("orders", {"Net/Connect", "Net/Close", "Db/Query"});
  orders.traces[0].settings = 15;
  orders.traces[2].settings = 799;
  orders.sinkType = trc_SinkFile;
  orders.sinkName = "c:\\logs\\orders.trc";
  orders.sinkOptions = "flush=1;maxfiles=10;maxsize=5;";
  Add("billing", {"Net/Connect"});
  EXPECT_EQ(Written(),
            "TCF Version 3.2\n"
            "APP: \"orders\"\n"
            "SINK: File \"c:\\\\logs\\\\orders.trc\" \"flush=1;maxfiles=10;maxsize=5;\"\n"
            "TRACE: \"Net\" \"Connect\" Info Warn Error Developer\n"
            "TRACE: \"Db\" \"Query\" Info Warn Error Developer Verbose Location Stack\n"
            "APP: \"billing\"\n"
            "SINK: Socket \"localhost\" \"\"\n");
}

TEST_F(WriteTcfTest, AQuoteIsNotEscapedABackslashIsDoubledAndBytesGoOutAsTheyAre) {
  EXPECT_EQ(QuoteTcfField("a\"b\\c\xFF"), "\"a\"b\\\\c\xFF\"");
  EXPECT_EQ(QuoteTcfField(""), "\"\"");
}

TEST_F(WriteTcfTest, BitsWithoutAWordAreLost) {
  Add("a", {"N/x", "N/y"}).traces[0].settings = 0xFCE0 | TRC_SET_WARN;
  m_machine.m_apps["a"].traces[1].settings = 0x20;
  EXPECT_THAT(Written(), testing::EndsWith("TRACE: \"N\" \"x\" Warn\nTRACE: \"N\" \"y\"\n"));
}

std::string LocalOptions(const std::string& options) {
  return TcfSinkOptions(trc_SinkSocket, "localhost", options);
}

TEST(TcfSinkOptions, TheNodeEntryOfALocalServerGoes) {
  EXPECT_EQ(LocalOptions("node=web;"), "");
  EXPECT_EQ(LocalOptions("node=web;b=2;"), "b=2;");
  EXPECT_EQ(LocalOptions("node=;b=2;"), "b=2;");
}

// The count that is erased is the semicolon's index.
TEST(TcfSinkOptions, WithSomethingAheadOfTheNodeEntryMoreThanTheEntryGoes) {
  EXPECT_EQ(LocalOptions("a=1;node=x;b=2;"), "a=1;");
  EXPECT_EQ(LocalOptions("a=1;node=x;b=2;c=3;d=4;"), "a=1;c=3;d=4;");
}

TEST(TcfSinkOptions, WithoutAWholeNodeEntryNothingGoes) {
  for (const char* const options : {"", "a=1;", "node=web", "a=1;node=web", "node"})
    EXPECT_EQ(LocalOptions(options), options);
}

TEST(TcfSinkOptions, OtherSinksKeepTheirNodeEntry) {
  for (const char* const name : {"Localhost", "LOCALHOST", "localhost ", "web", ""})
    EXPECT_EQ(TcfSinkOptions(trc_SinkSocket, name, "node=web;"), "node=web;");
  EXPECT_EQ(TcfSinkOptions(trc_SinkFile, "localhost", "node=web;"), "node=web;");
}

TEST_F(WriteTcfTest, ASinkOfAnotherTypeEndsTheFileBehindItsKeyword) {
  Add("a");
  Add("b").sinkType = static_cast<trc_SinkTypes_e>(9);
  Add("c");
  EXPECT_EQ(Written(TcfWritten::UnsupportedSink),
            "TCF Version 3.2\nAPP: \"a\"\nSINK: Socket \"localhost\" \"\"\nAPP: \"b\"\nSINK: ");
}

TEST_F(WriteTcfTest, AHeaderThatCannotBeWrittenIsReportedApart) {
  Add("a");
  std::ofstream full("/dev/full");
  EXPECT_EQ(WriteTcf(full, Apps()), TcfWritten::NoHeader);
}

TEST_F(WriteTcfTest, AFullDiskAtAnyByteIsReported) {
  Add("a", {"N/x", "N/y"}).traces[1].settings = 7;
  const std::string whole = Written();
  const TempDir folder;
  for (std::size_t bytes = 0; bytes <= whole.size(); ++bytes) {
    TcfWritten written;
    {
      const FileLimit limit(bytes);
      std::ofstream to(folder.File("a.tcf"), std::ios::trunc);
      written = WriteTcf(to, Apps());
    }
    EXPECT_EQ(written, bytes < 16             ? TcfWritten::NoHeader
                       : bytes < whole.size() ? TcfWritten::Unwritable
                                              : TcfWritten::Whole)
        << bytes;
    EXPECT_EQ(ReadAll(folder.File("a.tcf")), whole.substr(0, bytes)) << "as far as it came";
  }
}

TEST_F(WriteTcfTest, NamesWithQuotesAndBackslashesReadBackAsTheyWere) {
  for (const std::string& name : {std::string("a\"b"), std::string("\""), std::string("\\"),
                                  std::string("\\\""), std::string("\"\\\\\" x"), std::string(),
                                  std::string(" a "), std::string("\xC3\xA4\xFF\0z", 5)}) {
    unsigned char type = 0;
    unsigned short settings = 0;
    std::string first, second;
    int kind = 0;
    std::istringstream in(TcfAppLine(name) + "\n" + TcfSinkLine(trc_SinkFile, name, name) + "\n" +
                          TcfTraceLine(name, name, 7) + "\n");
    ASSERT_TRUE(_trc_GetCfgLineType(in, &kind) && _trc_GetCfgLineAppName(in, &first));
    EXPECT_EQ(first, name);
    ASSERT_TRUE(_trc_GetCfgLineType(in, &kind) && _trc_GetCfgLineSink(in, &type, &first, &second));
    EXPECT_EQ(first + "|" + second, name + "|" + name);
    ASSERT_TRUE(_trc_GetCfgLineType(in, &kind) &&
                _trc_GetCfgLineTrace(in, &first, &second, &settings));
    EXPECT_EQ(first + "|" + second, name + "|" + name);
  }
}

}  // namespace
