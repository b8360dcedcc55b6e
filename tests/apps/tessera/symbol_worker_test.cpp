// The desktop program reads the files of modules in a second process of its own.
#include <gtest/gtest.h>

#include <cstdlib>

#include "command_line.h"
#include "settings/registry.h"
#include "support/temp_dir.h"
#include "symbols/symbol_reader.h"

namespace {

TEST(SymbolWorker, TheProgramAnswersStacksWhenItIsStartedForThat) {
  const char* const program = std::getenv("TESSERA");
  ASSERT_NE(program, nullptr);
  SymbolReader reader({}, program);
  const StackNames names = reader.Names("/nowhere/orders+0x12ab [0a1b2c3d4e5f]\nmain");
  ASSERT_EQ(names.frames.size(), 2u);
  EXPECT_EQ(names.frames[1].text, "main");
  ASSERT_EQ(names.missing.size(), 1u);
  EXPECT_EQ(names.missing[0],
            "no names for orders (build id 0a1b2c3d4e5f): /nowhere/orders cannot be read here");
}

TEST(SymbolWorker, TheFoldersOfTheSettingsComeBeforeThoseOfTheEnvironment) {
  const TempDir dir;
  SetSettingsFile(dir.File("settings.ini"));
  NtRegPut(HKEY_CURRENT_USER, kRegSettings, "Symbol Folders", "/a:/b");
  setenv("QUOR_SYMBOLS", "/c", 1);
  EXPECT_EQ(SymbolFolders(), (std::vector<std::string>{"/a", "/b", "/c"}));
  unsetenv("QUOR_SYMBOLS");
  SetSettingsFile("");
}

}  // namespace
