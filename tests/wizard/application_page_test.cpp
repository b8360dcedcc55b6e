// The wizard's page of applications: its list, its Next and its Back.
#include "wizard/application_page.h"

#include "docview/dialogs/work_box.h"
#include "support/short_pieces.h"
#include "wizard/apps_fixture.h"
#include "wizard/wizard_texts.h"

namespace {

constexpr char kNotReached[] = "Error trying to connect to configuration server.";

class ApplicationPageTest : public AppsFixture {
 protected:
  ApplicationPageTest() {
    Here().Run("orders", {"Net/Open", "Net/Close"}, 7);
    Here().Run("billing", {"Disk/Read"}, 1);
    Here().Run("zoll", {"Net/Open"});
    Disk().Run("archive", {"Net/Open"});
    Disk().Run("backup", {"Net/Open"});
    Web().Run("orders", {"Net/Open"});
  }
};

}  // namespace

TEST_F(ApplicationPageTest, ListsTheApplicationsOfTheMachineAndNamesIt) {
  Begin(kLocal);
  EXPECT_EQ(Where(), "Applications on THIS");
  EXPECT_EQ(Shown(), "billing orders zoll");
  EXPECT_TRUE(List().IsPainted());
  EXPECT_EQ(Window().Enabled(), "back");
  EXPECT_STREQ(WizardTexts::kApplications,
               "Please select the &applications that you want to configure for tracing.  The list "
               "initially contains the list of applications currently running that are trace "
               "enabled:");
  EXPECT_STREQ(WizardTexts::kLoad, "&Load...");
}

TEST_F(ApplicationPageTest, NamesEachOfSeveralMachines) {
  Begin(kRemote);
  EXPECT_EQ(Where(), "Applications on disk");
  EXPECT_EQ(Shown(), "archive backup");
}

TEST_F(ApplicationPageTest, NamesNoMachineIfAllAreConfiguredTheSame) {
  Begin(kSame);
  EXPECT_EQ(Where(), "Applications");
  EXPECT_EQ(Shown(), "archive backup orders");
}

TEST_F(ApplicationPageTest, MachinesThatWereToBeTheSameDoNotCountInLocalMode) {
  Begin(kSame);
  Walk("back back local next");
  EXPECT_EQ(Where(), "Applications on THIS");
  EXPECT_EQ(Shown(), "billing orders zoll");
}

TEST_F(ApplicationPageTest, ApplicationsThatWereSelectedComeUpSelected) {
  Begin(kLocal);
  Walk("pick:billing,zoll next back");
  EXPECT_EQ(Where(), "Applications on THIS");
  EXPECT_EQ(Shown(), "*billing orders *zoll");
  EXPECT_EQ(Window().Enabled(), "back next");
}

TEST_F(ApplicationPageTest, NextIsEnabledByASelection) {
  Begin(kLocal);
  List().Click(1);
  EXPECT_TRUE(CanGoOn());
  List().Click(1, true);
  EXPECT_FALSE(CanGoOn());
}

TEST_F(ApplicationPageTest, NextTakesTheSelectionAndShowsTheTracesOfTheFirstOne) {
  Begin(kLocal);
  Walk("pick:billing next back pick:zoll,orders");
  Asked(Here());
  m_host.ClearTranscript();
  EXPECT_EQ(Next(), "Traces for orders");
  EXPECT_EQ(
      Table(),
      "billing open Disk/Read=1\norders* open Net/Close=7 Net/Open=7\nzoll* open Net/Open=0\n");
  EXPECT_EQ(Asked(Here()), "open orders\nopen zoll\n");
  EXPECT_EQ(m_host.Reported(), "wait cursor on\nwait cursor off\n");
}

TEST_F(ApplicationPageTest, ReadingManyApplicationsIsLongWorkAndACancelStays) {
  const ShortPieces pieces(m_host);
  Begin(kLocal);
  Walk("pick:billing,orders,zoll");
  Asked(Here());
  m_host.AnswerWorkBox([](CDialog& dialog) {
    const auto& box = dynamic_cast<CWorkBox&>(dialog);
    EXPECT_STREQ(box.Message(), "Reading applications...");
    EXPECT_EQ(box.Progress(), 333);
    dialog.OnCancel();
  });
  EXPECT_EQ(Next(), "Applications on THIS");
  EXPECT_EQ(Asked(Here()), "open billing\n");
  EXPECT_EQ(Shown(), "*billing *orders *zoll");
  EXPECT_TRUE(CanGoOn());
  EXPECT_EQ(m_host.WaitCursors(), 0);
  m_host.AnswerWorkBox([this](CDialog& box) { m_host.Finish(box); });
  EXPECT_EQ(Next(), "Traces for billing");
  EXPECT_EQ(Asked(Here()), "refresh billing\nopen orders\nopen zoll\n");
}

TEST_F(ApplicationPageTest, ThoseThatASilentMachineIsNotAskedForNeedNoBox) {
  const ShortPieces pieces(m_host);
  Begin(kLocal);
  Walk("pick:billing,orders,zoll");
  Here().m_away = true;
  Asked(Here());
  m_host.WantNoWorkBox();
  EXPECT_EQ(Next(), "Applications on THIS");
  EXPECT_EQ(Asked(Here()), "open billing\n");
}

TEST_F(ApplicationPageTest, TheFirstOneIsThatOfTheTableNotOfTheList) {
  Here().Run("Zebra", {});
  Begin(kLocal);
  EXPECT_EQ(Shown(), "billing orders Zebra zoll");
  Walk("pick:billing,Zebra");
  EXPECT_EQ(Next(), "Traces for Zebra") << "names are ordered by their bytes";
}

TEST_F(ApplicationPageTest, NamesThatDifferInCaseAreTwoApplications) {
  Here().Run("Orders", {});
  Begin(kLocal);
  ASSERT_EQ(Shown(), "billing Orders orders zoll");
  List().Click(2);
  EXPECT_EQ(Next(), "Traces for orders");
  EXPECT_FALSE(Apps()["Orders"].m_bSelected);
}

TEST_F(ApplicationPageTest, WhatWasEditedBeforeGoingBackIsReplacedByWhatTheMachineHas) {
  Begin(kLocal);
  Walk("pick:orders,zoll next");
  Traces().Give(0, TRC_PRESET_MAX);
  Walk("next");
  EXPECT_EQ(Table(), "billing\norders* open Net/Close=799 Net/Open=7\nzoll* open Net/Open=0\n");
  Here().m_apps["orders"].traces[0].settings = 15;
  Walk("back back next");
  EXPECT_EQ(Where(), "Traces for orders");
  EXPECT_EQ(Table(), "billing\norders* open Net/Close=7 Net/Open=15\nzoll* open Net/Open=0\n");
}

TEST_F(ApplicationPageTest, AnApplicationOfAnOpenConfigurationIsTakenByTheHandleOfItsWindow) {
  CConfigDoc& config = m_program.OpenConfig(_trc_GetHostName());
  const trace_App_i* const shop = config.AddApplication("shop");
  Here().Run("shop", {"Cart/Add"}, 3);  // after the window has opened its handle
  Begin(kLocal);
  Walk("pick:shop");
  EXPECT_EQ(Next(), "Traces for shop");
  EXPECT_EQ(Apps()["shop"].m_app, shop);
  EXPECT_EQ(Traces().Shown(), "Cart|Add|Info, Warn");
  EXPECT_EQ(Asked(Here()), "refresh shop\n") << "no second handle";
}

TEST_F(ApplicationPageTest, WhatTheWindowOfAnApplicationHasStillToSendStaysAndIsShown) {
  Here().Run("shop", {"Cart/Add"}, 3);
  CConfigDoc& config = m_program.OpenConfig(_trc_GetHostName());
  trace_App_i& shop = *config.AddApplication("shop");
  shop.SetAllTraces(TRC_PRESET_OFF);
  config.NoteSubmit(shop, false);
  Begin(kLocal);
  Walk("pick:shop");
  EXPECT_EQ(Next(), "Traces for shop");
  EXPECT_EQ(Traces().Shown(), "Cart|Add|Off");
  EXPECT_EQ(Asked(Here()), "");
}

TEST_F(ApplicationPageTest, IdenticalMachinesAreReadOnce) {
  Begin(kSame);
  Walk("pick:archive");
  EXPECT_EQ(Next(), "Traces for archive");
  EXPECT_EQ(Asked(Disk()), "open archive\n");
  EXPECT_EQ(Asked(Web()), "");
}

TEST_F(ApplicationPageTest, ADoubleClickDoesTheWorkOfNextAndThePageStays) {
  Begin(kLocal);
  DoubleClick(1);
  EXPECT_EQ(Where(), "Applications on THIS");
  EXPECT_EQ(Table(), "billing\norders* open Net/Close=7 Net/Open=7\nzoll\n");
  EXPECT_EQ(Shown(), "billing *orders zoll");
  EXPECT_EQ(Next(), "Traces for orders");
}

TEST_F(ApplicationPageTest, AnApplicationThatCannotBeReachedIsToldAndThePageStays) {
  Begin(kLocal);
  Walk("pick:orders,zoll");
  Here().m_refusesOpen = true;
  EXPECT_EQ(Next(), "Applications on THIS");
  EXPECT_EQ(Boxes(), Box(kNotReached)) << "one box, however many they are";
  EXPECT_EQ(Shown(), "billing orders zoll");
  EXPECT_EQ(Window().Enabled(), "back");
  EXPECT_EQ(Table(), "billing\norders\nzoll\n");
  Here().m_refusesOpen = false;
  Walk("pick:orders");
  EXPECT_EQ(Next(), "Traces for orders");
}

TEST_F(ApplicationPageTest, TheOthersStaySelectedWhenOneCannotBeReached) {
  Begin(kLocal);
  Walk("pick:zoll next back pick:orders,zoll");
  Here().m_refusesOpen = true;
  EXPECT_EQ(Next(), "Applications on THIS");
  EXPECT_EQ(Shown(), "billing orders *zoll");
  EXPECT_EQ(Next(), "Traces for zoll");
  EXPECT_EQ(Boxes(), Box(kNotReached));
}

TEST_F(ApplicationPageTest, AMachineThatDiedIsAskedAndToldOnce) {
  Begin(kLocal);
  Here().m_away = true;
  Walk("pick:billing,orders,zoll");
  EXPECT_EQ(Next(), "Applications on THIS");
  EXPECT_EQ(Boxes(), Box(kNotReached));
  EXPECT_EQ(Asked(Here()), "open billing\n");
  EXPECT_EQ(m_host.WaitCursors(), 0);
}

TEST_F(ApplicationPageTest, BackLeadsToTheNetworkPageInLocalMode) {
  Begin(kLocal);
  EXPECT_EQ(Back(), "Networking");
}

TEST_F(ApplicationPageTest, BackFromTheFirstMachineLeadsToTheMachines) {
  Begin(kRemote);
  EXPECT_EQ(Back(), "Machines");
}

TEST_F(ApplicationPageTest, BackLeadsToTheMachinesIfAllAreConfiguredTheSame) {
  Begin(kSame);
  Page().m_itMachine.Set(Sheet().m_machines, Sheet().m_machines.find("web"));
  EXPECT_EQ(Back(), "Machines");
}

TEST_F(ApplicationPageTest, BackFromALaterMachineLeadsToTheLastApplicationOfTheOneBefore) {
  Begin(kRemote);
  Walk("pick:archive next next");
  EXPECT_EQ(Where(), "Applications on web");
  EXPECT_EQ(Back(), "Traces for backup on disk") << "it is not selected";
  EXPECT_EQ(Traces().Shown(), "");
  EXPECT_EQ(Back(), "Traces for archive on disk");
  EXPECT_EQ(Back(), "Applications on disk");
}

TEST_F(ApplicationPageTest, BackToAMachineWithoutApplicationsShowsItsPageOfApplications) {
  Begin(kRemote);
  Walk("pick:archive next next");
  Apps("disk").clear();
  EXPECT_EQ(Back(), "Applications on disk");
  EXPECT_EQ(Shown(), "");
  EXPECT_FALSE(CanGoOn());
  EXPECT_EQ(Back(), "Machines");
}
