// trc over mutual TLS with a real service, and a capture whose disk fills.
#include <sys/mount.h>

#include "live_fixture.h"

namespace {

using nlohmann::json;

class RemoteProgramsTest : public LiveProgramsTest {
 protected:
  void SetUp() override {
    ASSERT_EQ(RunQuord({"keys", "init"}), 0) << Log();
    for (const std::string role : {"monitor", "configure"})
      ASSERT_EQ(RunQuord({"keys", "issue", role, "--role", role, "--out", m_dir.File(role)}), 0);
    StartService({"--listen", "127.0.0.1:0"});
    machine = Address();
  }
  TrcRun Over(const std::string& keys, std::vector<std::string> arguments) {
    return RunTrc(
        {.arguments = std::move(arguments), .environment = {"QUOR_KEYS=" + m_dir.File(keys)}});
  }
  bool IsTraced(const std::string& app) {
    return Eventually([&] { return IsHere(app); });
  }
  std::string machine;
};

TEST_F(RemoteProgramsTest, TailPrintsTheTracesOfAnotherMachine) {
  TrcProcess emit({.arguments = {"emit", "--app", "orders", "--rate", "500"}});
  const TrcRun tail =
      Over("monitor", {"tail", machine, "--format", "jsonl", "--count", "50", "--for", "30"});
  EXPECT_EQ(tail.status, 0) << tail.err;
  const auto lines = LinesOf(tail.out);
  ASSERT_EQ(lines.size(), 50u);
  EXPECT_EQ(json::parse(lines[0])["application"], "orders");
  EXPECT_EQ(json::parse(lines[0])["machine"], _trc_GetHostName());
}

TEST_F(RemoteProgramsTest, CaptureHoldsEveryTraceOfABurst) {
  const std::string path = m_dir.File("far.trc");
  TrcProcess capture({.arguments = {"capture", machine, "-o", path, "--count", "5000"},
                      .environment = {"QUOR_KEYS=" + m_dir.File("monitor")}});
  ASSERT_TRUE(Eventually([&] { return std::filesystem::exists(path); }));
  EXPECT_EQ(RunTrc({"emit", "--app", "burst", "--count", "5000", "--rate", "20000"}).status, 0);
  const TrcRun run = capture.Finish();
  EXPECT_EQ(run.status, 0) << run.err;
  EXPECT_EQ(run.out, "5000 taken, 0 lost\n");
  EXPECT_EQ(InfoOf(path)["traces"], 5000);
}

TEST_F(RemoteProgramsTest, AppsShowSetAndSinkWorkThereAsHere) {
  TrcProcess emit({.arguments = {"emit", "--app", "orders", "--rate", "500"}});
  ASSERT_TRUE(IsTraced("orders"));
  EXPECT_EQ(Over("configure", {"apps", machine}).out, "orders\n");
  EXPECT_EQ(json::parse(Over("configure", {"apps", machine, "--json"}).out)[0]["running"], true);
  EXPECT_EQ(Over("configure", {"set", machine, "orders", "Net", "off"}).status, 0);
  const std::string there = Over("configure", {"show", machine, "orders"}).out;
  EXPECT_NE(there.find("Net/Connect  Off\n"), there.npos) << there;
  EXPECT_EQ(RunTrc({"show", "orders"}).out, there);
  const std::string path = m_dir.File("own.trc");
  EXPECT_EQ(Over("configure", {"sink", machine, "orders", "--file", path}).status, 0);
  EXPECT_TRUE(Eventually([&] {
    std::error_code error;
    return std::filesystem::file_size(path, error) > 1000 && !error;
  }));
}

TEST_F(RemoteProgramsTest, AMonitorsCertificateListsAndDoesNotConfigureAndAForeignOneDoesNothing) {
  TrcProcess emit({.arguments = {"emit", "--app", "orders", "--rate", "500"}});
  ASSERT_TRUE(IsTraced("orders"));
  const TrcRun apps = Over("monitor", {"apps", machine});
  EXPECT_EQ(apps.status, 0) << apps.err;
  EXPECT_EQ(apps.out, "orders\n");
  for (const std::vector<std::string>& more : {std::vector<std::string>{"show", machine, "orders"},
                                               {"set", machine, "orders", "Net", "off"},
                                               {"forget", machine, "orders"}}) {
    const TrcRun run = Over("monitor", more);
    EXPECT_EQ(run.status, 2) << more.front();
    EXPECT_NE(run.err.find("the certificate does not allow to configure"), run.err.npos) << run.err;
  }
  ASSERT_EQ(RunQuord({"keys", "init", "--keys-dir", m_dir.File("other")}), 0);
  ASSERT_EQ(RunQuord({"keys", "issue", "eve", "--role", "configure", "--keys-dir",
                      m_dir.File("other"), "--out", m_dir.File("eve")}),
            0);
  const TrcRun foreign = Over("eve", {"tail", machine, "--count", "1"});
  EXPECT_EQ(foreign.status, 2);
  EXPECT_NE(foreign.err.find("certificate"), foreign.err.npos) << foreign.err;
  EXPECT_EQ(Over("nothing there", {"tail", machine, "--count", "1"}).status, 2);
}

// A disk that is full: a file system of its own where we may make one, else a limit on files.
class FullDiskTest : public LiveProgramsTest {
 protected:
  ~FullDiskTest() override {
    if (m_mounted) umount2(m_disk.c_str(), MNT_DETACH);
  }
  TrcStart CaptureOnFullDisk(bool mounted) {
    std::filesystem::create_directory(m_disk);
    TrcStart start{.arguments = {"capture", "-o", m_disk + "/now.trc"}};
    m_mounted = mounted && mount("none", m_disk.c_str(), "tmpfs", 0, "size=200k") == 0;
    if (!m_mounted) start.fileBytesMax = 200 * 1024;
    return start;
  }
  const std::string m_disk = m_dir.File("disk");
  bool m_mounted = false;
};

TEST_F(FullDiskTest, ACaptureThatFillsItsDiskTellsWhatItTookAndLostAndLeavesAFileThatReads) {
  StartService();
  for (const bool mounted : {true, false}) {
    TrcProcess capture(CaptureOnFullDisk(mounted));
    const std::string path = m_disk + "/now.trc";
    ASSERT_TRUE(Eventually([&] { return std::filesystem::exists(path); }));
    EXPECT_EQ(RunTrc({"emit", "--app", "big", "--count", "3000", "--text-bytes", "200"}).out,
              "3000 traced, 0 lost\n");
    const TrcRun run = capture.Finish();
    EXPECT_EQ(run.status, 2);
    EXPECT_NE(run.err.find(path + ": Error writing to file.\n"), run.err.npos) << run.err;
    const std::uint64_t taken = Reported(run.out, "taken"), lost = Reported(run.out, "lost");
    EXPECT_GT(taken, 500u);
    EXPECT_GT(lost, 0u);
    EXPECT_LE(taken + lost, 3000u);
    // What it says it took is in the file, from the first on, and nothing half.
    const json info = InfoOf(path);
    EXPECT_EQ(info["traces"], taken);
    EXPECT_EQ(info["skippedBytes"], 0);
    std::uint64_t count = 0;
    for (const json& trace : DumpedTraces(path)) {
      EXPECT_EQ(trace["application"], "big");
      EXPECT_EQ(trace["text"].get<std::string>().size(), 200u);
      if (count != 0) {
        EXPECT_EQ(trace["count"], count + 1);
      }
      count = trace["count"];
    }
    if (m_mounted) {
      EXPECT_EQ(umount2(m_disk.c_str(), MNT_DETACH), 0);
    }
    std::filesystem::remove_all(m_disk);
  }
}

}  // namespace
