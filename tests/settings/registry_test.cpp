#include "settings/registry.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <optional>

#include "support/folder_names.h"
#include "support/temp_dir.h"

namespace {

constexpr char kKey[] = "Software\\Zentara\\Test";

class Registry : public testing::Test {
 protected:
  Registry() : m_path(m_dir.File("settings.ini")) { SetSettingsFile(m_path); }
  ~Registry() override { SetSettingsFile(""); }

  static unsigned Number(const char* name) { return NtRegGet(HKEY_CURRENT_USER, kKey, name, 99u); }
  static std::string Text(const char* name) {
    return NtRegGet(HKEY_CURRENT_USER, kKey, name, "default");
  }
  static std::string Buffer(const char* name) {
    char bytes[4];
    NtRegGetBuf(HKEY_CURRENT_USER, kKey, name, bytes, "dflt", sizeof bytes);
    return std::string(bytes, sizeof bytes);
  }
  static void Put(const char* name, unsigned value) {
    NtRegPut(HKEY_CURRENT_USER, kKey, name, value);
  }

  TempDir m_dir;
  std::string m_path;
};

// A variable of the environment that gets its old value back.
class Variable {
 public:
  Variable(const char* name, const char* value) : m_name(name) {
    if (const char* const old = getenv(name)) m_old = old;
    Set(value);
  }
  ~Variable() { Set(m_old ? m_old->c_str() : nullptr); }
  Variable(const Variable&) = delete;
  Variable& operator=(const Variable&) = delete;

 private:
  void Set(const char* value) {
    if (value) {
      setenv(m_name, value, 1);
    } else {
      unsetenv(m_name);
    }
  }
  const char* m_name;
  std::optional<std::string> m_old;
};

TEST_F(Registry, AMissingValueReadsAsItsDefaultAndSaysSo) {
  int error = 0;
  EXPECT_EQ(NtRegGet(HKEY_CURRENT_USER, kKey, "n", 7u, &error), 7u);
  EXPECT_NE(error, 0);
  EXPECT_EQ(NtRegGet(HKEY_CURRENT_USER, kKey, "t", "text", &error), "text");
  EXPECT_NE(error, 0);
  EXPECT_EQ(Buffer("b"), "dflt");
  EXPECT_FALSE(std::filesystem::exists(m_path));  // a read makes no file
}

TEST_F(Registry, NumbersTextsAndBlocksComeBack) {
  Put("n", 4294967295);
  NtRegPut(HKEY_CURRENT_USER, kKey, "t", "zürich\n\"x\"");
  NtRegPutBuf(HKEY_CURRENT_USER, kKey, "b", "\0\x01\xFF\n", 4);
  int error = 1;
  EXPECT_EQ(NtRegGet(HKEY_CURRENT_USER, kKey, "n", 7u, &error), 4294967295u);
  EXPECT_EQ(error, 0);
  EXPECT_EQ(Text("t"), "zürich\n\"x\"");
  EXPECT_EQ(Buffer("b"), std::string("\0\x01\xFF\n", 4));
}

TEST_F(Registry, AValueOfAnotherKindOrSizeReadsAsItsDefault) {
  NtRegPut(HKEY_CURRENT_USER, kKey, "t", "12");
  NtRegPutBuf(HKEY_CURRENT_USER, kKey, "b", "12345", 5);
  Put("n", 1);
  EXPECT_EQ(Number("t"), 99u);
  EXPECT_EQ(Number("b"), 99u);
  EXPECT_EQ(Text("n"), "default");
  EXPECT_EQ(Text("b"), "default");
  EXPECT_EQ(Buffer("b"), "dflt");
  EXPECT_EQ(Buffer("t"), "dflt");
}

TEST_F(Registry, ABlockMayBeReadIntoItsOwnDefaults) {
  char bytes[] = "1234";
  NtRegGetBuf(HKEY_CURRENT_USER, kKey, "b", bytes, bytes, 4);
  EXPECT_STREQ(bytes, "1234");
}

TEST_F(Registry, TheFileIsReadableAndEditedByHand) {
  Put("Update Interval", 333);
  EXPECT_EQ(ReadAll(m_path), "[Software\\Zentara\\Test]\nUpdate Interval=333\n");
  m_dir.File("settings.ini", "[Software\\Zentara\\Test]\r\n Update Interval = 50 \r\n");
  EXPECT_EQ(Number("Update Interval"), 50u);
}

TEST_F(Registry, AnotherProgramsWriteIsSeenByTheNextRead) {
  Put("n", 1);
  EXPECT_EQ(Number("n"), 1u);
  const pid_t child = fork();
  if (child == 0) {
    Put("n", 2);
    _exit(0);
  }
  int status = 1;
  waitpid(child, &status, 0);
  ASSERT_EQ(status, 0);
  EXPECT_EQ(Number("n"), 2u);
}

TEST_F(Registry, TwoProgramsThatWriteAtOnceLoseNoValue) {
  constexpr int kPrograms = 4, kValues = 25;
  for (int program = 0; program < kPrograms; ++program) {
    if (fork() != 0) continue;
    for (int value = 0; value < kValues; ++value) {
      Put((std::to_string(program) + "." + std::to_string(value)).c_str(), 7);
    }
    _exit(0);
  }
  for (int program = 0; program < kPrograms; ++program) {
    int status = 1;
    wait(&status);
    EXPECT_EQ(status, 0);
  }
  for (int program = 0; program < kPrograms; ++program) {
    for (int value = 0; value < kValues; ++value) {
      EXPECT_EQ(Number((std::to_string(program) + "." + std::to_string(value)).c_str()), 7u);
    }
  }
}

TEST_F(Registry, MissingFoldersAreMadeAtTheFirstWrite) {
  SetSettingsFile(m_dir.File("a/b/settings.ini"));
  EXPECT_EQ(Number("n"), 99u);
  EXPECT_FALSE(std::filesystem::exists(m_dir.File("a")));
  Put("n", 1);
  EXPECT_EQ(Number("n"), 1u);
}

TEST_F(Registry, AHostileFileReadsAsDefaultsAndKeepsItsLines) {
  const std::string garbage("\0[[[\nn\n[Software\\Zentara\\Test\n====\n\xFF\xFE=\x01\n", 40);
  m_dir.File("settings.ini", garbage);
  EXPECT_EQ(Number("n"), 99u);
  Put("n", 1);
  EXPECT_EQ(Number("n"), 1u);
  EXPECT_EQ(ReadAll(m_path).substr(0, garbage.size()), garbage);
}

TEST_F(Registry, AFileLongerThanAnyOfOursIsLeftAlone) {
  const std::string huge(3 << 20, 'x');
  m_dir.File("settings.ini", huge);
  Put("n", 1);
  EXPECT_EQ(Number("n"), 99u);
  EXPECT_EQ(ReadAll(m_path), huge);
}

TEST_F(Registry, AValueTooLongForTheFileIsLostAndTheOthersStay) {
  Put("n", 1);
  NtRegPut(HKEY_CURRENT_USER, kKey, "t", std::string(3 << 20, 'x'));
  EXPECT_EQ(Text("t"), "default");
  EXPECT_EQ(Number("n"), 1u);
}

TEST_F(Registry, AFolderOrAFifoInItsPlaceReadsAsDefaultsAndLosesTheWrite) {
  ASSERT_EQ(mkdir(m_path.c_str(), 0700), 0);
  Put("n", 1);
  EXPECT_EQ(Number("n"), 99u);
  EXPECT_TRUE(std::filesystem::is_directory(m_path));
  SetSettingsFile(m_dir.File("fifo"));
  ASSERT_EQ(mkfifo(m_dir.File("fifo").c_str(), 0600), 0);
  Put("n", 1);
  EXPECT_EQ(Number("n"), 99u);
  EXPECT_TRUE(std::filesystem::is_fifo(m_dir.File("fifo")));
}

TEST_F(Registry, AValueThatCannotBeWrittenIsLostWithoutAMessage) {
  m_dir.File("file", "text");
  SetSettingsFile(m_dir.File("file/settings.ini"));
  Put("n", 1);
  EXPECT_EQ(Number("n"), 99u);
  EXPECT_EQ(ReadAll(m_dir.File("file")), "text");
}

TEST_F(Registry, AWriteLeavesNoOtherFileThanItsLock) {
  Put("n", 1);
  Put("n", 2);
  const std::string name = std::filesystem::path(m_path).filename();
  EXPECT_EQ(NamesIn(m_dir.Path()), (std::set<std::string>{name, name + ".lock"}));
}

TEST_F(Registry, AHangingHolderOfTheLockCostsTheWriteButNotTheProgram) {
  Put("n", 1);
  const int lock = open((m_path + ".lock").c_str(), O_RDWR | O_CLOEXEC);
  ASSERT_EQ(flock(lock, LOCK_EX), 0);
  Put("n", 2);
  EXPECT_EQ(Number("n"), 1u);
  close(lock);
  Put("n", 2);
  EXPECT_EQ(Number("n"), 2u);
}

TEST_F(Registry, ALinkToTheFileStaysALinkAndItsModeAndOwnerStay) {
  const std::string real = m_dir.File("real.ini", "[A]\nx=1\n");
  const uid_t owner = geteuid() == 0 ? 65533 : geteuid();
  ASSERT_EQ(chown(real.c_str(), owner, getegid()), 0);
  ASSERT_EQ(chmod(m_dir.File("real.ini").c_str(), 0640), 0);
  ASSERT_EQ(symlink("real.ini", m_path.c_str()), 0);
  Put("n", 1);
  EXPECT_TRUE(std::filesystem::is_symlink(m_path));
  EXPECT_EQ(Number("n"), 1u);
  struct stat status;
  ASSERT_EQ(stat(m_path.c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777, 0640u);
  EXPECT_EQ(status.st_uid, owner);
}

TEST_F(Registry, ANewFileIsTheUsersAlone) {
  Put("n", 1);
  struct stat status;
  ASSERT_EQ(stat(m_path.c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777, 0600u);
}

TEST_F(Registry, AValueThatDoesNotChangeIsNotWrittenAgain) {
  Put("n", 1);
  struct stat before, after;
  ASSERT_EQ(stat(m_path.c_str(), &before), 0);
  Put("n", 1);
  ASSERT_EQ(stat(m_path.c_str(), &after), 0);
  EXPECT_EQ(before.st_ino, after.st_ino);
}

TEST_F(Registry, ARelativeFileDoesNotMoveWithTheCurrentFolder) {
  const std::filesystem::path before = std::filesystem::current_path();
  SetSettingsFile("relative.ini");
  std::filesystem::current_path(m_dir.Path());
  EXPECT_EQ(SettingsFile(), before.string() + "/relative.ini");
  std::filesystem::current_path(before);
}

TEST_F(Registry, TheDefaultFileLiesInTheUsersConfigurationFolder) {
  SetSettingsFile("");
  const Variable home("HOME", "/home/someone");
  {
    const Variable config("XDG_CONFIG_HOME", "/cfg");
    EXPECT_EQ(SettingsFile(), "/cfg/tessera/settings.ini");
  }
  for (const char* useless : {static_cast<const char*>(nullptr), "", "relative"}) {
    const Variable config("XDG_CONFIG_HOME", useless);
    EXPECT_EQ(SettingsFile(), "/home/someone/.config/tessera/settings.ini");
  }
}

}  // namespace
