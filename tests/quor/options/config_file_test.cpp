#include "quor/options/config_file.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <fstream>

#include "support/temp_dir.h"

namespace {

std::vector<std::string> FaultsOf(const std::string& text) {
  return ConfigFile::Read(text).faults;
}

TEST(ConfigFileTest, HasTheWordsOfTheOptions) {
  const ConfigFile file = ConfigFile::Read(
      "# of this machine\n"
      "listen = 0.0.0.0:7447   # all\n"
      "  listen=[::1]:9000\r\n"
      "\n"
      "log-level = debug\n"
      "state-dir = \"/var/lib/with # sign\"\n"
      "keys-dir = /etc/quor/keys\n"
      "crl = /etc/ssl/lists.pem\n"
      "role-from = san\n"
      "map-role = configure=spiffe://example.org/ops\n"
      "map-role = monitor=desk.example.org\n"
      "takers = 2\n"
      "taker-store = 16\n"
      "default-settings = Info+Stack");
  EXPECT_TRUE(file.faults.empty()) << file.faults.front();
  ServiceSettings settings;
  settings.Take(file.options);
  EXPECT_EQ(settings.listen, (std::vector<std::string>{"0.0.0.0:7447", "[::1]:9000"}));
  EXPECT_EQ(settings.logLevel, LogLevel::Debug);
  EXPECT_EQ(settings.stateFolder, "/var/lib/with # sign");
  EXPECT_EQ(settings.keysFolder, "/etc/quor/keys");
  EXPECT_EQ(settings.revoked, "/etc/ssl/lists.pem");
  EXPECT_EQ(settings.defaultSettings, 0x201u);
  EXPECT_EQ(settings.takers, 2u);
  EXPECT_EQ(settings.takerStore, 16u);
  EXPECT_TRUE(settings.roles.fromAltNames);
  const RoleRules expected{true,
                           {{quor::wire::ROLE_CONFIGURE, "spiffe://example.org/ops"},
                            {quor::wire::ROLE_MONITOR, "desk.example.org"}}};
  EXPECT_EQ(settings.roles, expected);
}

TEST(ConfigFileTest, AByteOrderMarkOfAnEditorIsNoPartOfAWord) {
  const ConfigFile file = ConfigFile::Read("\xEF\xBB\xBFgroup = desk\n");
  EXPECT_TRUE(file.faults.empty()) << file.faults.front();
  ASSERT_EQ(file.options.size(), 1u);
  EXPECT_EQ(file.options[0].word, "group");
  EXPECT_EQ(FaultsOf("log-level = info\n\xEF\xBB\xBFgroup = desk\n").size(), 1u);
}

TEST(ConfigFileTest, TheCommandLineReplacesWhatTheFileSays) {
  ServiceSettings settings;
  settings.Take(
      ConfigFile::Read("listen = 10.0.0.1:1\nlisten = 10.0.0.2:2\nlog-level = debug\n").options);
  settings.Take({{"listen", "127.0.0.1:3"}});
  EXPECT_EQ(settings.listen, std::vector<std::string>{"127.0.0.1:3"});
  EXPECT_EQ(settings.logLevel, LogLevel::Debug);
}

TEST(ConfigFileTest, EveryFaultIsReportedWithItsLineAndTheNearMiss) {
  using Lines = std::vector<std::string>;
  EXPECT_EQ(FaultsOf("\nlisen = 0.0.0.0:1\nlog-level = loud\n"),
            (Lines{"line 2: there is no option \"lisen\"; did you mean \"listen\"?",
                   "line 3: log-level: \"loud\" is no level"}));
  EXPECT_EQ(FaultsOf("[quord]"),
            Lines{"line 1: sections are not known here: the words stand alone"});
  EXPECT_EQ(FaultsOf("listen"), Lines{"line 1: \"listen\" is not WORD = VALUE"});
  EXPECT_EQ(FaultsOf("listen = "), Lines{"line 1: listen: a value is missing"});
  EXPECT_EQ(FaultsOf("listen = here"), Lines{"line 1: listen: \"here\" is not ADDRESS:PORT"});
  EXPECT_EQ(FaultsOf("foreground = yes"),
            Lines{"line 1: \"foreground\" belongs to the command line"});
  EXPECT_EQ(FaultsOf("keys-dir = keys"),
            Lines{"line 1: keys-dir: \"keys\" is not an absolute path"});
  EXPECT_EQ(FaultsOf("log-level = info\n\nlog-level = info"),
            Lines{"line 3: log-level stands already in line 1"});
  EXPECT_EQ(FaultsOf("role-from = sam"),
            Lines{"line 1: role-from: \"sam\" is none of ou, san; did you mean \"san\"?"});
  EXPECT_EQ(FaultsOf("map-role = king=x"),
            Lines{"line 1: map-role: \"king=x\" is not ROLE=TEXT with the role monitor, configure "
                  "or forward"});
  EXPECT_EQ(FaultsOf(std::string("crl = /a\0b", 10)),
            Lines{"line 1: control characters are not known here"});
  EXPECT_EQ(FaultsOf("crl = /" + std::string(5000, 'x')),
            Lines{"line 1: crl: the value is too long"});
}

TEST(ConfigFileTest, FaultsAndTheirTextsAreBounded) {
  std::string text;
  for (int i = 0; i < 100; ++i) text += std::string(500, 'w') + "\n";
  const auto faults = FaultsOf(text);
  ASSERT_EQ(faults.size(), ConfigFile::kFaultsMax);
  EXPECT_LT(faults.front().size(), 150u);
}

TEST(ConfigFileTest, AFileThatAnotherUserMayChangeOrThatIsTooLongIsRefused) {
  const TempDir dir;
  const std::string path = dir.File("quord.conf");
  std::string why;
  EXPECT_FALSE(ConfigFile::Open(path, &why));
  EXPECT_EQ(why, path + ": No such file or directory");
  std::ofstream(path) << "log-level = debug\n";
  chmod(path.c_str(), 0644);
  EXPECT_TRUE(ConfigFile::Open(path, &why)) << why;
  chmod(path.c_str(), 0646);
  EXPECT_FALSE(ConfigFile::Open(path, &why));
  EXPECT_EQ(why, path + ": another user may change it");
  chmod(path.c_str(), 0644);
  std::ofstream(path) << std::string(ConfigFile::kBytesMax + 1, '#');
  EXPECT_FALSE(ConfigFile::Open(path, &why));
  EXPECT_EQ(why, path + ": is longer than 64 KiB");
  EXPECT_FALSE(ConfigFile::Open(dir.Path(), &why));
}

}  // namespace
