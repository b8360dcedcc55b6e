// The wizard's page of traces: a list for one chosen application after the other.
#include "wizard/traces_page.h"

#include "config/traces/modify_trace_dialog.h"
#include "wizard/apps_fixture.h"
#include "wizard/wizard_texts.h"

namespace {

class WizTracesPageTest : public AppsFixture {
 protected:
  WizTracesPageTest() {
    for (FakeMachine* const machine : {&Here(), &Disk()}) {
      machine->Run("archive", {"Net/Open", "Disk/Read", "Disk/Write"}, 7);
      machine->Run("backup", {"Net/Open"}, 1);
      machine->Run("check", {"Net/Open"});
    }
    Web().Run("orders", {"Net/Open"}, 1);
  }
  // Gives a row these settings.
  void Set(int row, unsigned settings) { Traces().Give(row, settings); }
};

}  // namespace

TEST_F(WizTracesPageTest, ListsTheTracesOfTheApplication) {
  Begin(kLocal);
  Walk("pick:archive next");
  EXPECT_EQ(Traces().Shown(),
            "Disk|Read|Info, Warn, Error Disk|Write|Info, Warn, Error Net|Open|Info, Warn, Error");
  EXPECT_FALSE(Traces().ButtonsEnabled());
  EXPECT_EQ(Window().Enabled(), "back next");
  EXPECT_STREQ(WizardTexts::kTraces,
               "Select the trace types (by component and category name) that you want to "
               "configure.  Then use the buttons on the right to select the types of traces you "
               "want to enable:");
}

TEST_F(WizTracesPageTest, WithThreeApplicationsThePageShowsThreeTimesAndItsTitleChanges) {
  Begin(kLocal);
  Walk("pick:archive,backup,check next");
  EXPECT_EQ(Where(), "Traces for archive");
  EXPECT_EQ(Next(), "Traces for backup");
  EXPECT_EQ(Traces().Shown(), "Net|Open|Info");
  EXPECT_EQ(Next(), "Traces for check");
  EXPECT_EQ(Traces().Shown(), "Net|Open|Off");
  EXPECT_EQ(Next(), "Finish");
}

TEST_F(WizTracesPageTest, WhatIsKeptForLaterStartsStandsBelowTheListOfItsApplication) {
  Here().m_apps["backup"].kept = "Net=max";
  Begin(kLocal);
  Walk("pick:archive,backup,check next");
  EXPECT_EQ(Sheet().TracesPage().Note(), "");
  Walk("next");
  EXPECT_EQ(Sheet().TracesPage().Note(),
            "Kept for later starts: Net=max (\"trc forget backup\" takes it back)");
  Walk("next");
  EXPECT_EQ(Sheet().TracesPage().Note(), "");
}

TEST_F(WizTracesPageTest, ApplicationsThatAreNotSelectedArePassedOverBothWays) {
  Begin(kLocal);
  Walk("pick:archive,check next");
  EXPECT_EQ(Next(), "Traces for check");
  EXPECT_EQ(Back(), "Traces for archive");
  EXPECT_EQ(Back(), "Applications on THIS");
}

TEST_F(WizTracesPageTest, BackOverApplicationsThatAreNotSelectedEndsAtTheApplications) {
  Begin(kLocal);
  Walk("pick:check next");
  EXPECT_EQ(Where(), "Traces for check");
  EXPECT_EQ(Back(), "Applications on THIS");
}

TEST_F(WizTracesPageTest, AChangeFollowedByBackIsLost) {
  Begin(kLocal);
  Walk("pick:archive,backup next next");
  Set(0, TRC_PRESET_MAX);
  EXPECT_EQ(Back(), "Traces for archive");
  EXPECT_EQ(Next(), "Traces for backup");
  EXPECT_EQ(Traces().Shown(), "Net|Open|Info");
}

TEST_F(WizTracesPageTest, AChangeFollowedByNextAndThenBackIsKept) {
  Begin(kLocal);
  Walk("pick:archive,backup next");
  Set(1, TRC_PRESET_DEVELOPER);
  EXPECT_EQ(Next(), "Traces for backup");
  EXPECT_EQ(Back(), "Traces for archive");
  EXPECT_EQ(Traces().Shown(),
            "Disk|Read|Info, Warn, Error Disk|Write|Info, Warn, Error, Developer "
            "Net|Open|Info, Warn, Error");
}

TEST_F(WizTracesPageTest, NextWritesEachRowToItsTraceHoweverTheyAreSorted) {
  Begin(kLocal);
  Walk("pick:archive next");
  Traces().Rows().ClickHeading(0);
  EXPECT_EQ(Traces().Rows().Text(0), "Net|Open|Info, Warn, Error");
  Set(0, TRC_PRESET_OFF);
  Walk("next");
  EXPECT_EQ(Table(), "archive* open Disk/Read=7 Disk/Write=7 Net/Open=0\nbackup\ncheck\n");
}

TEST_F(WizTracesPageTest, TheOrderChosenForOneApplicationHoldsForTheNext) {
  Here().m_apps["backup"].traces.push_back({"Zip", "Pack", 900, 0});
  Begin(kLocal);
  Walk("pick:archive,backup next");
  EXPECT_EQ(Traces().Rows().Sort(), "Component up");
  Traces().Rows().ClickHeading(1);
  EXPECT_EQ(Traces().Rows().Sort(), "Category down");
  EXPECT_EQ(Next(), "Traces for backup");
  EXPECT_EQ(Traces().Shown(), "Zip|Pack|Off Net|Open|Info");
  EXPECT_EQ(Back(), "Traces for archive");
  EXPECT_EQ(Traces().Rows().Text(0), "Disk|Write|Info, Warn, Error");
}

TEST_F(WizTracesPageTest, HasTheButtonsTheDialogAndTheDoubleClickOfTheListAndAsksNoMachine) {
  Begin(kLocal);
  Walk("pick:archive next");
  Asked(Here());
  const auto choose = [](CDialog& asked) {
    auto& dialog = dynamic_cast<CModifyTraceDialog&>(asked);
    dialog.OnMode(CModifyTraceDialog::kMaximum);
    dialog.OnOK();
  };
  Set(0, TRC_PRESET_SUPPORT);
  m_host.AnswerDialog(choose);
  Traces().PressCustom();
  m_host.AnswerDialog(choose);
  Traces().Rows().DoubleClick(1);
  EXPECT_EQ(Table(), "archive* open Disk/Read=7 Disk/Write=7 Net/Open=7\nbackup\ncheck\n");
  Walk("next");
  EXPECT_EQ(Table(), "archive* open Disk/Read=799 Disk/Write=799 Net/Open=7\nbackup\ncheck\n");
  Walk("back back");
  EXPECT_EQ(Asked(Here()), "");
  EXPECT_EQ(Here().InForce("archive"), "Net/Open=7 Disk/Read=7 Disk/Write=7");
}

TEST_F(WizTracesPageTest, TheTitleNamesTheMachineInRemoteMode) {
  Begin(kRemote);
  Walk("pick:backup next");
  EXPECT_EQ(Where(), "Traces for backup on disk");
  EXPECT_EQ(Next(), "Applications on web");
  Walk("pick:orders next");
  EXPECT_EQ(Where(), "Traces for orders on web");
  EXPECT_EQ(Next(), "Finish");
}

TEST_F(WizTracesPageTest, TheTitleNamesNoMachineIfAllAreConfiguredTheSame) {
  Begin(kSame);
  Walk("pick:backup next");
  EXPECT_EQ(Where(), "Traces for backup");
  EXPECT_EQ(Next(), "Finish") << "the traces are shown once for all machines";
}

TEST_F(WizTracesPageTest, MachinesThatAreConfiguredTheSameGetACopyAtEachNext) {
  Begin(kSame);
  Machine("disk").m_strConfigFile = "disk.tcf";
  Walk("pick:archive,backup next");
  EXPECT_EQ(Table("web"), "archive\nbackup\ncheck\norders\n");
  Set(0, TRC_PRESET_OFF);
  Walk("next");
  EXPECT_EQ(Table("web"), Table("disk"));
  EXPECT_TRUE(Table("web").starts_with("archive* open Disk/Read=0 Disk/Write=7")) << Table("web");
  Set(0, TRC_PRESET_MAX);
  EXPECT_EQ(Next(), "Finish");
  EXPECT_EQ(Table("web"), Table("disk"));
  EXPECT_NE(Table("web").find("backup* open Net/Open=799"), std::string::npos) << Table("web");
  EXPECT_EQ(Machine("web").m_strConfigFile, "disk.tcf");
  EXPECT_EQ(Machine("web").m_pConfig, Machine("disk").m_pConfig);
}

TEST_F(WizTracesPageTest, DifferentMachinesGetNoCopy) {
  Begin(kRemote);
  Walk("pick:backup next next");
  EXPECT_EQ(Table("web"), "orders\n");
  EXPECT_NE(Machine("web").m_pConfig, Machine("disk").m_pConfig);
}

TEST_F(WizTracesPageTest, AnEmptyListSaysWhetherTheApplicationHasNoTracesOrWasNotRead) {
  Disk().Run("empty", {});
  Begin(kRemote);
  Walk("pick:empty next");
  EXPECT_EQ(Where(), "Traces for empty on disk");
  EXPECT_EQ(Traces().EmptyText(), "This application has no traces yet.");
  Walk("next");
  EXPECT_EQ(Where(), "Applications on web");
  Disk().Run("zero", {"Net/Open"});
  Sheet().m_machines.at("disk").m_apps["zero"] = {};
  Walk("back");
  EXPECT_EQ(Where(), "Traces for zero on disk");
  EXPECT_EQ(Traces().Shown(), "");
  EXPECT_EQ(Traces().EmptyText(), "The traces of this application have not been read.");
  Walk("back");
  EXPECT_EQ(Where(), "Traces for empty on disk");
  EXPECT_EQ(Traces().EmptyText(), "This application has no traces yet.");
}

TEST_F(WizTracesPageTest, FromAnApplicationThatIsNotSelectedNextGoesOn) {
  Begin(kRemote);
  Walk("pick:archive next next back");
  EXPECT_EQ(Where(), "Traces for check on disk");
  EXPECT_EQ(Traces().Shown(), "");
  EXPECT_EQ(Next(), "Applications on web");
  EXPECT_EQ(Table("disk"), "archive* open Disk/Read=7 Disk/Write=7 Net/Open=7\nbackup\ncheck\n");
}

TEST_F(WizTracesPageTest, ATableThatIsGoneIsNotLookedInto) {
  Begin(kLocal);
  Walk("pick:archive next");
  Set(0, TRC_PRESET_MAX);
  Apps().clear();
  EXPECT_EQ(Next(), "Traces for archive") << "there is nothing to go on with";
  EXPECT_EQ(Back(), "Applications on THIS");
}
