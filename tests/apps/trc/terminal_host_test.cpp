#include "terminal/terminal_host.h"

#include <gtest/gtest.h>
#include <signal.h>

#include <filesystem>
#include <string>
#include <thread>
#include <vector>

#include "docview/dialogs/dialog.h"
#include "support/temp_dir.h"
#include "support/trc_image.h"
#include "terminal/interrupt.h"
#include "terminal/trace_file.h"

namespace {

TEST(TerminalHost, PostedCallsRunInTheirOrderOnTheThreadThatRuns) {
  TerminalHost host;
  std::vector<int> calls;
  std::thread::id ranOn;
  std::thread poster([&] {
    for (int i = 0; i < 100; ++i) host.Post([&calls, i] { calls.push_back(i); });
    host.Post([&ranOn] { ranOn = std::this_thread::get_id(); });
  });
  host.RunUntil([&ranOn] { return ranOn != std::thread::id(); });
  poster.join();
  ASSERT_EQ(calls.size(), 100u);
  for (int i = 0; i < 100; ++i) EXPECT_EQ(calls[static_cast<std::size_t>(i)], i);
  EXPECT_EQ(ranOn, std::this_thread::get_id());
}

TEST(TerminalHost, NothingRunsOnceTheLoopIsDone) {
  TerminalHost host;
  int calls = 0;
  host.Post([&calls] { ++calls; });
  host.Post([&calls] { ++calls; });
  host.RunUntil([&calls] { return calls == 1; });
  EXPECT_EQ(calls, 1);
}

TEST(TerminalHost, ATimerTicksAgainAndAgainUntilItIsKilled) {
  TerminalHost host;
  int ticks = 0, others = 0;
  const TimerId timer = host.SetTimer(1, [&ticks] { ++ticks; });
  host.RunUntil([&ticks] { return ticks == 3; });
  host.KillTimer(timer);
  const TimerId other = host.SetTimer(1, [&others] { ++others; });
  EXPECT_NE(other, timer);
  host.RunUntil([&others] { return others == 3; });
  EXPECT_EQ(ticks, 3);
}

TEST(TerminalHost, ATickMayKillItsOwnTimer) {
  TerminalHost host;
  int once = 0, others = 0;
  TimerId timer = 0;
  timer = host.SetTimer(1, [&] {
    ++once;
    host.KillTimer(timer);
  });
  host.SetTimer(1, [&others] { ++others; });
  host.RunUntil([&others] { return others == 5; });
  EXPECT_EQ(once, 1);
}

TEST(TerminalHost, ABoxIsALineOnStandardErrorAfterItsSubject) {
  TerminalHost host;
  testing::internal::CaptureStderr();
  EXPECT_EQ(host.MessageBox({.text = "First."}), BoxAnswer::Ok);
  host.SetSubject("a.trc");
  EXPECT_EQ(host.MessageBox({.text = "Second."}), BoxAnswer::Ok);
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "trc: First.\ntrc: a.trc: Second.\n");
  EXPECT_EQ(host.Boxes(), 2u);
}

TEST(TerminalHost, AQuestionIsAnsweredWithNoOrCancel) {
  TerminalHost host;
  testing::internal::CaptureStderr();
  const auto answer = [&host](BoxButtons buttons) {
    return host.MessageBox({.text = "Sure?", .buttons = buttons});
  };
  EXPECT_EQ(answer(BoxButtons::YesNo), BoxAnswer::No);
  EXPECT_EQ(answer(BoxButtons::YesNoCancel), BoxAnswer::Cancel);
  EXPECT_EQ(answer(BoxButtons::OkCancel), BoxAnswer::Cancel);
  EXPECT_NE(testing::internal::GetCapturedStderr(), "");
}

TEST(TerminalHost, ABoxOfAnotherThreadIsPrintedByTheLoopAndThenClosed) {
  TerminalHost host;
  testing::internal::CaptureStderr();
  bool closed = false;
  std::thread poster([&] { host.PostBox({.text = "Late."}, [&closed] { closed = true; }); });
  poster.join();
  EXPECT_EQ(host.Boxes(), 0u);
  host.RunUntil([&closed] { return closed; });
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "trc: Late.\n");
}

TEST(TerminalHost, ADialogIsCancelled) {
  TerminalHost host;
  CDialog dialog(host);
  EXPECT_EQ(host.RunDialog(dialog), CDialog::kIdCancel);
  EXPECT_FALSE(host.RunFileDialog({}));
  EXPECT_NE(host.ShowModeless(dialog), nullptr);
}

// In a process of its own, as an interrupt is noted for good.
[[noreturn]] void OpenWithAnInterruptDuringTheLoad(const std::string& path) {
  CatchSignals();
  TerminalHost host;
  const bool opened = OpenTraceFile(host, path, {.beforeWalk = [] { raise(SIGINT); }}) != nullptr;
  // This process made it again, and does not end as a test does.
  std::filesystem::remove_all(std::filesystem::path(path).parent_path());
  _exit(!opened && Interrupted() ? 42 : 1);
}

TEST(OpenTraceFile, AnInterruptDuringTheLoadGivesNoDocument) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  const TempDir directory;
  const std::string path = TrcImage().Trace("a").WriteTo(directory.File("a.trc"));
  EXPECT_EXIT(OpenWithAnInterruptDuringTheLoad(path), testing::ExitedWithCode(42), "^$");
  GTEST_FLAG_SET(death_test_style, "fast");
}

TEST(OpenTraceFile, ADocumentIsLoadedWhenItIsGiven) {
  const TempDir directory;
  const std::string path =
      TrcImage().Name(7, "web").Trace({.machine = 7}).WriteTo(directory.File("a.trc"));
  TerminalHost host;
  const auto document = OpenTraceFile(host, path);
  ASSERT_NE(document, nullptr);
  EXPECT_FALSE(document->m_loading);
  ASSERT_EQ(document->m_traces.size(), 1u);
  EXPECT_EQ(document->m_traces[0]->GetMachineName(document->m_names), "web");
  EXPECT_EQ(host.MainWindow(), nullptr);
}

}  // namespace
