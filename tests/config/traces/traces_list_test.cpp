#include "config/traces/traces_list.h"

#include <gtest/gtest.h>

#include "config/traces/modify_trace_dialog.h"
#include "support/fake_traces_controls.h"
#include "support/recording_host.h"

namespace {

constexpr int kComponent = 0, kCategory = 1, kMask = 2;

class TracesListTest : public testing::Test {
 protected:
  void Fill(std::initializer_list<CTraceItem> items) {
    TraceItems list;
    unsigned id = 0;
    for (const CTraceItem& item : items)
      list.push_back(new CTraceItem(item.m_component, item.m_category, ++id, item.m_settings));
    m_traces.Fill(list);
  }
  void FillThree() {
    Fill({{"Net", "Open", 0, 0}, {"Disk", "Read", 0, 7}, {"Net", "Close", 0, 4}});
  }
  FakeReportList& Rows() { return m_controls.Rows(); }
  void AnswerModify(const std::function<void(CModifyTraceDialog&)>& act) {
    m_host.AnswerDialog([act](CDialog& dialog) { act(dynamic_cast<CModifyTraceDialog&>(dialog)); });
  }

  RecordingHost m_host;
  int m_changes = 0;
  CTracesList m_traces{m_host, [this] { ++m_changes; }};
  FakeTracesControls m_controls{m_traces};
};

}  // namespace

TEST_F(TracesListTest, HasThreeColumnsOfThirtyFivePercentEachAndTheRest) {
  EXPECT_EQ(Rows().Headings(),
            (std::vector<std::string>{"Component", "Category", "Attribute Mask"}));
  EXPECT_EQ(TraceColumnWidths(403), (std::vector{141, 141, 121})) << "cut to whole numbers";
  Rows().SetWidth(200);
  EXPECT_EQ(Rows().ColumnWidth(kComponent), 70);
  EXPECT_EQ(Rows().ColumnWidth(kMask), 60);
}

TEST_F(TracesListTest, OpensSortedByComponentAscendingAndEqualOnesStayInTheirOrder) {
  FillThree();
  EXPECT_EQ(m_controls.Shown(), "Disk|Read|Info, Warn, Error Net|Open|Off Net|Close|Error");
  EXPECT_EQ(Rows().Sort(), "Component up");
}

TEST_F(TracesListTest, ComparesBytes) {
  Fill({{"\xC3\xA4", "x", 0, 0}, {"a", "x", 0, 0}, {"B", "x", 0, 0}});
  EXPECT_EQ(m_controls.Shown(), "B|x|Off a|x|Off \xC3\xA4|x|Off");
}

TEST_F(TracesListTest, ClickingTheSameHeadingThreeTimesGoesDescendingAscendingDescending) {
  FillThree();
  Rows().ClickHeading(kCategory);
  EXPECT_EQ(m_controls.Shown(), "Disk|Read|Info, Warn, Error Net|Open|Off Net|Close|Error");
  EXPECT_EQ(Rows().Sort(), "Category down");
  Rows().ClickHeading(kCategory);
  EXPECT_EQ(m_controls.Shown(), "Net|Close|Error Net|Open|Off Disk|Read|Info, Warn, Error");
  EXPECT_EQ(Rows().Sort(), "Category up");
  Rows().ClickHeading(kCategory);
  EXPECT_EQ(Rows().Sort(), "Category down");
}

TEST_F(TracesListTest, TheFirstClickOnTheColumnThatItOpensWithTurnsItToDescending) {
  FillThree();
  Rows().ClickHeading(kComponent);
  EXPECT_EQ(Rows().Sort(), "Component down");
  EXPECT_EQ(m_controls.Shown(), "Net|Open|Off Net|Close|Error Disk|Read|Info, Warn, Error");
}

TEST_F(TracesListTest, TheMaskIsSortedByTheSettingsAndNotByTheirText) {
  FillThree();
  Rows().ClickHeading(kMask);
  EXPECT_EQ(m_controls.Shown(), "Disk|Read|Info, Warn, Error Net|Close|Error Net|Open|Off");
  Rows().ClickHeading(kMask);
  EXPECT_EQ(m_controls.Shown(), "Net|Open|Off Net|Close|Error Disk|Read|Info, Warn, Error");
}

TEST_F(TracesListTest, SortingLosesTheSelectionAndDisablesTheButtons) {
  FillThree();
  Rows().Click(1);
  EXPECT_TRUE(m_controls.ButtonsEnabled());
  Rows().ClickHeading(kMask);
  EXPECT_FALSE(Rows().HasSelection());
  EXPECT_FALSE(m_controls.ButtonsEnabled());
}

TEST_F(TracesListTest, TheSortKeyStaysFromOneFillToTheNext) {
  FillThree();
  Rows().ClickHeading(kMask);
  FillThree();
  EXPECT_EQ(m_controls.Shown(), "Disk|Read|Info, Warn, Error Net|Close|Error Net|Open|Off");
  EXPECT_EQ(Rows().Sort(), "Attribute Mask down");
}

TEST_F(TracesListTest, TheButtonsAreEnabledOnlyWithASelection) {
  FillThree();
  EXPECT_FALSE(m_controls.ButtonsEnabled());
  Rows().Click(0);
  EXPECT_TRUE(m_controls.ButtonsEnabled());
  Rows().Click(0, true);
  EXPECT_FALSE(m_controls.ButtonsEnabled());
}

TEST_F(TracesListTest, AButtonSetsAllSelectedRowsAndOnlyThem) {
  FillThree();
  Rows().Click(0);
  Rows().Click(2, true);
  m_controls.PressPreset(TRC_PRESET_DEVELOPER);
  EXPECT_EQ(m_controls.Shown(),
            "Disk|Read|Info, Warn, Error, Developer Net|Open|Off "
            "Net|Close|Info, Warn, Error, Developer");
  EXPECT_EQ(m_changes, 1);
  EXPECT_EQ(Rows().Painted(), 1);
  EXPECT_EQ(Rows().SelectedRows(), (std::vector{0, 2})) << "for the next button";
}

TEST_F(TracesListTest, WithoutASelectionNothingIsSetAndNothingIsAsked) {
  FillThree();
  m_traces.ApplySettings(TRC_PRESET_MAX);
  m_traces.OnCustom();
  EXPECT_EQ(m_changes, 0);
  EXPECT_EQ(m_host.Reported(), "");
  EXPECT_EQ(m_controls.Shown(), "Disk|Read|Info, Warn, Error Net|Open|Off Net|Close|Error");
}

TEST_F(TracesListTest, AnApplicationWithoutTracesHasAnEmptyListAndTheButtonsDoNothing) {
  Fill({});
  Rows().SetFocus();
  Rows().PressSelectAll();
  EXPECT_FALSE(m_controls.ButtonsEnabled());
  m_traces.ApplySettings(TRC_PRESET_MAX);
  Rows().ClickHeading(kMask);
  EXPECT_EQ(m_changes, 0);
}

TEST_F(TracesListTest, CustomBeginsWithAllThatTheSelectedRowsHave) {
  Fill({{"a", "x", 0, 4}, {"b", "x", 0, 2}, {"c", "x", 0, 16}});
  Rows().Click(0);
  Rows().Click(1, true);
  AnswerModify([](CModifyTraceDialog& dialog) {
    EXPECT_EQ(dialog.m_nMode, CModifyTraceDialog::kCustom);
    EXPECT_EQ(dialog.m_nSeverity, 1);
    EXPECT_EQ(dialog.m_bVerbose, 0);
    dialog.m_nSeverity = 0;
    dialog.m_bStack = 1;
    dialog.OnOK();
  });
  m_controls.PressCustom();
  EXPECT_EQ(m_controls.Shown(), "a|x|Error, Stack b|x|Error, Stack c|x|Verbose");
}

TEST_F(TracesListTest, ADoubleClickAsksToo) {
  FillThree();
  AnswerModify([](CModifyTraceDialog& dialog) {
    EXPECT_EQ(dialog.m_nMode, CModifyTraceDialog::kOff);
    dialog.OnMode(CModifyTraceDialog::kMaximum);
    dialog.OnOK();
  });
  Rows().DoubleClick(1);
  EXPECT_EQ(m_traces.Items()[1]->m_settings, TRC_PRESET_MAX);
}

TEST_F(TracesListTest, ACancelledCustomChangesNothing) {
  FillThree();
  Rows().Click(0);
  AnswerModify([](CModifyTraceDialog& dialog) {
    dialog.OnMode(CModifyTraceDialog::kMaximum);
    dialog.OnCancel();
  });
  m_controls.PressCustom();
  EXPECT_EQ(m_changes, 0);
  EXPECT_EQ(m_traces.Items()[0]->m_settings, 7u);
}

TEST_F(TracesListTest, TheMarksStandForTheBitsInTheirOrder) {
  Fill({{"a", "x", 0, 0x0212}});
  std::string on;
  for (const ReportMark& mark : m_traces.ReportMarks(0, kMask)) on += mark.on ? '1' : '0';
  EXPECT_EQ(on, "0100101");
  EXPECT_TRUE(m_traces.ReportMarks(0, kCategory).empty());
}

TEST_F(TracesListTest, ItemsThatCameBeforeTheControlsAreShown) {
  CTracesList traces(m_host);
  traces.Fill({new CTraceItem("Net", "Open", 1, 0)});
  const FakeTracesControls controls(traces);
  EXPECT_EQ(controls.Shown(), "Net|Open|Off");
}
