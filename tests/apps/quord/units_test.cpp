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
    const std::size_t at = text.find("ExecStart=quord");
    if (at != text.npos) text.replace(at, 15, std::string("ExecStart=") + getenv("QUORD"));
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
  // The check can tell a unit that is wrong.
  std::ofstream(m_dir.File("bad.service")) << "[Service]\nType=none-such\nExecStart=/bin/true\n";
  EXPECT_NE(Verify("--user", {m_dir.File("bad.service")}), "");
}

TEST_F(Units, TheManagerIsNotifiedWhenTheServiceServes) {
  QuordProcess quord;
  const int manager = socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  const std::string path = quord.Folder().File("notify");
  path.copy(address.sun_path, sizeof address.sun_path - 1);
  ASSERT_EQ(bind(manager, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
  setenv("NOTIFY_SOCKET", path.c_str(), 1);
  quord.Start();
  unsetenv("NOTIFY_SOCKET");
  char words[64] = {};
  ASSERT_TRUE(WaitFor([&] { return recv(manager, words, sizeof words, MSG_DONTWAIT) > 0; }));
  EXPECT_STREQ(words, "READY=1");
  close(manager);
}

}  // namespace
