// The units of the service manager, and what it does with them.
#include <filesystem>
#include <fstream>

#include "quord_client.h"

namespace {

namespace fs = std::filesystem;

class Units : public ::testing::Test {
 protected:
  // What systemd-analyze says of the units, which must be nothing.
  std::string Verify(const std::string& scope, const std::vector<fs::path>& units) {
    std::string command =
        "XDG_RUNTIME_DIR='" + m_dir.Path() + "' systemd-analyze " + scope + " --man=no verify";
    for (const fs::path& unit : units) command += " '" + unit.string() + "'";
    FILE* const pipe = popen((command + " 2>&1").c_str(), "r");
    std::string said;
    for (char piece[256]; std::fgets(piece, sizeof piece, pipe);) said += piece;
    const int status = pclose(pipe);
    return status == 0 ? said : said + "exit status " + std::to_string(WEXITSTATUS(status));
  }
  // A copy that names the program where it is here.
  fs::path Copy(const std::string& from, const std::string& to) {
    std::string text = ReadAll(std::string(getenv("QUORD_PACKAGING")) + "/systemd/" + from);
    for (const std::string key : {"ExecStart=", "ExecReload="})
      if (const std::size_t at = text.find(key + "quord"); at != text.npos)
        text.replace(at, key.size() + 5, key + getenv("QUORD"));
    const fs::path path = m_dir.File(to);
    std::ofstream(path) << text;
    return path;
  }
  TempDir m_dir;
};

TEST_F(Units, OfTheUserAndOfTheSystemAreRight) {
  EXPECT_EQ(Verify("--user", {Copy("user/quord.service", "quord.service"),
                              Copy("user/quord.socket", "quord.socket")}),
            "");
  EXPECT_EQ(Verify("--system", {Copy("system/quord@.service", "quord@orders.service"),
                                Copy("system/quord@.socket", "quord@orders.socket")}),
            "");
  EXPECT_EQ(Verify("--system", {Copy("system/quord.service", "quord.service"),
                                Copy("system/quord.socket", "quord.socket")}),
            "");
  // The check can tell a unit that is wrong.
  std::ofstream(m_dir.File("bad.service")) << "[Service]\nType=none-such\nExecStart=/bin/true\n";
  EXPECT_NE(Verify("--user", {m_dir.File("bad.service")}), "");
}

double ExposureOf(const fs::path& unit) {
  FILE* const pipe = popen(
      ("systemd-analyze security --offline=true --no-pager '" + unit.string() + "' 2>&1").c_str(),
      "r");
  std::string said;
  for (char piece[256]; std::fgets(piece, sizeof piece, pipe);) said += piece;
  EXPECT_EQ(pclose(pipe), 0) << said;
  const std::string words = "Overall exposure level for " + unit.filename().string() + ": ";
  const std::size_t at = said.find(words);
  EXPECT_NE(at, said.npos) << said;
  return at == said.npos ? 10.0 : std::stod(said.substr(at + words.size()));
}

TEST_F(Units, OfAnAccountAndOfTheMachineAreExposedLittle) {
  EXPECT_LE(ExposureOf(Copy("system/quord@.service", "quord@orders.service")), 3.0);
  const fs::path unit = Copy("system/quord.service", "quord.service");
  EXPECT_LE(ExposureOf(unit), 3.0);
  // The measure can tell a unit without any defence.
  std::ofstream(unit) << "[Service]\nExecStart=/bin/true\n";
  EXPECT_GT(ExposureOf(unit), 9.0);
}

// A program takes any socket there for that of a service, and looks for no other one.
TEST_F(Units, TheSocketOfTheMachineGoesWhenItIsStopped) {
  const std::string text =
      ReadAll(std::string(getenv("QUORD_PACKAGING")) + "/systemd/system/quord.socket");
  EXPECT_NE(text.find("\nListenStream=/run/quor/quord.sock\n"), text.npos);
  EXPECT_NE(text.find("\nRemoveOnStop=yes\n"), text.npos);
}

// Otherwise the folder for the files of all accounts could not be made.
TEST_F(Units, OfTheMachineMaySetTheGroupOfItsFolder) {
  const std::string text =
      ReadAll(std::string(getenv("QUORD_PACKAGING")) + "/systemd/system/quord.service");
  EXPECT_NE(text.find("NoNewPrivileges=yes"), text.npos);
  EXPECT_EQ(text.find("RestrictSUIDSGID=yes"), text.npos);
}

// The socket on which a manager listens for what its services say.
class ManagersEnd {
 public:
  explicit ManagersEnd(const std::string& path) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    path.copy(address.sun_path, sizeof address.sun_path - 1);
    EXPECT_EQ(bind(m_socket, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
    setenv("NOTIFY_SOCKET", path.c_str(), 1);
  }
  ~ManagersEnd() {
    unsetenv("NOTIFY_SOCKET");
    close(m_socket);
  }
  // "" if nothing is said in that time.
  std::string Hears(int milliseconds = 20000) {
    char words[64] = {};
    pollfd ready{m_socket, POLLIN, 0};
    if (poll(&ready, 1, milliseconds) != 1) return "";
    const ssize_t length = recv(m_socket, words, sizeof words, 0);
    return {words, static_cast<std::size_t>(std::max<ssize_t>(length, 0))};
  }

 private:
  const int m_socket = socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
};

TEST_F(Units, TheManagerIsNotifiedWhenTheServiceServesAndEnds) {
  QuordProcess quord;
  ManagersEnd manager(quord.Folder().File("notify"));
  quord.Start();
  EXPECT_EQ(manager.Hears(), "READY=1");
  EXPECT_EQ(manager.Hears(0), "");
  EXPECT_EQ(quord.Stop(), 0);
  EXPECT_EQ(manager.Hears(), "STOPPING=1");
}

TEST_F(Units, AServiceWhoseLoopStandsStillDoesNotSayThatItLives) {
  QuordProcess quord;
  ManagersEnd manager(quord.Folder().File("notify"));
  setenv("WATCHDOG_USEC", "400000", 1);
  quord.Start();
  unsetenv("WATCHDOG_USEC");
  EXPECT_EQ(manager.Hears(), "READY=1");
  for (int i = 0; i < 3; ++i) EXPECT_EQ(manager.Hears(), "WATCHDOG=1");
  kill(quord.Pid(), SIGSTOP);
  ASSERT_TRUE(WaitFor([&] {
    const std::string status = ReadAll("/proc/" + std::to_string(quord.Pid()) + "/status");
    return status.find("\nState:\tT") != status.npos;
  }));
  while (!manager.Hears(0).empty()) {
  }
  EXPECT_EQ(manager.Hears(1000), "");
  kill(quord.Pid(), SIGCONT);
  EXPECT_EQ(manager.Hears(), "WATCHDOG=1");
  EXPECT_EQ(quord.Stop(), 0);
}

}  // namespace
