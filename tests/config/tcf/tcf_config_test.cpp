#include "config/tcf/tcf_config.h"

#include <gmock/gmock.h>

#include <ctime>
#include <sstream>

#include "config/tcf/tcf_apply.h"
#include "config/tcf/tcf_lines.h"
#include "config/tcf/tcf_write.h"
#include "support/fake_machine.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

// The value of these lines behind the header; bad ones fail the test.
TcfConfig ConfigOfLines(const std::string& lines) {
  std::istringstream in(std::string(kTcfHeader) + "\n" + lines);
  TcfCollector collector;
  EXPECT_EQ(ReadTcf(in, collector), TcfEnd::Whole) << lines;
  return collector.Config();
}
std::vector<std::string> Differing(const std::string& before, const std::string& after) {
  return TcfDifference(ConfigOfLines(before), ConfigOfLines(after));
}

class TcfConfigTest : public testing::Test {
 protected:
  std::list<QuorPtr<trace_App_i>> Handles() {
    std::list<QuorPtr<trace_App_i>> handles;
    for (const auto& [name, app] : std::map(m_machine.m_apps))
      handles.emplace_back(m_machine.Open(name, nullptr));
    return handles;
  }
  FakeMachine m_machine;
};

TEST(TcfCollector, ALaterGroupOfTheSameNameReplacesTracesAndKeepsASinkThatItDoesNotName) {
  const TcfConfig config = ConfigOfLines(
      "APP: \"a\"\nSINK: File \"f\" \"\"\nTRACE: \"N\" \"x\" Info\nAPP: \"b\"\n"
      "APP: \"a\"\nTRACE: \"N\" \"y\" Warn\n");
  EXPECT_EQ(config, (TcfConfig{{"a", TcfSink{trc_SinkFile, "f", ""}, {{"N", "y", 2}}},
                               {"b", std::nullopt, {}}}));
}

TEST(TcfCollector, ALaterLineOfATraceHoldsAndOneWithoutAWordIsOff) {
  EXPECT_EQ(ConfigOfLines("APP: \"a\"\nTRACE: \"N\" \"x\" Info\nTRACE: \"N\" \"y\" Info\n"
                          "TRACE: \"N\" \"x\" Stack\nTRACE: \"N\" \"y\"\nTRACE: \"N\" \"z\"\n"),
            (TcfConfig{{"a", std::nullopt, {{"N", "x", 0x200}}}}));
}

// What a machine takes group by group is what the collected value says.
TEST_F(TcfConfigTest, ACollectedFileAppliesAsItsLinesDo) {
  const std::string lines =
      "APP: \"a\"\nSINK: File \"f\" \"o\"\nTRACE: \"N\" \"x\" Info\nTRACE: \"N\" \"y\" Info\n"
      "APP: \"b\"\nTRACE: \"N\" \"x\" Info\nTRACE: \"N\" \"x\"\nTRACE: \"N\" \"no\" Info\n"
      "APP: \"a\"\nTRACE: \"N\" \"y\" Warn Stack\nTRACE: \"N\" \"z\" Error\n";
  std::vector<TcfConfig> inForce;
  for (const bool collected : {false, true}) {
    m_machine.m_apps.clear();
    m_machine.Run("a", {"N/x", "N/y", "N/z"}, 7);
    m_machine.Run("b", {"N/x", "N/y"}, 7);
    std::list<QuorPtr<trace_App_i>> handles;
    const QuorPtr<trace_Config_i> machine = m_machine.Connect("web", nullptr);
    TcfApplier applier(
        *machine,
        [&](const std::string& app) { return QuorPtr<trace_App_i>(m_machine.Open(app, nullptr)); },
        handles);
    std::istringstream in(std::string(kTcfHeader) + "\n" + lines);
    if (collected) {
      EXPECT_TRUE(ReplayTcf(ConfigOfLines(lines), applier));
    } else {
      EXPECT_EQ(ReadTcf(in, applier), TcfEnd::Whole);
    }
    inForce.push_back(TcfConfigOf(Handles()));
  }
  EXPECT_EQ(inForce[0], inForce[1]);
  EXPECT_EQ(inForce[0][0].traces, (std::vector<TcfTrace>{{"N", "y", 0x202}, {"N", "z", 4}}));
}

TEST_F(TcfConfigTest, ReplayEndsWhereTheHandlerStopsIt) {
  const QuorPtr<trace_Config_i> machine = m_machine.Connect("web", nullptr);
  m_machine.m_away = true;
  m_machine.m_log.clear();
  std::list<QuorPtr<trace_App_i>> handles;
  TcfApplier applier(
      *machine,
      [&](const std::string& app) { return QuorPtr<trace_App_i>(m_machine.Open(app, nullptr)); },
      handles);
  EXPECT_FALSE(ReplayTcf(ConfigOfLines("APP: \"a\"\nAPP: \"b\"\n"), applier));
  EXPECT_EQ(m_machine.m_log, "open a\n");
}

TEST_F(TcfConfigTest, AMachineReadsAsTheFileThatIsSavedFromIt) {
  FakeMachine::App& orders = m_machine.Run("orders", {"Net/Connect", "Net/Close", "Db/Query"});
  orders.traces[0].settings = 0xFCE0 | TRC_SET_WARN;
  orders.traces[1].settings = 0x20;
  orders.traces[2].settings = 799;
  orders.sinkOptions = "node=web;a=1;";
  m_machine.Run("files", {"N/x"}, 7).sinkType = trc_SinkFile;
  std::ostringstream file;
  ASSERT_EQ(WriteTcf(file, Handles()), TcfWritten::Whole);
  std::istringstream in(file.str());
  TcfCollector collector;
  ASSERT_EQ(ReadTcf(in, collector), TcfEnd::Whole);
  EXPECT_EQ(TcfConfigOf(Handles()), collector.Config());
  EXPECT_EQ(collector.Config()[1].sink->options, "a=1;");
  EXPECT_EQ(collector.Config()[1].traces.size(), 2u);
}

TEST_F(TcfConfigTest, AnApplicationOfAnAccountComesBackAsItWas) {
  m_machine.Run("alice/shop", {"Net/Connect", "Net/Close"}, 7);
  m_machine.Run("bob/shop", {"Net/Connect"}, 3);
  std::ostringstream file;
  ASSERT_EQ(WriteTcf(file, Handles()), TcfWritten::Whole);
  EXPECT_NE(file.str().find("\nAPP: \"alice/shop\"\n"), std::string::npos) << file.str();
  std::istringstream in(file.str());
  TcfCollector collector;
  ASSERT_EQ(ReadTcf(in, collector), TcfEnd::Whole);
  EXPECT_EQ(TcfConfigOf(Handles()), collector.Config());
  ASSERT_EQ(collector.Config().size(), 2u);
  EXPECT_EQ(collector.Config()[0].name, "alice/shop");
  EXPECT_EQ(collector.Config()[1].name, "bob/shop");
}

// The low 16 bits of an id tell that there is no such trace.
TEST_F(TcfConfigTest, AnIdWhoseLowHalfIsAllOnesIsNoTrace) {
  m_machine.Run("a", {"N/x", "N/y"}, 7);
  m_machine.m_apps["a"].traces[0].id = 0x1FFFF;
  m_machine.m_apps["a"].traces[1].id = 0x1FFFE;
  std::list<QuorPtr<trace_App_i>> handles;
  const QuorPtr<trace_Config_i> machine = m_machine.Connect("web", nullptr);
  TcfApplier applier(
      *machine,
      [&](const std::string& app) { return QuorPtr<trace_App_i>(m_machine.Open(app, nullptr)); },
      handles);
  const TcfConfig config =
      ConfigOfLines("APP: \"a\"\nTRACE: \"N\" \"x\" Info\nTRACE: \"N\" \"y\" Info\n");
  EXPECT_TRUE(ReplayTcf(config, applier));
  EXPECT_EQ(m_machine.InForce("a"), "N/x=0 N/y=1");
  EXPECT_EQ(TracesUnknownTo(*handles.front(), config.front()),
            (std::vector<TcfTrace>{{"N", "x", 1}}));
}

TEST_F(TcfConfigTest, TracesThatAnApplicationDoesNotHaveAreNamed) {
  m_machine.Run("a", {"N/x"});
  const TcfConfig config =
      ConfigOfLines("APP: \"a\"\nTRACE: \"N\" \"x\" Info\nTRACE: \"N\" \"y\" Warn\n");
  EXPECT_EQ(TracesUnknownTo(*Handles().front(), config.front()),
            (std::vector<TcfTrace>{{"N", "y", 2}}));
}

TEST(TcfDifference, TheSameInAnotherOrderDoesNotDiffer) {
  EXPECT_THAT(Differing("APP: \"a\"\nTRACE: \"N\" \"x\" Info Warn\nTRACE: \"N\" \"y\" Info\n"
                        "APP: \"b\"\nSINK: Socket \"w\" \"\"\n",
                        "\nAPP:   \"b\"\r\nSINK: Socket \"w\" \"\"\nAPP: \"a\"\n"
                        "TRACE: \"N\" \"y\" Info\nTRACE: \"N\" \"x\" Warn Info Warn"),
              IsEmpty());
  EXPECT_THAT(Differing("", ""), IsEmpty());
}

TEST(TcfDifference, LinesThatOneSideLacksStandBelowTheirApplication) {
  EXPECT_THAT(Differing("APP: \"a\"\nSINK: Socket \"w\" \"\"\nTRACE: \"N\" \"x\" Info\n"
                        "TRACE: \"N\" \"y\" Info\nTRACE: \"N\" \"z\" Info\nAPP: \"same\"\n",
                        "APP: \"a\"\nSINK: File \"f\" \"o\"\nTRACE: \"N\" \"new\" Info\n"
                        "TRACE: \"N\" \"x\" Warn\nTRACE: \"N\" \"z\" Info\nAPP: \"same\"\n"),
              ElementsAre("  APP: \"a\"", "- SINK: Socket \"w\" \"\"", "+ SINK: File \"f\" \"o\"",
                          "- TRACE: \"N\" \"x\" Info", "+ TRACE: \"N\" \"x\" Warn",
                          "- TRACE: \"N\" \"y\" Info", "+ TRACE: \"N\" \"new\" Info"));
}

TEST(TcfDifference, ASinkThatOnlyOneSideNamesDiffers) {
  EXPECT_THAT(Differing("APP: \"a\"\n", "APP: \"a\"\nSINK: Socket \"w\" \"\"\n"),
              ElementsAre("  APP: \"a\"", "+ SINK: Socket \"w\" \"\""));
  EXPECT_THAT(Differing("APP: \"a\"\nSINK: Socket \"w\" \"\"\n", "APP: \"a\"\n"),
              ElementsAre("  APP: \"a\"", "- SINK: Socket \"w\" \"\""));
}

TEST(TcfDifference, AnApplicationOfOneSideStandsWithAllItsLines) {
  const std::string had = "APP: \"a\"\nSINK: Socket \"w\" \"\"\nTRACE: \"N\" \"x\" Info\n";
  EXPECT_THAT(Differing(had, "APP: \"b\"\n"),
              ElementsAre("- APP: \"a\"", "- SINK: Socket \"w\" \"\"", "- TRACE: \"N\" \"x\" Info",
                          "+ APP: \"b\""));
  EXPECT_THAT(Differing("", had), ElementsAre("+ APP: \"a\"", "+ SINK: Socket \"w\" \"\"",
                                              "+ TRACE: \"N\" \"x\" Info"));
}

TEST(TcfDifference, TheSameNameInAnotherApplicationOrSplitElsewhereIsAnotherTrace) {
  EXPECT_THAT(Differing("APP: \"a\"\nTRACE: \"N\" \"x\" Info\nAPP: \"b\"\n",
                        "APP: \"a\"\nAPP: \"b\"\nTRACE: \"N\" \"x\" Info\n"),
              ElementsAre("  APP: \"a\"", "- TRACE: \"N\" \"x\" Info", "  APP: \"b\"",
                          "+ TRACE: \"N\" \"x\" Info"));
  EXPECT_EQ(
      Differing("APP: \"a\"\nTRACE: \"N\" \"xy\" Info\n", "APP: \"a\"\nTRACE: \"Nx\" \"y\" Info\n")
          .size(),
      3u);
}

// A whole file with each kind of line, cut and disturbed at every byte.
constexpr char kEveryKind[] =
    "TCF Version 3.2\n"
    "APP: \"or\\\\ders\"\n"
    "SINK: File \"/var/log/o.trc\" \"flush=1;maxfiles=10;maxsize=5;\"\n"
    "TRACE: \"Net\" \"Con\"nect\" Info Warn\n"
    "APP: \"billing\"\r\n"
    "SINK: Socket \"localhost\" \"\"\n"
    "TRACE: \"N\" \"x\"\n";

// Bad with a reason, or a value that its own lines give again.
void ExpectReadOrTold(const std::string& file) {
  std::istringstream in(file);
  TcfCollector collector;
  TcfFault fault;
  if (ReadTcf(in, collector, &fault) != TcfEnd::Whole) {
    EXPECT_NE(fault.why, "") << file;
    EXPECT_GE(fault.line, 1u) << file;
    return;
  }
  std::string lines;
  for (const TcfApp& app : collector.Config()) {
    lines += TcfAppLine(app.name) + "\n";
    if (app.sink) lines += TcfSinkLine(app.sink->type, app.sink->name, app.sink->options) + "\n";
    for (const TcfTrace& trace : app.traces)
      lines += TcfTraceLine(trace.component, trace.category, trace.settings) + "\n";
  }
  EXPECT_THAT(TcfDifference(collector.Config(), ConfigOfLines(lines)), IsEmpty()) << file;
}

TEST(HostileTcf, CutAtAnyByte) {
  const std::string whole = kEveryKind;
  for (std::size_t bytes = 0; bytes <= whole.size(); ++bytes)
    ExpectReadOrTold(whole.substr(0, bytes));
}

TEST(HostileTcf, AQuoteABackslashANulALineEndOrAByteOfAnotherEncodingAnywhere) {
  const std::string whole = kEveryKind;
  for (const char byte : {'"', '\\', '\0', '\n', '\r', ' ', '\xFF', '\xE4'}) {
    for (std::size_t at = 0; at <= whole.size(); ++at) {
      std::string file = whole;
      ExpectReadOrTold(file.insert(at, 1, byte));
      file = whole;
      if (at < file.size()) file[at] = byte;
      ExpectReadOrTold(file);
    }
  }
}

TEST(HostileTcf, AFileInSixteenBitCharactersIsBadInItsFirstLine) {
  for (const bool big : {false, true}) {
    std::string wide = big ? "\xFE\xFF" : "\xFF\xFE";
    for (const char byte : std::string(kEveryKind)) {
      if (big) wide.push_back('\0');
      wide.push_back(byte);
      if (!big) wide.push_back('\0');
    }
    std::istringstream in(wide);
    TcfCollector collector;
    TcfFault fault;
    EXPECT_EQ(ReadTcf(in, collector, &fault), TcfEnd::BadLine);
    EXPECT_EQ(fault.line, 1u);
    EXPECT_THAT(collector.Config(), IsEmpty());
  }
}

TEST(HostileTcf, ALineOfAMegabyteOfEachKind) {
  const std::string name(kLongestTcfLineBytes - 100, 'x');
  for (const std::string& line :
       {TcfAppLine(name), TcfSinkLine(trc_SinkFile, name, ""), TcfTraceLine(name, "y", 7)}) {
    ExpectReadOrTold("TCF Version 3.2\nAPP: \"a\"\n" + line + "\n");
    ExpectReadOrTold("TCF Version 3.2\nAPP: \"a\"\n" + line + std::string(200, ' ') + "\"");
  }
}

TEST(TcfDifference, AHundredThousandLinesTakeNoSquareOfTheirNumber) {
  std::string lines;
  for (int app = 0; app < 10; ++app) {
    lines += TcfAppLine("application " + std::to_string(app)) + "\n";
    for (int trace = 0; trace < 9999; ++trace)
      lines += TcfTraceLine("Component", "Category " + std::to_string(trace), 7) + "\n";
  }
  // Processor time: other programs do not count.
  const std::clock_t began = std::clock();
  const TcfConfig config = ConfigOfLines(lines);
  EXPECT_THAT(TcfDifference(config, config), IsEmpty());
  EXPECT_LT(std::clock() - began, 10 * CLOCKS_PER_SEC);
  EXPECT_EQ(config.size(), 10u);
}

}  // namespace
