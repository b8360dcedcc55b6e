// trc tree: the text form of the procedure tree.
#include "run_trc.h"
#include "support/temp_dir.h"
#include "support/trc_image.h"

namespace {

class TrcTree : public testing::Test {
 protected:
  // Two machines; on the first a block with a trace in it, and one of component "net" after it.
  TrcTree() {
    TrcImage image;
    image.Name(1, "desk").Name(2, "shop").Name(3, "100").Name(4, "one").Name(5, "lab").Name(6,
                                                                                            "net");
    image.Trace(Fields("Begin: work", 1, 1000));
    image.Trace(Fields("inside", 1, 2000));
    image.Trace(Fields("far", 5, 0));
    image.Trace(Fields("End: ", 1, 4000));
    TraceFields net = Fields("after", 1, 5000);
    net.component = 6;
    image.Trace(net);
    m_file = image.WriteTo(m_directory.File("web.trc"));
  }
  static TraceFields Fields(const char* text, NameId machine, std::uint64_t tic) {
    return {.text = text, .machine = machine, .app = 2, .tic = tic, .pid = 3, .tid = 4};
  }
  std::string Tree(std::vector<std::string> more = {}) {
    more.insert(more.begin(), {"tree", m_file});
    const TrcRun run = RunTrc(more);
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(run.err, "");
    return run.out;
  }
  std::string Refused(std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), "tree");
    const TrcRun run = RunTrc(arguments);
    EXPECT_EQ(run.status, 2);
    EXPECT_EQ(run.out, "");
    return run.err;
  }

  static constexpr const char* kDesk =
      "|- desk\n"
      "|   |- shop\n"
      "|   |   |- PID 100 - 4 ns\n"
      "|   |   |   |- TID one - 4 ns\n"
      "|   |   |   |   |- work - 3 ns\n"
      "|   |   |   |   |   |- Begin: work\n"
      "|   |   |   |   |   |- inside\n"
      "|   |   |   |   |   |- End: \n"
      "|   |   |   |   |- after\n";
  static constexpr const char* kLab =
      "|- lab\n"
      "|   |- shop\n"
      "|   |   |- PID 100 - 0 ps\n"
      "|   |   |   |- TID one - 0 ps\n"
      "|   |   |   |   |- far\n";
  TempDir m_directory;
  std::string m_file;
};

TEST_F(TrcTree, AllMachinesAreWrittenWithEverythingOpen) {
  EXPECT_EQ(Tree(), std::string(kDesk) + kLab);
}

TEST_F(TrcTree, AMachineOfTheNameAlone) {
  EXPECT_EQ(Tree({"--machine", "lab"}), kLab);
}

TEST_F(TrcTree, AMachineThatIsNotThereIsReported) {
  EXPECT_EQ(Refused({m_file, "--machine", "web"}),
            "trc: there are no traces of a machine \"web\"; there is \"desk\", \"lab\"\n");
}

TEST_F(TrcTree, ADepthOpensSoManyLevels) {
  EXPECT_EQ(Tree({"--depth", "0"}), "+- desk\n+- lab\n");
  EXPECT_EQ(Tree({"--depth", "2", "-m", "desk"}),
            "|- desk\n|   |- shop\n|   |   +- PID 100 - 4 ns\n");
  EXPECT_EQ(Tree({"--depth", "9999999999"}), std::string(kDesk) + kLab);
}

TEST_F(TrcTree, WhatTheFilterHidesIsNotInTheTree) {
  EXPECT_EQ(Tree({"-m", "desk", "--uncheck", "All Components/net"}),
            "|- desk\n"
            "|   |- shop\n"
            "|   |   |- PID 100 - 3 ns\n"
            "|   |   |   |- TID one - 3 ns\n"
            "|   |   |   |   |- work - 3 ns\n"
            "|   |   |   |   |   |- Begin: work\n"
            "|   |   |   |   |   |- inside\n"
            "|   |   |   |   |   |- End: \n");
  EXPECT_EQ(Tree({"--uncheck", ""}), "");
}

TEST_F(TrcTree, APathOfTheFilterThatLeadsNowhereIsReported) {
  EXPECT_NE(Refused({m_file, "--uncheck", "All Components/nat"}).find("All Components/net"),
            std::string::npos);
}

TEST_F(TrcTree, TheExportHoldsTheFirstMachineOnly) {
  const std::string out = m_directory.File("tree.txt");
  const TrcRun run = RunTrc({"tree", "--export", m_file, out});
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.out + run.err, "");
  EXPECT_EQ(ReadAll(out), kDesk);
}

TEST_F(TrcTree, AnExportThatCannotBeWrittenIsReported) {
  EXPECT_NE(Refused({"--export", m_file, m_directory.File("no/such/tree.txt")})
                .find("Error opening output file."),
            std::string::npos);
}

TEST_F(TrcTree, WrongUseIsReported) {
  EXPECT_NE(Refused({"--export", m_file}).find("needs OUT"), std::string::npos);
  EXPECT_NE(Refused({"--export", m_file, "tree.txt", "-d", "2"}).find("whole"), std::string::npos);
  EXPECT_NE(Refused({m_file, "-d", "two"}).find("is not a whole number"), std::string::npos);
  EXPECT_NE(Refused({m_directory.File("none.trc")}).find("none.trc"), std::string::npos);
}

TEST_F(TrcTree, ALineEndOrAnEscapeInATextStaysInItsLineOnTheScreenAndIsWrittenAsItIs) {
  const std::string file =
      TrcImage().Trace({.text = "a\nb\x1b[0m"}).WriteTo(m_directory.File("odd.trc"));
  EXPECT_NE(RunTrc({"tree", file}).out.find("|- a\\nb\\x1b[0m\n"), std::string::npos);
  const std::string out = m_directory.File("odd.txt");
  ASSERT_EQ(RunTrc({"tree", "-x", file, out}).status, 0);
  EXPECT_NE(ReadAll(out).find("|- a\nb\x1b[0m\n"), std::string::npos);
}

TEST_F(TrcTree, TenThousandNestedBlocksArePrintedToADepth) {
  TrcImage image;
  for (int i = 0; i < 10000; ++i) image.Trace({.text = "Begin: deeper"});
  const std::string file = image.WriteTo(m_directory.File("deep.trc"));
  const TrcRun run = RunTrc({"tree", file, "--depth", "100"});
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(LinesOf(run.out).size(), 101U + 96U);
}

}  // namespace
