// The messages of the link, their socket, and where the service is looked for.
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>
#include <thread>

#include "quor/link/link.h"
#include "quor/link/link_socket.h"
#include "quor/link/paths.h"

namespace {

std::string Dump(const LinkFrame& frame) {
  switch (frame.type) {
    case LinkType::Hello:
      return "hello " + std::to_string(frame.hello.version) + " " +
             std::to_string(frame.hello.pid) + " " + std::to_string(frame.hello.startedNs) + " " +
             std::to_string(frame.hello.device) + " " + std::to_string(frame.hello.inode) + " " +
             std::to_string(static_cast<int>(frame.hello.taker)) + " " + frame.hello.app;
    case LinkType::Welcome:
      return "welcome " + std::to_string(frame.version);
    case LinkType::Refused:
      return "refused " + std::to_string(frame.refused.version) + " " + frame.refused.reason;
    case LinkType::Sink:
      return "sink " + std::to_string(static_cast<int>(frame.sink.kind)) + " " + frame.sink.name +
             " " + frame.sink.options;
    case LinkType::Poke:
      return "poke";
    case LinkType::Taker:
      return "taker " + std::to_string(static_cast<int>(frame.taker));
    case LinkType::Points:
      return "points";
    case LinkType::Call:
      return "call";
    case LinkType::Report:
      return "report " + std::to_string(frame.report.lost) + " " + frame.report.text;
    case LinkType::Rules:
      return "rules " + frame.rules;
  }
  return "?";
}

// Feeds the bytes in pieces of `step` and dumps every frame, one a line; an error ends it.
std::string Decoded(const std::vector<std::uint8_t>& bytes, std::size_t step) {
  LinkDecoder decoder;
  std::string dump;
  for (std::size_t at = 0; at < bytes.size(); at += step) {
    const std::uint8_t* from = bytes.data() + at;
    const std::uint8_t* const end = bytes.data() + std::min(bytes.size(), at + step);
    for (;;) {
      LinkFrame frame;
      const LinkDecoder::Result result = decoder.Feed(from, end, frame);
      if (result == LinkDecoder::Result::Error) return dump + "error: " + decoder.Why();
      if (result == LinkDecoder::Result::More) break;
      dump += Dump(frame) + "\n";
    }
  }
  return dump;
}

std::vector<std::uint8_t> Frame(int type, const std::vector<std::uint8_t>& body) {
  std::vector<std::uint8_t> bytes(4);
  StoreBe32(bytes.data(), static_cast<std::uint32_t>(body.size() + 1));
  bytes.push_back(static_cast<std::uint8_t>(type));
  bytes.insert(bytes.end(), body.begin(), body.end());
  return bytes;
}

TEST(Link, EveryMessageReadsBackHoweverTheStreamIsSplit) {
  LinkHello hello;
  hello.pid = 4711;
  hello.startedNs = 1234567890123;
  hello.device = 24;
  hello.inode = 123456;
  hello.taker = RingTaker::Application;
  hello.app = "orders";
  std::vector<std::uint8_t> all;
  for (const auto& one : {EncodeHello(hello), EncodeWelcome(), EncodeRefused("no"),
                          EncodeSink({SinkKind::File, "/tmp/x.trc", "flush=1;"}), EncodePoke(),
                          EncodeTaker(RingTaker::Service), EncodePoints(), EncodeCall(),
                          EncodeReport({5, "disk full"}), EncodeRules("Net=max;*=off")})
    all.insert(all.end(), one.begin(), one.end());
  for (const std::size_t step : {std::size_t{1}, std::size_t{2}, std::size_t{3}, std::size_t{7},
                                 std::size_t{64}, all.size()})
    EXPECT_EQ(Decoded(all, step),
              "hello 2 4711 1234567890123 24 123456 0 orders\nwelcome 2\nrefused 2 no\n"
              "sink 0 /tmp/x.trc flush=1;\npoke\ntaker 1\npoints\ncall\nreport 5 disk full\n"
              "rules Net=max;*=off\n");
}

TEST(Link, AHelloOfAnotherVersionIsReadByItsVersionAloneSoThatItCanBeRefused) {
  EXPECT_EQ(Decoded(Frame(1, {0, 0, 0, 9, 1, 2, 3}), 100), "hello 9 0 0 0 0 1 \n");
}

TEST(Link, TextsAreCutAtTheirLimit) {
  const std::string longText(10000, 'x');
  EXPECT_EQ(Decoded(EncodeReport({0, longText}), 100000),
            "report 0 " + std::string(kLinkTextMax, 'x') + "\n");
}

TEST(Link, BadFramesAreErrors) {
  EXPECT_EQ(Decoded({0, 0, 0, 0}, 10), "error: an empty frame");
  EXPECT_EQ(Decoded({0xFF, 0xFF, 0xFF, 0xFF}, 10), "error: a frame that is too long");
  const std::string wrong = "error: a frame that is not what its type says";
  EXPECT_EQ(Decoded(Frame(0, {}), 10), wrong);
  EXPECT_EQ(Decoded(Frame(10, {}), 10), wrong);  // rules without a text
  EXPECT_EQ(Decoded(Frame(11, {}), 10), wrong);
  EXPECT_EQ(Decoded(Frame(5, {1}), 10), wrong);                 // a poke with a body
  EXPECT_EQ(Decoded(Frame(1, {0, 0}), 10), wrong);              // a hello that is cut short
  EXPECT_EQ(Decoded(Frame(6, {2}), 10), wrong);                 // no such taker
  EXPECT_EQ(Decoded(Frame(4, {2, 0, 0, 0, 0}), 10), wrong);     // no such sink
  EXPECT_EQ(Decoded(Frame(4, {0, 0, 9, 'x'}), 10), wrong);      // a text beyond the end
  EXPECT_EQ(Decoded(Frame(4, {0, 0, 0, 0, 0, 1}), 10), wrong);  // a byte too many
}

TEST(Link, AnErrorStays) {
  LinkDecoder decoder;
  LinkFrame frame;
  const std::vector<std::uint8_t> bad = {0, 0, 0, 0}, good = EncodePoke();
  const std::uint8_t* from = bad.data();
  EXPECT_EQ(decoder.Feed(from, bad.data() + 4, frame), LinkDecoder::Result::Error);
  from = good.data();
  EXPECT_EQ(decoder.Feed(from, good.data() + good.size(), frame), LinkDecoder::Result::Error);
}

TEST(Link, RandomFramesAreSurvived) {
  std::mt19937 random(11);
  for (int round = 0; round < 20000; ++round) {
    std::vector<std::uint8_t> body(random() % 40);
    for (std::uint8_t& byte : body)
      byte = static_cast<std::uint8_t>(random() % (round % 3 ? 256 : 4));
    const std::string dump =
        Decoded(Frame(static_cast<int>(random() % 11), body), 1 + random() % 9);
    ASSERT_TRUE(dump.empty() || dump.back() == '\n' || dump.rfind("error: ", 0) == 0) << dump;
  }
}

TEST(LinkSocket, DescriptorsTravelWithAHello) {
  int ends[2];
  ASSERT_EQ(socketpair(AF_UNIX, SOCK_STREAM, 0, ends), 0);
  int pipes[2];
  ASSERT_EQ(pipe(pipes), 0);
  ASSERT_TRUE(SendOnLink(ends[0], EncodePoke(), pipes, 2));
  std::uint8_t bytes[100];
  const LinkReceived got = ReceiveOnLink(ends[1], bytes, sizeof bytes);
  EXPECT_EQ(got.bytes, EncodePoke().size());
  ASSERT_EQ(got.descriptorCount, 2);
  ASSERT_EQ(write(got.descriptors[1], "x", 1), 1);
  char byte = 0;
  EXPECT_EQ(read(pipes[0], &byte, 1), 1);
  EXPECT_EQ(byte, 'x');
  close(ends[0]);
  EXPECT_TRUE(ReceiveOnLink(ends[1], bytes, sizeof bytes).ended);
  for (const int end : {ends[1], pipes[0], pipes[1], got.descriptors[0], got.descriptors[1]})
    close(end);
}

TEST(LinkSocket, APeerThatTakesNothingIsGivenUpAndALostOneRaisesNoSignal) {
  int ends[2];
  ASSERT_EQ(socketpair(AF_UNIX, SOCK_STREAM, 0, ends), 0);
  const std::vector<std::uint8_t> much(4 << 20);
  EXPECT_FALSE(SendOnLink(ends[0], much, nullptr, 0, 20));
  close(ends[1]);
  EXPECT_FALSE(SendOnLink(ends[0], EncodePoke()));
  close(ends[0]);
}

class PathsTest : public testing::Test {
 protected:
  void SetUp() override {
    char pattern[] = "/tmp/quor-test-XXXXXX";
    m_folder = mkdtemp(pattern);
    for (const char* name : {"QUOR_SOCKET", "QUOR_QUORD", "QUOR_AUTOSTART"}) unsetenv(name);
    setenv("XDG_RUNTIME_DIR", m_folder.c_str(), 1);
  }
  void TearDown() override {
    std::filesystem::remove_all(m_folder);
    for (const char* name : {"QUOR_SOCKET", "QUOR_QUORD", "QUOR_AUTOSTART", "XDG_RUNTIME_DIR"})
      unsetenv(name);
  }
  std::string Script(const std::string& text) {
    const std::string path = m_folder + "/quord";
    std::ofstream(path) << "#!/bin/sh\n" << text << "\n";
    chmod(path.c_str(), 0700);
    return path;
  }
  std::string m_folder;
};

TEST_F(PathsTest, TheSocketLiesWhereTheEnvironmentSays) {
  EXPECT_EQ(ServiceSocketPath(), m_folder + "/quor/quord.sock");
  unsetenv("XDG_RUNTIME_DIR");
  EXPECT_EQ(ServiceSocketPath(), "/tmp/quor-" + std::to_string(geteuid()) + "/quord.sock");
  setenv("QUOR_SOCKET", "/x/y.sock", 1);
  EXPECT_EQ(ServiceSocketPath(), "/x/y.sock");
}

TEST_F(PathsTest, TheFolderIsMadePrivateAndALooseOneIsRefused) {
  std::string why;
  ASSERT_TRUE(PrepareSocketFolder(ServiceSocketPath(), &why)) << why;
  struct stat status {};
  ASSERT_EQ(stat((m_folder + "/quor").c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777, 0700u);
  ASSERT_EQ(chmod((m_folder + "/quor").c_str(), 0777), 0);
  EXPECT_FALSE(SocketFolderIsSafe(ServiceSocketPath(), &why));
  EXPECT_EQ(why, m_folder + "/quor: others may write to it");
}

TEST_F(PathsTest, AFolderThatIsALinkIsRefused) {
  ASSERT_EQ(symlink("/tmp", (m_folder + "/quor").c_str()), 0);
  std::string why;
  EXPECT_FALSE(PrepareSocketFolder(ServiceSocketPath(), &why));
  EXPECT_EQ(why, m_folder + "/quor: not a folder");
}

TEST_F(PathsTest, TheProgramIsTheNamedOneElseOnPathAndNoneWhenForbidden) {
  const std::string program = Script("exit 0");
  setenv("QUOR_QUORD", program.c_str(), 1);
  EXPECT_EQ(ServiceProgram(), program);
  setenv("QUOR_QUORD", "/nonexistent/quord", 1);
  EXPECT_EQ(ServiceProgram(), "");
  setenv("QUOR_QUORD", program.c_str(), 1);
  setenv("QUOR_AUTOSTART", "0", 1);
  EXPECT_EQ(ServiceProgram(), "");
}

TEST_F(PathsTest, TheSurroundingServiceIsToldFromSessionsAndApplications) {
  const std::string file = m_folder + "/cgroup";
  const auto inside = [&file](const std::string& text) {
    std::ofstream(file) << text;
    return SurroundingService(file);
  };
  EXPECT_EQ(inside("0::/system.slice/orders.service\n"), "orders.service");
  EXPECT_EQ(inside("0::/system.slice/system-web.slice/web@1.service/workers\n"), "web@1.service");
  EXPECT_EQ(inside("4:memory:/x.service\n1:name=systemd:/system.slice/cron.service\n0::/\n"),
            "cron.service");
  const std::string user = "0::/user.slice/user-1000.slice/user@1000.service";
  EXPECT_EQ(inside(user + "/app.slice/backup.service\n"), "backup.service");
  EXPECT_EQ(inside(user + "/app.slice/app-editor@1f.service\n"), "");
  EXPECT_EQ(inside(user + "/app.slice/tab-3.scope\n"), "");
  EXPECT_EQ(inside(user + "/init.scope\n"), "");
  EXPECT_EQ(inside("0::/user.slice/user-1000.slice/session-3.scope\n"), "");
  EXPECT_EQ(inside("0::/system.slice/box.service/box-1.scope\n"), "");
  EXPECT_EQ(inside("0::/\n"), "");
  EXPECT_EQ(inside("4:memory:/x.service\n"), "");
  EXPECT_EQ(inside(""), "");
  EXPECT_EQ(SurroundingService(m_folder + "/none"), "");
}

TEST_F(PathsTest, WhatWasReadOfTheEnvironmentStaysWhateverTheApplicationChangesInIt) {
  const std::string program = Script("exit 0");
  setenv("QUOR_QUORD", program.c_str(), 1);
  const ServiceEnvironment environment = ReadServiceEnvironment();
  setenv("QUOR_SOCKET", "/x/y.sock", 1);
  setenv("QUOR_AUTOSTART", "0", 1);
  EXPECT_EQ(ServiceSocketPath(environment), m_folder + "/quor/quord.sock");
  EXPECT_EQ(ServiceProgram(environment), program);
  ASSERT_EQ(mkdir((m_folder + "/loose").c_str(), 0700), 0);
  ASSERT_EQ(chmod((m_folder + "/loose").c_str(), 0777), 0);
  setenv("QUOR_SOCKET", (m_folder + "/loose/y.sock").c_str(), 1);
  EXPECT_FALSE(SocketFolderIsSafe(m_folder + "/loose/y.sock", nullptr, environment));
}

TEST_F(PathsTest, AStartedServiceHasASessionOfItsOwnNoDescriptorsAndIsNobodysChild) {
  const std::string reported = m_folder + "/told";
  const std::string program =
      Script("{ echo $$ $(ps -o sid= -p $$) $(pwd); readlink /proc/$$/fd/*; } > " + reported +
             ".new; mv " + reported + ".new " + reported);
  int leak[2];
  ASSERT_EQ(pipe(leak), 0);
  ASSERT_TRUE(StartService(program));
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(20);
  while (!std::filesystem::exists(reported)) {
    ASSERT_LT(std::chrono::steady_clock::now(), deadline);
    std::this_thread::yield();
  }
  pid_t pid = 0, session = 0;
  std::string folder, descriptor;
  std::ifstream said(reported);
  said >> pid >> session >> folder;
  EXPECT_GT(pid, 0);
  EXPECT_NE(session, getsid(0));
  EXPECT_EQ(folder, "/");
  struct stat status {};
  ASSERT_EQ(fstat(leak[0], &status), 0);
  const std::string ours = "pipe:[" + std::to_string(status.st_ino) + "]";
  int descriptors = 0;
  while (said >> descriptor) {
    ++descriptors;
    EXPECT_NE(descriptor, ours);
  }
  EXPECT_GE(descriptors, 3);
  EXPECT_EQ(waitpid(-1, nullptr, WNOHANG | __WALL), -1);
  EXPECT_EQ(errno, ECHILD);
  close(leak[0]);
  close(leak[1]);
}

TEST_F(PathsTest, AProgramThatCannotBeRunIsNotStarted) {
  EXPECT_FALSE(StartService(m_folder + "/none"));
}

}  // namespace
