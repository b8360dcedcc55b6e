// A list view has columns and colours of its own, apart from other views and from the settings.
#include <gtest/gtest.h>

#include "listview/colours/active_colours.h"
#include "listview/columns/options_dialog.h"
#include "listview/rows/trace_view_fixture.h"

namespace {

using Strings = std::vector<std::string>;

class OwnLook : public TraceViewTest {
 protected:
  ~OwnLook() override { EXPECT_TRUE(UseColours({}, nullptr)); }

  // "Sev 44, Trace 576": the shown columns from left to right.
  std::string Shown() {
    std::string all;
    for (const ViewColumn& column : m_view->Columns().State())
      if (column.shown)
        all += (all.empty() ? "" : ", ") + column.header + " " + std::to_string(column.widthPx);
    return all;
  }
  void Options() { m_document.UpdateAllViews(nullptr, kHintOptions); }
  static ViewColours Red(const char* text) { return {true, {{"red", text, {255, 0, 0}, {}}}}; }
  bool IsRed(int row) {
    m_view->OnRowListPaint(true);
    const auto colours = m_view->RowListColours(row);
    m_view->OnRowListPaint(false);
    return colours && colours->ink == 0xFF0000u;
  }
};

constexpr char kStandard[] = "Sev 44, Application 79, Component 79, Category 79, Trace 576";

TEST_F(OwnLook, ColumnsAreGivenAndTakenFromLeftToRight) {
  Open();
  EXPECT_EQ(Shown(), kStandard);
  EXPECT_EQ(m_view->Columns().State().size(), 15u);
  const Strings unknown = m_view->Columns().SetState(
      {{"Trace", 300, true}, {"PID", 90, true}, {"Colour", 9, true}, {"Sev", 44, false}});
  EXPECT_EQ(unknown, Strings{"Colour"});
  EXPECT_EQ(Shown(), "Trace 300, PID 90, Application 79, Component 79, Category 79");
  const auto all = m_view->Columns().State();
  EXPECT_EQ(m_view->Columns().SetState(all), Strings());
  EXPECT_EQ(m_view->Columns().State(), all) << "what is taken gives the same again";
}

TEST_F(OwnLook, ColumnsOfAViewAreNotStored) {
  Open();
  const std::string before = ReadIfThere(SettingsFile());
  m_view->Columns().SetState({{"Trace", 300, true}, {"PID", 90, true}, {"Sev", 0, false}});
  m_host.RunPosted();
  EXPECT_EQ(ReadIfThere(SettingsFile()), before);
  EXPECT_EQ(g_activeColumns, kDefaultActiveColumns);
}

TEST_F(OwnLook, AColumnThatThisViewAloneShowsCanBeDraggedAndOneThatItHidesCannot) {
  Open();
  m_view->Columns().SetState({{"PID", 90, true}, {"Sev", 44, false}});
  EXPECT_FALSE(m_view->OnColumnResizing(Column::Pid, 40));
  EXPECT_TRUE(m_view->OnColumnResizing(Column::Sev, 40));
}

TEST_F(OwnLook, AHiddenColumnKeepsItsWidth) {
  Open();
  m_view->Columns().SetState({{"PID", 333, false}});
  EXPECT_EQ(m_list->ColumnWidth(Column::Pid), 0);
  m_view->Columns().SetState({{"PID", 0, true}});
  EXPECT_EQ(m_list->ColumnWidth(Column::Pid), 333);
}

TEST_F(OwnLook, OtherOptionsLeaveTheColumnsOfAViewAndItsColours) {
  Open();
  m_view->Columns().SetState({{"PID", 90, true}});
  m_view->Colours().SetState(Red("pid == 1"));
  Options();
  EXPECT_EQ(Shown(), std::string("PID 90, ") + kStandard);
  EXPECT_TRUE(m_view->Colours().AreOwn());
}

TEST_F(OwnLook, ColumnsThatAreChosenInOptionsHoldForEveryView) {
  Open();
  m_view->Columns().SetState({{"PID", 90, true}, {"Sev", 44, false}});
  ApplyOptions(COptionsDlg(m_host));
  Options();
  EXPECT_EQ(m_list->ColumnWidth(Column::Pid), 0);
  EXPECT_EQ(m_list->ColumnWidth(Column::Sev), 44);
  EXPECT_FALSE(m_view->Columns().AreOwn());
}

TEST_F(OwnLook, AColumnThatIsSwitchedElsewhereIsSwitchedHereToo) {
  Open();
  m_view->Columns().SetState({{"PID", 90, true}});
  g_activeColumns[static_cast<std::size_t>(Column::Tid)] = 1;
  g_activeColumns[static_cast<std::size_t>(Column::Sev)] = 0;
  Options();
  EXPECT_EQ(Shown(), "PID 90, Application 79, Component 79, Category 79, TID 44, Trace 576");
}

TEST_F(OwnLook, AColumnOfTimesIsInsertedForTheViewThatShowsIt) {
  Open();
  EXPECT_EQ(m_list->columns.size(), 15u);
  EXPECT_EQ(m_view->Columns().SetState({{"Delta", 70, true}, {"Sev", 44, true}}), Strings());
  EXPECT_EQ(m_list->columns.size(), 18u);
  EXPECT_EQ(Shown(), "Delta 70, Sev 44, Application 79, Component 79, Category 79, Trace 576");
  Options();
  EXPECT_EQ(m_list->ColumnWidth(Column::Delta), 70);
  ApplyOptions(COptionsDlg(m_host));
  Options();
  EXPECT_EQ(m_list->ColumnWidth(Column::Delta), 0);
}

TEST_F(OwnLook, TheStandardColumnsAreThoseOfANewView) {
  // The first view of an empty store has an order of its own.
  NtRegPut(HKEY_CURRENT_USER, kRegProgram, "Version", "3.1.0");
  Open();
  const auto standard = m_view->Columns().Standard();
  EXPECT_EQ(standard, m_view->Columns().State());
  m_view->Columns().SetState({{"Trace", 300, true}, {"PID", 90, true}});
  EXPECT_NE(m_view->Columns().State(), standard);
  m_view->Columns().SetState(standard);
  EXPECT_EQ(m_view->Columns().State(), standard);
  EXPECT_FALSE(m_view->Columns().AreOwn()) << "the view follows the others again";
}

TEST_F(OwnLook, AViewIsPaintedByItsOwnRulesUntilRulesAreChosenForAll) {
  for (const char* text : {"one", "two"}) Add({.text = text});
  Open();
  EXPECT_EQ(m_view->Colours().State(), ViewColours());
  m_view->Colours().SetState(Red("text == \"two\""));
  EXPECT_EQ(m_view->Colours().State(), Red("text == \"two\""));
  EXPECT_FALSE(IsRed(0));
  EXPECT_TRUE(IsRed(1));
  EXPECT_EQ(ActiveColours(), nullptr);
  ASSERT_TRUE(UseColours({true, Red("text == \"one\"").rules}, nullptr));
  Options();
  EXPECT_TRUE(IsRed(0));
  EXPECT_FALSE(IsRed(1));
}

TEST_F(OwnLook, AViewMayBePlainWhileOthersArePainted) {
  Add({.text = "one"});
  Open();
  ASSERT_TRUE(UseColours({true, Red("text == \"one\"").rules}, nullptr));
  Options();
  EXPECT_TRUE(IsRed(0));
  m_view->Colours().SetState({});
  EXPECT_FALSE(IsRed(0));
  EXPECT_EQ(m_view->Colours().State(), ViewColours());
  m_view->Colours().SetState(Red("text == \"one\""));
  EXPECT_FALSE(m_view->Colours().AreOwn()) << "those of all";
}

}  // namespace
