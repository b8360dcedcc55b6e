// The command line of quord, as its user meets it.
#include <sys/stat.h>

#include <filesystem>
#include <nlohmann/json.hpp>
#include <regex>
#include <set>

#include "quord_client.h"

namespace {

class CommandLine : public ::testing::Test {
 protected:
  QuordProcess quord;
};

TEST_F(CommandLine, HelpHasExamplesAndTheVersionIsPrinted) {
  EXPECT_EQ(quord.Run({"--help"}), 0);
  EXPECT_NE(quord.Log().find("Examples:"), std::string::npos);
  EXPECT_NE(quord.Log().find("--log-level"), std::string::npos);
  EXPECT_EQ(quord.Run({"keys", "issue", "--help"}), 0);
  EXPECT_EQ(quord.Run({"--version"}), 0);
  EXPECT_NE(quord.Log().find("quord 3."), std::string::npos);
}

TEST_F(CommandLine, WrongUseIsTwo) {
  for (const std::vector<std::string>& arguments : {std::vector<std::string>{"--no-such-option"},
                                                    {"--log-level", "loud"},
                                                    {"keys"},
                                                    {"keys", "issue", "x"},
                                                    {"keys", "issue", "x", "--role", "king"},
                                                    {"--default-settings", "much"},
                                                    {"surplus"}})
    EXPECT_EQ(quord.Run(arguments), 2) << arguments.back();
}

TEST_F(CommandLine, AnOptionOfTheServiceBeforeACommandIsRefused) {
  quord.Start();
  const std::size_t before = quord.Log().size();
  EXPECT_EQ(quord.Run({"--socket-dir", quord.Folder().File("elsewhere"), "stop"}), 2);
  EXPECT_TRUE(quord.Says(
      "quord: --socket-dir: it is for the service, and has no effect before \"stop\"; what that "
      "takes stands behind it"))
      << quord.Log().substr(before);
  EXPECT_EQ(quord.Run({"-c", quord.Folder().File("own.conf"), "check-config"}), 2);
  EXPECT_EQ(quord.Run({"-f", "keys", "init"}), 2);
  EXPECT_FALSE(std::filesystem::exists(quord.KeysFolder()));
  EXPECT_EQ(quord.Run({"status"}), 0);
}

TEST_F(CommandLine, AValueThatIsRefusedIsReportedWithItsOptionAndWhatItTakes) {
  for (const char* days : {"0", "36501", "99999999999999999999", "-1", "1.5", "a year"}) {
    const std::size_t before = quord.Log().size();
    EXPECT_EQ(quord.Run({"keys", "init", "--days", days}), 2) << days;
    const std::string reported = quord.Log().substr(before);
    const bool number = days == std::string("0") || days == std::string("36501");
    EXPECT_EQ(reported.find(number ? "quord: --days: takes 1 to 36500\n"
                                   : "quord: --days: \"" + std::string(days) +
                                         "\" is not a whole number\n"),
              0u)
        << reported;
  }
  EXPECT_FALSE(std::filesystem::exists(quord.KeysFolder()));
  for (const std::vector<std::string>& line :
       {std::vector<std::string>{"--foreground=0"}, {"status", "--json=1"}, {"--version=yes"}}) {
    const std::size_t before = quord.Log().size();
    EXPECT_EQ(quord.Run(line), 2) << line.back();
    EXPECT_NE(quord.Log().find(" takes no value\nTry 'quord", before), std::string::npos);
  }
}

TEST_F(CommandLine, WhatIsNearlyRightIsNamed) {
  EXPECT_EQ(quord.Run({"stats"}), 2);
  EXPECT_NE(quord.Log().find("quord: there is no command \"stats\"; did you mean \"status\"?\n"
                             "Try 'quord --help'.\n"),
            std::string::npos);
  EXPECT_EQ(quord.Run({"keys", "isue"}), 2);
  EXPECT_NE(quord.Log().find("\"isue\"; did you mean \"issue\"?\nTry 'quord keys --help'.\n"),
            std::string::npos);
  EXPECT_EQ(quord.Run({"--default-settings", "suport"}), 2);
  EXPECT_NE(quord.Log().find("did you mean \"support\"?\n"), std::string::npos);
}

TEST_F(CommandLine, WithoutForegroundItServesInTheBackgroundWhenTheCommandReturns) {
  EXPECT_EQ(quord.Run({"status"}), 3);
  EXPECT_EQ(quord.Run({}), 0);
  EXPECT_EQ(quord.Run({"status"}), 0);
  QuordClient client(quord.SocketPath());
  EXPECT_TRUE(client.Hello(quor::wire::ROLE_MONITOR));
  const std::string log = quord.Folder().File("state/quord.log");
  EXPECT_TRUE(WaitFor([&] { return ReadAll(log).find("ready on") != std::string::npos; }));
  client.Close();
  kill(std::stoi(ReadAll(quord.Folder().File("quord.lock"))), SIGTERM);
  EXPECT_TRUE(WaitFor([&] { return access(quord.SocketPath().c_str(), F_OK) != 0; }));
  EXPECT_TRUE(WaitFor([&] { return quord.Run({"status"}) == 3; }));
  EXPECT_TRUE(WaitFor([&] { return ReadAll(log).find("ended") != std::string::npos; }));
}

TEST_F(CommandLine, OneThatIsStartedWhileAnotherEndsTakesItsPlace) {
  quord.Start();
  QuordClient client(quord.SocketPath());
  ASSERT_TRUE(client.Hello(quor::wire::ROLE_MONITOR));
  const pid_t first = quord.Pid();
  kill(first, SIGTERM);
  // The client does not close its end, so that the first service waits for it before it ends.
  quord.Start();
  EXPECT_EQ(WaitForExit(first), 0);
  EXPECT_EQ(quord.Run({"status"}), 0);
  EXPECT_EQ(quord.Stop(), 0);
}

TEST_F(CommandLine, FoldersMayBeNamedFromWhereItIsStarted) {
  const std::string folder = quord.Folder().Path();
  mkdir((folder + "/sockets").c_str(), 0700);
  const auto here = [&](std::vector<std::string> arguments) {
    arguments.insert(arguments.end(), {"--socket-dir", "sockets"});
    return WaitForExit(quord.Spawn(arguments, "env -C " + folder));
  };
  EXPECT_EQ(here({"--state-dir", "kept"}), 0);
  EXPECT_EQ(here({"status"}), 0);
  const std::string socket = folder + "/sockets/quord.sock";
  const pid_t pid = std::stoi(ReadAll(folder + "/sockets/quord.lock"));
  kill(pid, SIGTERM);
  EXPECT_TRUE(WaitFor([&] { return access(socket.c_str(), F_OK) != 0; }));
  EXPECT_EQ(access((folder + "/kept/state.db").c_str(), F_OK), 0);
}

TEST_F(CommandLine, AStateThatCannotBeKeptIsReportedAndTracesAreTakenAllTheSame) {
  std::filesystem::create_directories(quord.Folder().File("state/state.db"));
  quord.Start();
  EXPECT_TRUE(quord.Says("what is configured will not survive a restart"));
  QuordClient client(quord.SocketPath());
  EXPECT_TRUE(client.Hello(quor::wire::ROLE_MONITOR));
}

TEST_F(CommandLine, WithoutAFolderForItsStateItServesAndSaysSoEverywhere) {
  const std::string words = "/proc/nowhere: No such file or directory; what is configured will not";
  quord.Start({"--state-dir", "/proc/nowhere"});
  EXPECT_TRUE(quord.Says("error: " + words));
  QuordClient client(quord.SocketPath());
  EXPECT_TRUE(client.Hello(quor::wire::ROLE_MONITOR));
  EXPECT_EQ(quord.Run({"status"}), 0);
  EXPECT_TRUE(quord.Says("  trouble: " + words));
  EXPECT_EQ(quord.Stop(), 0);
  // In the background as well, where its own log is beside the socket then.
  EXPECT_EQ(quord.Run({"--state-dir", "/proc/nowhere"}), 0);
  EXPECT_TRUE(quord.Says("quord: " + words));
  EXPECT_TRUE(WaitFor([&] {
    return ReadAll(quord.Folder().File("quord.log")).find("error: " + words) != std::string::npos;
  }));
  kill(std::stoi(ReadAll(quord.Folder().File("quord.lock"))), SIGTERM);
  EXPECT_TRUE(WaitFor([&] { return quord.Run({"status"}) == 3; }));
}

TEST_F(CommandLine, BesideTheLongestSocketPathSegmentsAreFoundToo) {
  constexpr std::size_t kLongest = 107;
  std::string folder = quord.Folder().Path() + "/";
  folder.append(kLongest - std::string("/quord.sock").size() - folder.size(), 'x');
  ASSERT_EQ(folder.size() + 11, kLongest);
  quord.Start({"--socket-dir", folder});
  EXPECT_EQ(access((folder + "/segments/.").c_str(), F_OK), 0);
  EXPECT_EQ(quord.Log().find("may be lost"), std::string::npos);
  QuordClient client;
  EXPECT_TRUE(client.Connect(folder + "/quord.sock"));
  RemoveSegments(folder);
}

TEST_F(CommandLine, AServiceWithNothingToDoSleeps) {
  quord.Start();
  const auto wakes = [&] {
    const std::string status = ReadAll("/proc/" + std::to_string(quord.Pid()) + "/status");
    const std::string name = "\nvoluntary_ctxt_switches:";
    return std::stol(status.substr(status.find(name) + name.size()));
  };
  // Measured until it holds: the start and a few rare tasks wake the service more often.
  EXPECT_TRUE(WaitFor([&] {
    const long before = wakes();
    poll(nullptr, 0, 1000);
    return wakes() - before <= 1;
  }));
}

TEST_F(CommandLine, WhatItWritesIsForItsUserAlone) {
  const mode_t before = umask(0);
  EXPECT_EQ(quord.Run({}), 0);
  umask(before);
  for (const char* const name :
       {"state", "state/state.db", "state/quord.log", "quord.lock", "quord.sock", "segments/"}) {
    struct stat status {};
    ASSERT_EQ(lstat(quord.Folder().File(name).c_str(), &status), 0) << name;
    EXPECT_EQ(status.st_mode & 077u, 0u) << name;
  }
  kill(std::stoi(ReadAll(quord.Folder().File("quord.lock"))), SIGTERM);
  EXPECT_TRUE(WaitFor([&] { return quord.Run({"status"}) == 3; }));
}

TEST_F(CommandLine, StatusForProgramsIsJson) {
  quord.Start();
  const std::size_t before = quord.Log().size();
  EXPECT_EQ(quord.Run({"status", "--json"}), 0);
  const std::string log = quord.Log();
  const std::size_t begin = log.find("{\n", before), end = log.find("\n}", begin);
  ASSERT_NE(end, std::string::npos);
  const auto answer = nlohmann::json::parse(log.substr(begin, end + 2 - begin));
  EXPECT_EQ(answer.at("running"), true);
  EXPECT_EQ(answer.at("pid"), quord.Pid());
  EXPECT_TRUE(answer.at("apps").empty());
}

TEST_F(CommandLine, KeysAreNeverOverwritten) {
  EXPECT_EQ(quord.Run({"keys", "init"}), 0);
  const std::string key = ReadAll(quord.KeysFolder() + "/ca.key");
  EXPECT_EQ(quord.Run({"keys", "init"}), 1);
  EXPECT_EQ(ReadAll(quord.KeysFolder() + "/ca.key"), key);
  using std::filesystem::perms;
  EXPECT_EQ(std::filesystem::status(quord.KeysFolder() + "/ca.key").permissions(),
            perms::owner_read | perms::owner_write);
}

TEST_F(CommandLine, ListeningWithoutKeysOrAtNoAddressIsRefused) {
  EXPECT_EQ(quord.Run({"--foreground", "--listen", "127.0.0.1:0"}), 1);
  EXPECT_TRUE(quord.Says("server.key"));
  EXPECT_EQ(quord.Run({"keys", "init"}), 0);
  for (const char* const nowhere : {"somewhere", "127.0.0.1:", "127.0.0.1:80x", "[::1:80", "::1"})
    EXPECT_EQ(quord.Run({"--foreground", "--listen", nowhere}), 2) << nowhere;
  EXPECT_TRUE(quord.Says("is not ADDRESS:PORT"));
}

TEST_F(CommandLine, ASocketHandedOverByTheSystemIsUsedAndKept) {
  const int listener = socket(AF_UNIX, SOCK_STREAM, 0);
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  quord.SocketPath().copy(address.sun_path, sizeof address.sun_path - 1);
  ASSERT_EQ(bind(listener, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
  ASSERT_EQ(listen(listener, 16), 0);
  QuordClient client;
  // A client may come before the service does.
  ASSERT_TRUE(client.Connect(quord.SocketPath()));
  const pid_t pid = fork();
  if (pid == 0) {
    dup2(listener, 3);
    setenv("LISTEN_PID", std::to_string(getpid()).c_str(), 1);
    setenv("LISTEN_FDS", "1", 1);
    execl(getenv("QUORD"), "quord", "--foreground", "--log-level", "error", nullptr);
    _exit(127);
  }
  EXPECT_TRUE(client.Hello(quor::wire::ROLE_MONITOR));
  client.Close();
  kill(pid, SIGTERM);
  EXPECT_EQ(WaitForExit(pid), 0);
  EXPECT_EQ(access(quord.SocketPath().c_str(), F_OK), 0);  // the system's, not ours to remove
  close(listener);
}

// The service manager, which handed the socket over, does not make its name again.
TEST_F(CommandLine, AServiceWithAHandedSocketWhoseFolderGoesAwayIsReachedAgain) {
  const int listener = socket(AF_UNIX, SOCK_STREAM, 0);
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  quord.SocketPath().copy(address.sun_path, sizeof address.sun_path - 1);
  ASSERT_EQ(bind(listener, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
  ASSERT_EQ(listen(listener, 16), 0);
  const pid_t pid = fork();
  if (pid == 0) {
    dup2(listener, 3);
    setenv("LISTEN_PID", std::to_string(getpid()).c_str(), 1);
    setenv("LISTEN_FDS", "1", 1);
    execl(getenv("QUORD"), "quord", "--foreground", "--log-level", "error", nullptr);
    _exit(127);
  }
  QuordClient client;
  EXPECT_TRUE(client.Connect(quord.SocketPath()) && client.Hello(quor::wire::ROLE_CONFIGURE));
  RemoveSegments(quord.Folder().Path());
  std::filesystem::remove_all(quord.Folder().Path());
  EXPECT_TRUE(WaitFor([&] { return client.Connect(quord.SocketPath()); }));
  EXPECT_TRUE(client.Hello(quor::wire::ROLE_CONFIGURE));
  client.Close();
  kill(pid, SIGTERM);
  EXPECT_EQ(WaitForExit(pid), 0);
  close(listener);
}

TEST_F(CommandLine, ThePackagedManualAndCompletionsKnowEveryOption) {
  const std::string folder = getenv("QUORD_PACKAGING");
  std::string manual = ReadAll(folder + "/man/quord.1");
  for (std::size_t at; (at = manual.find("\\-")) != std::string::npos;) manual.replace(at, 2, "-");
  for (const std::vector<std::string>& command : {std::vector<std::string>{"--help"},
                                                  {"keys", "init", "--help"},
                                                  {"keys", "issue", "--help"},
                                                  {"status", "--help"},
                                                  {"stop", "--help"},
                                                  {"reload", "--help"},
                                                  {"check-config", "--help"}})
    ASSERT_EQ(quord.Run(command), 0);
  const std::string help = quord.Log();
  const std::regex anOption("\n  (?:-.,)?--([a-z-]+)");
  std::set<std::string> options;
  for (std::sregex_iterator found(help.begin(), help.end(), anOption), end; found != end; ++found)
    if ((*found)[1] != "help") options.insert((*found)[1]);
  EXPECT_GE(options.size(), 10u) << help;
  for (const std::string& option : options) {
    EXPECT_NE(manual.find("--" + option), std::string::npos) << option;
    for (const std::string file : {"quord.bash", "_quord"})
      EXPECT_NE(ReadAll(folder + "/completions/" + file).find("--" + option), std::string::npos)
          << file << " " << option;
    EXPECT_NE(ReadAll(folder + "/completions/quord.fish").find("-l " + option), std::string::npos)
        << option;
  }
}

}  // namespace
