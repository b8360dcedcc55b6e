#include "wizard/tables/load_tcf.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include "support/temp_dir.h"
#include "support/wizard_table_text.h"

namespace {

const std::string kHeader = "TCF Version 3.2\n";

class LoadTcfTest : public testing::Test {
 protected:
  LoadTcfTest() {
    m_machine.m_apps["before"].m_bSelected = true;
    m_machine.m_strConfigFile = "former.tcf";
  }
  WizLoad Load(const std::string& content) {
    return LoadTcf(m_folder.File("chosen.tcf", content), m_machine);
  }
  std::string Table() const { return TableText(m_machine.m_apps); }

  TempDir m_folder;
  WizMachine m_machine;
};

}  // namespace

TEST_F(LoadTcfTest, TheApplicationsOfTheFileReplaceTheTableAndAllAreSelected) {
  EXPECT_EQ(Load(kHeader + "APP: \"orders\"\nSINK: File \"/tmp/o.trc\" \"flush=1;\"\n"
                           "TRACE: \"Net\" \"Open\" Info Warn\nTRACE: \"Disk\" \"Read\"\n"
                           "APP: \"billing\"\n"),
            WizLoad::Loaded);
  EXPECT_EQ(Table(), "billing*\norders* Disk/Read=0 Net/Open=3\n");
  EXPECT_EQ(m_machine.m_strConfigFile, m_folder.File("chosen.tcf"));
  EXPECT_EQ(m_machine.m_apps["orders"].m_traces.begin()->second.m_nId, 65535);
}

TEST_F(LoadTcfTest, SettingsHaveSixteenBits) {
  Load(kHeader +
       "APP: \"a\"\n"
       "TRACE: \"b\" \"c\" Info Warn Error Developer Verbose Location Stack\n");
  EXPECT_EQ(Table(), "a* b/c=799\n");
}

TEST_F(LoadTcfTest, AFileThatCannotBeOpenedLeavesTheTable) {
  EXPECT_EQ(LoadTcf(m_folder.File("missing.tcf"), m_machine), WizLoad::NotOpened);
  const std::string pipe = m_folder.File("pipe.tcf");
  ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
  EXPECT_EQ(LoadTcf(pipe, m_machine), WizLoad::NotOpened) << "nobody writes to it";
  EXPECT_EQ(LoadTcf(m_folder.Path(), m_machine), WizLoad::NotOpened) << "a folder";
  EXPECT_EQ(Table(), "before*\n");
  EXPECT_EQ(m_machine.m_strConfigFile, "former.tcf");
}

TEST_F(LoadTcfTest, AWrongFirstLineLeavesTheTable) {
  for (const char* const content : {"", "TCF Version 3.1\nAPP: \"a\"\n", "APP: \"a\"\n", "\n",
                                    "tcf version 3.2\n", " TCF Version 3.2\n"}) {
    EXPECT_EQ(Load(content), WizLoad::Invalid) << content;
    EXPECT_EQ(Table(), "before*\n") << content;
  }
  EXPECT_EQ(Table(), "before*\n");
  EXPECT_EQ(m_machine.m_strConfigFile, "former.tcf");
}

TEST_F(LoadTcfTest, ABadLineLeavesWhatTheFileGaveBeforeIt) {
  for (const char* const bad : {"nonsense\n", "APP: orders\n", "SINK: Pipe \"a\" \"\"\n",
                                "TRACE: \"Net\"\n", "TRACE: \"Net\" \"Open\" Loud\n", "TRA"}) {
    EXPECT_EQ(Load(kHeader + "APP: \"a\"\nTRACE: \"b\" \"c\" Info\n" + bad + "APP: \"d\"\n"),
              WizLoad::Invalid)
        << bad;
    EXPECT_EQ(Table(), "a* b/c=1\n") << bad;
  }
  EXPECT_EQ(m_machine.m_strConfigFile, "former.tcf");
}

TEST_F(LoadTcfTest, ASinkOrATraceInFrontOfTheFirstApplicationIsBad) {
  for (const char* const orphan : {"SINK: File \"a\" \"\"\n", "TRACE: \"Net\" \"Open\" Info\n",
                                   "TRACE: \"*\" \"Open\" Info\n"}) {
    m_machine.m_apps["before"];
    EXPECT_EQ(Load(kHeader + orphan + "APP: \"d\"\n"), WizLoad::Invalid) << orphan;
    EXPECT_EQ(Table(), "") << orphan;
  }
}

TEST_F(LoadTcfTest, AWildcardEndsItBehindTheGoodLines) {
  for (const char* const wild :
       {"TRACE: \"*\" \"Open\" Info\n", "TRACE: \"Net\" \"*\" Info\n", "TRACE: \"*\" \"*\"\n"}) {
    EXPECT_EQ(Load(kHeader + "APP: \"a\"\nTRACE: \"b\" \"c\" Info\n" + wild + "nonsense\n"),
              WizLoad::Wildcard)
        << wild;
    EXPECT_EQ(Table(), "a* b/c=1\n") << wild;
  }
  EXPECT_EQ(m_machine.m_strConfigFile, "former.tcf");
}

TEST_F(LoadTcfTest, OnlyAWholeNameIsAWildcardAndABadLineIsBadFirst) {
  EXPECT_EQ(Load(kHeader + "APP: \"*\"\nTRACE: \"b*\" \"**\" Info\n"), WizLoad::Loaded);
  EXPECT_EQ(Table(), "** b*/**=1\n");
  EXPECT_EQ(Load(kHeader + "APP: \"a\"\nTRACE: \"*\" \"c\" Loud\n"), WizLoad::Invalid);
}

TEST_F(LoadTcfTest, AFileWithoutAnApplicationLeavesAnEmptyTable) {
  EXPECT_EQ(Load(kHeader), WizLoad::Loaded);
  EXPECT_EQ(Table(), "");
}

TEST_F(LoadTcfTest, ASecondFileReplacesTheFirst) {
  Load(kHeader + "APP: \"a\"\nAPP: \"b\"\n");
  Load(kHeader + "APP: \"c\"\n");
  EXPECT_EQ(Table(), "c*\n");
}

TEST_F(LoadTcfTest, OfAnApplicationThatIsThereTwiceTheLaterGroupCounts) {
  Load(kHeader +
       "APP: \"a\"\nTRACE: \"b\" \"c\" Info\nAPP: \"d\"\n"
       "APP: \"a\"\nTRACE: \"e\" \"f\" Warn\n");
  EXPECT_EQ(Table(), "a* e/f=2\nd*\n");
}

TEST_F(LoadTcfTest, OfATraceThatIsThereTwiceTheLaterLineCounts) {
  Load(kHeader + "APP: \"a\"\nTRACE: \"b\" \"c\" Info\nTRACE: \"b\" \"c\" Stack\n");
  EXPECT_EQ(Table(), "a* b/c=512\n");
}

TEST(WordsOfALoad, TellWhatIsWrong) {
  EXPECT_STREQ(WordsOf(WizLoad::NotOpened), "Error opening file.");
  EXPECT_STREQ(WordsOf(WizLoad::Invalid), "Invalid format.");
  EXPECT_STREQ(WordsOf(WizLoad::Wildcard),
               "Wildcards in component and category names are not supported by Tessera");
  EXPECT_STREQ(WordsOf(WizLoad::Loaded), "");
}
