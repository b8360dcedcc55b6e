// Load on the wizard's page of applications, and what it leaves behind when it fails.
#include <filesystem>

#include "wizard/apps_fixture.h"

namespace {

constexpr char kBadFile[] = "Invalid format.";

// A file dialog makes its folder the current one.
class ApplicationLoadTest : public AppsFixture {
 protected:
  ApplicationLoadTest() {
    std::filesystem::current_path(m_folder.Path());
    Here().Run("orders", {"Net/Open"}, 7);
    Here().Run("billing", {"Disk/Read"}, 1);
    Disk().Run("archive", {"Net/Open"});
    Web().Run("shop", {"Net/Open"});
  }
  ~ApplicationLoadTest() override { std::filesystem::current_path(m_before); }
  void Load(const std::string& lines) { LoadFile(m_folder.File("chosen.tcf", kTcfLine1 + lines)); }

 private:
  const std::filesystem::path m_before = std::filesystem::current_path();
};

}  // namespace

TEST_F(ApplicationLoadTest, AsksForAFileOfItsKind) {
  Begin(kLocal);
  m_host.AnswerFileDialog(std::nullopt);
  Page().OnLoad();
  ASSERT_EQ(m_host.m_fileRequests.size(), 1U);
  const FileDialogRequest& request = m_host.m_fileRequests.front();
  EXPECT_FALSE(request.save);
  EXPECT_EQ(request.defaultExtension, ".tcf");
  ASSERT_EQ(request.filters.size(), 1U);
  EXPECT_EQ(request.filters.front().label, "Trace Config Files (*.tcf)");
  EXPECT_EQ(request.filters.front().patterns, "*.tcf");
}

TEST_F(ApplicationLoadTest, CancelLeavesEverything) {
  Begin(kLocal);
  Walk("pick:orders");
  m_host.AnswerFileDialog(std::nullopt);
  Page().OnLoad();
  EXPECT_EQ(Shown(), "billing *orders");
  EXPECT_EQ(Table(), "billing\norders\n");
  EXPECT_EQ(Boxes(), "");
  EXPECT_EQ(Machine().m_strConfigFile, "");
}

TEST_F(ApplicationLoadTest, TheApplicationsOfTheFileReplaceTheListAndAllAreSelected) {
  Begin(kLocal);
  Load("APP: \"orders\"\nAPP: \"gone\"\n");
  EXPECT_EQ(Shown(), "*gone *orders");
  EXPECT_TRUE(CanGoOn());
  EXPECT_EQ(Table(), "gone*\norders*\n");
  EXPECT_EQ(Machine().m_strConfigFile, "chosen.tcf");
  EXPECT_EQ(Boxes(), "");
  EXPECT_EQ(Asked(Here()), "") << "nothing goes to the machine";
}

TEST_F(ApplicationLoadTest, TheFileIsOpenedByItsNameAloneFromTheDialogsFolder) {
  Begin(kLocal);
  m_folder.File("here.tcf", kTcfLine1 + "APP: \"here\"\n");
  std::filesystem::create_directory_symlink(m_folder.Path(), m_folder.File("link"));
  LoadFile(m_folder.File("link/here.tcf"));
  EXPECT_EQ(Shown(), "*here");
  EXPECT_EQ(Machine().m_strConfigFile, "here.tcf");
}

TEST_F(ApplicationLoadTest, AFileThatCannotBeOpenedIsTold) {
  Begin(kLocal);
  LoadFile(m_folder.File("missing.tcf"));
  EXPECT_EQ(Boxes(), Box("Error opening file."));
  EXPECT_EQ(Table(), "billing\norders\n");
  EXPECT_EQ(Shown(), "billing orders");
}

TEST_F(ApplicationLoadTest, AWrongFirstLineIsToldAndTheListStillHolds) {
  Begin(kLocal);
  LoadFile(m_folder.File("old.tcf", "TCF Version 2.0\nAPP: \"gone\"\n"));
  EXPECT_EQ(Boxes(), Box(kBadFile));
  Walk("pick:orders");
  EXPECT_EQ(Next(), "Traces for orders");
}

TEST_F(ApplicationLoadTest, AFileOfThatNameInTheFormerFolderIsNotReadInItsPlace) {
  Begin(kLocal);
  const TempDir other;
  m_folder.File("chosen.tcf", kTcfLine1 + "APP: \"former\"\n");
  LoadFile(other.File("chosen.tcf", kTcfLine1 + "APP: \"orders\"\n"));
  EXPECT_EQ(Boxes(), Box("Error opening file."));
  EXPECT_EQ(Shown(), "billing orders");
  EXPECT_EQ(Table(), "billing\norders\n");
  EXPECT_EQ(Machine().m_strConfigFile, "");
  std::filesystem::current_path(other.Path());
  LoadFile(other.File("chosen.tcf"));
  EXPECT_EQ(Shown(), "*orders");
}

TEST_F(ApplicationLoadTest, AFileWithoutAnyApplicationLeavesAnEmptyListAndOnlyBack) {
  Begin(kLocal);
  Walk("pick:orders");
  Load("");
  EXPECT_EQ(Shown(), "");
  EXPECT_EQ(Window().Enabled(), "back");
  EXPECT_EQ(Machine().m_strConfigFile, "chosen.tcf");
}

TEST_F(ApplicationLoadTest, AWildcardLineBehindGoodLinesStopsThereAndShowsOnlyTheMessage) {
  Begin(kLocal);
  Load("APP: \"gone\"\nTRACE: \"Net\" \"Open\" Info\nTRACE: \"*\" \"Open\" Info\nAPP: \"x\"\n");
  EXPECT_EQ(Boxes(), Box("Wildcards in component and category names are not supported by Tessera"));
  EXPECT_EQ(Shown(), "billing orders") << "the list shows the former names";
  EXPECT_EQ(Table(), "gone* Net/Open=1\n");
  EXPECT_EQ(Machine().m_strConfigFile, "");
}

TEST_F(ApplicationLoadTest, NextReplacesTheFilesSettingsOfTracesThatTheApplicationKnows) {
  Begin(kLocal);
  Load("APP: \"orders\"\nTRACE: \"Net\" \"Open\" Stack\nTRACE: \"Old\" \"One\" Stack\n");
  EXPECT_EQ(Table(), "orders* Net/Open=512 Old/One=512\n");
  EXPECT_EQ(Next(), "Traces for orders");
  EXPECT_EQ(Table(), "orders* open Net/Open=7 Old/One=512\n");
  EXPECT_EQ(Traces().Shown(), "Net|Open|Info, Warn, Error Old|One|Stack");
}

TEST_F(ApplicationLoadTest, TheSinkOfTheFileIsDropped) {
  Begin(kLocal);
  Load("APP: \"orders\"\nSINK: File \"/tmp/orders.trc\" \"flush=1;\"\n");
  EXPECT_EQ(Next(), "Traces for orders");
  trc_SinkTypes_e type = trc_SinkFile;
  std::string name, options;
  Apps()["orders"].m_app->GetSink(type, name, options);
  EXPECT_EQ(type, trc_SinkSocket);
  EXPECT_EQ(name + options, "localhost");
}

TEST_F(ApplicationLoadTest, AfterABadLineNextPassesOverNamesThatAreGoneAndStays) {
  Begin(kLocal);
  Walk("pick:billing,orders");
  Load("APP: \"gone\"\nnonsense\n");
  EXPECT_EQ(Boxes(), Box(kBadFile));
  EXPECT_EQ(Shown(), "*billing *orders");
  EXPECT_EQ(Table(), "gone*\n");
  EXPECT_EQ(Next(), "Applications on THIS");
  EXPECT_EQ(Table(), "gone\n") << "it is not in the list, so it is not selected";
  EXPECT_EQ(Shown(), "billing orders");
  EXPECT_EQ(Window().Enabled(), "back");
  EXPECT_EQ(Boxes(), "");
  EXPECT_EQ(Asked(Here()), "");
}

TEST_F(ApplicationLoadTest, AfterABadLineADoubleClickOnANameThatIsGoneStaysToo) {
  Begin(kLocal);
  Load("nonsense\n");
  Boxes();
  DoubleClick(0);
  EXPECT_EQ(Where(), "Applications on THIS");
  EXPECT_EQ(Table(), "");
  EXPECT_EQ(Boxes(), "");
}

TEST_F(ApplicationLoadTest, AfterABadLineNextTakesTheNamesThatTheFileGave) {
  Begin(kLocal);
  Walk("pick:billing,orders");
  Load("APP: \"orders\"\nTRACE: \"Old\" \"One\" Info\nnonsense\n");
  Boxes();
  EXPECT_EQ(Next(), "Traces for orders");
  EXPECT_EQ(Table(), "orders* open Net/Open=7 Old/One=1\n");
  EXPECT_EQ(Next(), "Finish");
  EXPECT_EQ(Back(), "Traces for orders");
  EXPECT_EQ(Back(), "Applications on THIS");
  EXPECT_EQ(Shown(), "*orders") << "the list is filled anew";
}

TEST_F(ApplicationLoadTest, LoadingTwiceReplacesTheFirstFilesTable) {
  Begin(kLocal);
  Load("APP: \"first\"\nAPP: \"both\"\nTRACE: \"a\" \"b\" Info\n");
  Load("APP: \"both\"\nAPP: \"second\"\n");
  EXPECT_EQ(Table(), "both*\nsecond*\n");
  EXPECT_EQ(Shown(), "*both *second");
}

TEST_F(ApplicationLoadTest, TheSameApplicationNamedTwiceStartsAfresh) {
  Begin(kLocal);
  Load("APP: \"orders\"\nTRACE: \"Old\" \"One\" Info\nAPP: \"orders\"\n");
  EXPECT_EQ(Table(), "orders*\n");
  EXPECT_EQ(Shown(), "*orders");
}

TEST_F(ApplicationLoadTest, ASecondLoadThatFailsLeavesTheNameOfTheFirstFile) {
  Begin(kLocal);
  Load("APP: \"orders\"\n");
  LoadFile(m_folder.File("second.tcf", kTcfLine1 + "nonsense\n"));
  EXPECT_EQ(Machine().m_strConfigFile, "chosen.tcf");
  EXPECT_EQ(Table(), "");
}

TEST_F(ApplicationLoadTest, EachMachineLoadsAFileOfItsOwn) {
  Begin(kRemote);
  Load("APP: \"archive\"\n");
  Walk("next next");
  EXPECT_EQ(Where(), "Applications on web");
  EXPECT_EQ(Shown(), "shop");
  Load("APP: \"shop\"\nAPP: \"gone\"\n");
  EXPECT_EQ(Table("disk"), "archive* open Net/Open=0\n");
  EXPECT_EQ(Table("web"), "gone*\nshop*\n");
}

// The page of traces has shown an application of the table that the file replaces.
TEST_F(ApplicationLoadTest, ALoadBehindTheTracesLeavesNoPlaceInTheFormerTable) {
  Begin(kRemote);
  Walk("pick:archive next back");
  EXPECT_EQ(Where(), "Applications on disk");
  Load("APP: \"fresh\"\n");
  EXPECT_EQ(Next(), "Traces for fresh on disk");
  EXPECT_EQ(Next(), "Applications on web");
  EXPECT_EQ(Back(), "Traces for fresh on disk");
  EXPECT_EQ(Back(), "Applications on disk");
  Load("");
  EXPECT_EQ(Back(), "Machines");
}
