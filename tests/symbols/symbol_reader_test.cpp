// The reader of names stays usable whatever its process does.
#include "symbols/symbol_reader.h"

#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/stat.h>

#include <chrono>

#include "support/temp_dir.h"

namespace {

const std::string kStack = "/nowhere/orders+0x12ab [0a1b2c3d4e5f]\nmain";

class SymbolReaderTest : public ::testing::Test {
 protected:
  std::string Program(const std::string& script) const {
    const std::string path = m_dir.File("program", "#!/bin/sh\n" + script + "\n");
    chmod(path.c_str(), 0700);
    return path;
  }
  static void ExpectNoNames(SymbolReader& reader) {
    const StackNames names = reader.Names(kStack);
    ASSERT_EQ(names.frames.size(), 2u);
    EXPECT_EQ(names.frames[0].text, "/nowhere/orders+0x12ab [0a1b2c3d4e5f]");
    EXPECT_EQ(names.frames[1].text, "main");
    ASSERT_EQ(names.missing.size(), 1u);
    EXPECT_EQ(names.missing[0], "no names: the files of this stack's modules could not be read");
  }
  TempDir m_dir;
};

TEST_F(SymbolReaderTest, AProgramThatIsNotThereGivesNoNames) {
  SymbolReader reader({}, m_dir.File("nothing"));
  ExpectNoNames(reader);
}

TEST_F(SymbolReaderTest, AProcessThatEndsOrSendsSomethingElseGivesNoNames) {
  for (const char* script : {"exit 1", "kill -SEGV $$", "printf 'abcd' >&0; exec sleep 60",
                             "printf '\\004\\000\\000\\000nono' >&0; exec sleep 60"}) {
    SymbolReader reader({}, Program(script));
    ExpectNoNames(reader);
  }
}

TEST_F(SymbolReaderTest, AProcessThatHangsIsEndedAfterItsTime) {
  SymbolReader reader({}, Program("exec sleep 600"), 100);
  ExpectNoNames(reader);
}

TEST_F(SymbolReaderTest, WhoAsksMayStopWaitingForAProcessThatHangs) {
  SymbolReader reader({}, Program("exec sleep 600"));
  int asked = 0;
  reader.CancelIf([&asked] { return ++asked == 3; });
  const auto began = std::chrono::steady_clock::now();
  ExpectNoNames(reader);
  EXPECT_EQ(asked, 3);
  EXPECT_LT(std::chrono::steady_clock::now() - began, std::chrono::seconds(30));
}

TEST_F(SymbolReaderTest, AStackThatEndedItsProcessIsNotTriedAgainAndAnotherIs) {
  const std::string log = m_dir.File("log");
  SymbolReader reader({}, Program("echo started >> '" + log + "'; exit 1"));
  ExpectNoNames(reader);
  ExpectNoNames(reader);
  EXPECT_EQ(ReadIfThere(log), "started\n");
  reader.Names("/nowhere/other+0x12ab [0a1b2c3d4e5f]");
  EXPECT_EQ(ReadIfThere(log), "started\nstarted\n");
}

TEST_F(SymbolReaderTest, WhatNamesNoModuleNeedsNoProcess) {
  SymbolReader reader({}, m_dir.File("nothing"));
  const StackNames names = reader.Names("Start (a.cpp:1)\nmain\n");
  ASSERT_EQ(names.frames.size(), 2u);
  EXPECT_TRUE(names.missing.empty());
}

TEST_F(SymbolReaderTest, TheFoldersOfTheEnvironmentHaveColonsBetween) {
  setenv("QUOR_SYMBOLS", "/a:/b c::/d", 1);
  EXPECT_EQ(SymbolReader::FoldersOfEnvironment(), (std::vector<std::string>{"/a", "/b c", "/d"}));
  unsetenv("QUOR_SYMBOLS");
  EXPECT_TRUE(SymbolReader::FoldersOfEnvironment().empty());
}

}  // namespace
