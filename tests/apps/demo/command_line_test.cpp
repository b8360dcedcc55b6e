// What a user of quor-demo sees, without a service.
#include "demo_process.h"

namespace {

class DemoCommandLine : public testing::Test {
 protected:
  DemoCommandLine() {
    setenv("QUOR_SOCKET", m_folder.File("quord.sock").c_str(), 1);
    setenv("QUOR_AUTOSTART", "0", 1);
  }
  TempDir m_folder;
};

TEST_F(DemoCommandLine, HelpTellsTheOptionsOnStandardOutput) {
  DemoProcess demo({"--help"});
  EXPECT_EQ(demo.Wait(), 0);
  for (const char* option : {"--rate", "--for", "--name", "--threads", "--help", "examples:"})
    EXPECT_NE(demo.Out().find(option), std::string::npos) << option;
  EXPECT_EQ(demo.Err(), "");
}

TEST_F(DemoCommandLine, WrongUseIsReportedOnStandardErrorWithStatus2) {
  for (const std::vector<std::string>& wrong : {std::vector<std::string>{"--rate", "fast"},
                                                {"--rate=-1"},
                                                {"--for"},
                                                {"--for", "1s"},
                                                {"--threads", "0"},
                                                {"--threads=257"},
                                                {"--threads=1.5"},
                                                {"--name="},
                                                {"file.trc"}}) {
    DemoProcess demo(wrong);
    EXPECT_EQ(demo.Wait(), 2) << wrong[0];
    EXPECT_NE(demo.Err().find("usage: quor-demo"), std::string::npos);
    EXPECT_EQ(demo.Out(), "");
  }
}

TEST_F(DemoCommandLine, WithoutAServiceItRunsAllTheSame) {
  DemoProcess demo({"--for=0.2", "--rate", "100"});
  EXPECT_EQ(demo.Wait(), 0) << demo.Err();
  EXPECT_GT(demo.Traces(), 0u);
}

TEST_F(DemoCommandLine, ARateNextToNothingEndsInTimeAllTheSame) {
  DemoProcess demo({"--for=0.2", "--rate=0.000000000001"});
  EXPECT_EQ(demo.Wait(), 0) << demo.Err();
}

TEST_F(DemoCommandLine, ATermSignalEndsItInOrder) {
  DemoProcess demo({"-t", "2"});
  ASSERT_TRUE(WaitFor([&] { return !demo.Err().empty(); }));
  demo.Signal(SIGTERM);
  EXPECT_EQ(demo.Wait(), 0) << demo.Err();
  EXPECT_NE(demo.Err().find(" traces, 0 lost\n"), std::string::npos);
}

}  // namespace
