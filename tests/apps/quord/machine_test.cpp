// One service for all accounts of a machine: it has no rights, and everybody's traces.
#include <fcntl.h>
#include <pwd.h>

#include <filesystem>
#include <quor/quor.hpp>

#include "machine_fixture.h"

namespace {

QUOR_POINT(machine_point, "Net", "Connect");

class MachineService : public MachineFixture {
 protected:
  // Waits, traces `count` numbered lines, reports, and waits.
  static int Trace(TracedChild& self, const char* app, int count) {
    self.AwaitGo();
    quor_application(app);
    for (int i = 0; i < count; ++i) QUOR_TRACE_INFO(machine_point, "{} {}", app, i);
    self.Report(1);
    self.AwaitGo();
    return 0;
  }
  static std::string ShownPid(const TracedChild& child, const std::string& account) {
    return std::to_string(child.Pid()) + " " + account;
  }
};

TEST_F(MachineService, WithoutRootOrAUserItSaysSo) {
  if (!IsRoot()) {
    EXPECT_EQ(quord.Run({"--machine", "--foreground"}), 1);
    EXPECT_TRUE(quord.Says(Place()));
    return;
  }
  EXPECT_EQ(quord.Run({"--machine", "--user", "no-such-user"}), 1);
  EXPECT_TRUE(quord.Says("there is no user \"no-such-user\" to serve all accounts as"));
  EXPECT_EQ(quord.Run({"--machine", "--user", "root"}), 1);
  EXPECT_TRUE(quord.Says("\"root\" has rights of root: name another user"));
  EXPECT_EQ(quord.Run({"--machine", "--user", "daemon", "--socket-dir", "/tmp"}), 2);
  EXPECT_TRUE(quord.Says("socket-dir is not for it"));
}

TEST_F(MachineService, AFolderWithFilesOfAnotherUserIsNotGivenAway) {
  if (!IsRoot()) return;  // there is nobody to give it to
  const TempDir root;
  root.File("passwords", "of root");
  const auto isRoots = [&root] {
    struct stat status {};
    return stat(root.Path().c_str(), &status) == 0 && status.st_uid == 0;
  };
  EXPECT_EQ(quord.Run({"--machine", "--user", "daemon", "--state-dir", root.Path()}), 1);
  EXPECT_TRUE(quord.Says(root.Path() + ": is not empty and does not belong to \"daemon\""));
  EXPECT_TRUE(isRoots());
  setenv("QUOR_MACHINE_SOCKET", root.File("quord.sock").c_str(), 1);
  EXPECT_EQ(quord.Run({"--machine", "--user", "daemon"}), 1);
  EXPECT_TRUE(isRoots());
}

// Its user could read whatever is open.
TEST_F(MachineService, StartedByRootItKeepsNothingThatRootHadOpen) {
  if (!IsRoot()) return;  // there is nothing that it must not have
  const TempDir root;
  const int secret = open(root.File("secret", "of root").c_str(), O_RDONLY);
  const int high = fcntl(secret, F_DUPFD, 100);
  ASSERT_GE(high, 100);
  Start();
  close(secret);
  close(high);
  const std::string links = "/proc/" + std::to_string(quord.Pid()) + "/fd";
  int open = 0;
  for (const auto& entry : std::filesystem::directory_iterator(links)) {
    std::error_code gone;
    const std::string target = std::filesystem::read_symlink(entry.path(), gone).string();
    EXPECT_EQ(target.find("secret"), target.npos) << entry.path();
    ++open;
  }
  EXPECT_GT(open, 3);
}

TEST_F(MachineService, StartedByRootItKeepsNoRight) {
  if (!IsRoot()) return;  // there is no right to give up
  Start();
  const std::string status = ReadAll("/proc/" + std::to_string(quord.Pid()) + "/status");
  for (const char* const line : {"\nUid:\t1\t1\t1\t1\n", "\nGid:\t1\t1\t1\t1\n", "\nGroups:\t \n",
                                 "\nNoNewPrivs:\t1\n", "\nCapPrm:\t0000000000000000\n",
                                 "\nCapEff:\t0000000000000000\n", "\nCapInh:\t0000000000000000\n"})
    EXPECT_NE(status.find(line), status.npos) << line << status;
  struct stat place {};
  ASSERT_EQ(stat(Place().c_str(), &place), 0);
  EXPECT_EQ(place.st_mode & 07777, 0755u);
  EXPECT_EQ(place.st_uid, kMachineUid);
  ASSERT_EQ(stat(Socket().c_str(), &place), 0);
  EXPECT_EQ(place.st_mode & 0777, 0666u);
  EXPECT_EQ(quord.Run({"status", "--socket-dir", Place()}), 0);
  EXPECT_TRUE(quord.Says("quord runs on "));
  EXPECT_EQ(quord.Run({"stop", "--socket-dir", Place()}), 0);
  EXPECT_EQ(quord.Wait(), 0);
  EXPECT_NE(access((Place() + "/segments").c_str(), F_OK), 0) << "nothing stays in memory";
}

TEST_F(MachineService, ProgramsOfAllAccountsAreInOneViewEachWithItsAccount) {
  if (!IsRoot()) return;  // there is one account
  const auto games = Program(kGames, [](TracedChild& self) { return Trace(self, "shop", 3); });
  const auto mail = Program(kMail, [](TracedChild& self) { return Trace(self, "shop", 2); });
  const auto nameless = Program(kNameless, [](TracedChild& self) { return Trace(self, "x", 1); });
  const auto root = Program(0, [](TracedChild& self) { return Trace(self, "cron", 1); });
  Start();
  QuordClient monitor;
  ASSERT_TRUE(monitor.Monitor(Socket()));
  for (const auto* const child : {&games, &mail, &nameless, &root}) {
    (*child)->Go();
    ASSERT_EQ((*child)->Reported(), 1u);
  }
  ASSERT_TRUE(WaitFor([&] { return monitor.Pump(), monitor.traces.size() == 7; }));
  std::map<std::string, int> seen;
  for (const SeenTrace& trace : monitor.traces) ++seen[trace.app + " " + trace.pid];
  EXPECT_EQ(seen, (std::map<std::string, int>{{"shop " + ShownPid(*games, "games"), 3},
                                              {"shop " + ShownPid(*mail, "mail"), 2},
                                              {"x " + ShownPid(*nameless, "65001"), 1},
                                              {"cron " + ShownPid(*root, "root"), 1}}));
  QuordClient client;
  ASSERT_TRUE(client.Connect(Socket()) && client.Hello(quor::wire::ROLE_CONFIGURE));
  EXPECT_TRUE(WaitFor([&] {
    return Listed(client) ==
           "65001/x 1 65001\ngames/shop 1 games\nmail/shop 1 mail\nroot/cron 1 root\n";
  })) << Listed(client);
  for (const auto* const child : {&games, &mail, &nameless, &root}) {
    (*child)->Go();
    EXPECT_EQ((*child)->Wait(), 0);
  }
  EXPECT_EQ(monitor.lost + monitor.gaps, 0u);
}

TEST_F(MachineService, OneKilledBeforeItsHelloIsDeliveredWithItsAccount) {
  if (!IsRoot()) return;  // there is one account
  Start();
  QuordClient monitor;
  ASSERT_TRUE(monitor.Monitor(Socket()));
  kill(quord.Pid(), SIGSTOP);
  const auto games = Program(kGames, [](TracedChild& self) { return Trace(self, "short", 50); });
  games->Go();
  ASSERT_EQ(games->Reported(), 1u);
  const std::string shown = ShownPid(*games, "games");
  games->Kill();
  kill(quord.Pid(), SIGCONT);
  ASSERT_TRUE(WaitFor([&] { return monitor.Pump(), monitor.traces.size() == 50; }));
  for (const SeenTrace& trace : monitor.traces) EXPECT_EQ(trace.pid, shown);
  EXPECT_EQ(monitor.lost, 0u);
}

TEST_F(MachineService, AServiceThatIsKilledAndStartedAgainLosesNothingOfAnyAccount) {
  if (!IsRoot()) return;  // there is one account
  const auto body = [](TracedChild& self) {
    quor_application("steady");
    for (int round = 0; round < 3; ++round) {
      self.AwaitGo();
      for (int i = 0; i < 100; ++i) QUOR_TRACE_INFO(machine_point, "{} {}", round, i);
      self.Report(static_cast<std::uint64_t>(round));
    }
    self.AwaitGo();
    return 0;
  };
  const auto games = Program(kGames, body), mail = Program(kMail, body);
  Start();
  QuordClient monitor;
  ASSERT_TRUE(monitor.Monitor(Socket()));
  for (const auto* const child : {&games, &mail}) {
    (*child)->Go();
    EXPECT_EQ((*child)->Reported(), 0u);
  }
  ASSERT_TRUE(WaitFor([&] { return monitor.Pump(), monitor.Sum() == 200; }));
  quord.Kill();
  for (const auto* const child : {&games, &mail}) {
    (*child)->Go();
    EXPECT_EQ((*child)->Reported(), 1u);
  }
  mail->Kill();  // while no service runs
  Start();
  ASSERT_TRUE(monitor.Monitor(Socket()));
  games->Go();
  EXPECT_EQ(games->Reported(), 2u);
  EXPECT_TRUE(WaitFor([&] { return monitor.Pump(), monitor.Sum() == 500; })) << monitor.Sum();
  EXPECT_EQ(monitor.lost, 0u);
  games->Go();
  EXPECT_EQ(games->Wait(), 0);
  std::set<std::string> pids;
  for (const SeenTrace& trace : monitor.traces) pids.insert(trace.pid.substr(trace.pid.find(' ')));
  EXPECT_EQ(pids, (std::set<std::string>{" games", " mail"}));
}

}  // namespace
