// The contract of the list of traces with its buttons: run for the fake and for the panel on the
// screen.
//
// To run it, write an adapter ("harness") and instantiate the suite:
//
//   struct MyHarness {
//     explicit MyHarness(CTracesList& traces);   // the list is seen, with all its rows
//     std::string Shown() const;                 // "Disk|Read|Off Net|Open|Error"
//     bool ButtonsEnabled() const;               // all five, or none
//     void PressPreset(unsigned settings);       // the button of these settings, if it is enabled
//     void PressCustom();
//     void Click(int row, int column);
//     void DoubleClick(int row, int column);
//   };
//   INSTANTIATE_TYPED_TEST_SUITE_P(Mine, TracesControlsContract, MyHarness);
#pragma once

#include <gtest/gtest.h>

#include <optional>
#include <string>

#include "config/traces/modify_trace_dialog.h"
#include "config/traces/traces_list.h"
#include "support/recording_host.h"

template <class Harness>
class TracesControlsContract : public testing::Test {
 protected:
  TracesControlsContract() {
    Fill();
    m_controls.emplace(m_traces);
  }
  void Fill() {
    m_traces.Fill({new CTraceItem("Disk", "Read", 1, 0), new CTraceItem("Net", "Open", 2, 4)});
  }
  // The user sets the maximum in the next dialog, which must come up for these settings.
  void AnswerModify(unsigned settings) {
    m_host.AnswerDialog([settings](CDialog& asked) {
      auto& dialog = dynamic_cast<CModifyTraceDialog&>(asked);
      EXPECT_EQ(dialog.GetDialogSettings(), settings);
      dialog.OnMode(CModifyTraceDialog::kMaximum);
      dialog.OnOK();
    });
  }
  unsigned Settings(std::size_t row) const { return m_traces.Items().at(row)->m_settings; }
  Harness& Controls() { return *m_controls; }

  RecordingHost m_host;
  CTracesList m_traces{m_host};
  std::optional<Harness> m_controls;
};

TYPED_TEST_SUITE_P(TracesControlsContract);

TYPED_TEST_P(TracesControlsContract, ShowItemsThatWereThereBeforeAndThoseOfTheNextFill) {
  EXPECT_EQ(this->Controls().Shown(), "Disk|Read|Off Net|Open|Error");
  this->m_traces.Fill({new CTraceItem("Mail", "Send", 3, 7)});
  EXPECT_EQ(this->Controls().Shown(), "Mail|Send|Info, Warn, Error");
}

TYPED_TEST_P(TracesControlsContract, TheButtonsAreEnabledOnlyWithASelection) {
  EXPECT_FALSE(this->Controls().ButtonsEnabled());
  this->Controls().Click(0, 2);
  EXPECT_TRUE(this->Controls().ButtonsEnabled());
  this->Fill();
  EXPECT_FALSE(this->Controls().ButtonsEnabled()) << "the new rows are not selected";
  this->Controls().PressPreset(TRC_PRESET_MAX);
  this->Controls().PressCustom();
  EXPECT_EQ(this->Controls().Shown(), "Disk|Read|Off Net|Open|Error");
  EXPECT_EQ(this->m_host.Reported(), "");
}

TYPED_TEST_P(TracesControlsContract, EachButtonSetsItsSettings) {
  this->Controls().Click(1, 0);
  for (const unsigned preset :
       {TRC_PRESET_MAX, TRC_PRESET_DEVELOPER, TRC_PRESET_SUPPORT, TRC_PRESET_OFF}) {
    this->Controls().PressPreset(preset);
    EXPECT_EQ(this->Settings(1), preset);
  }
  EXPECT_EQ(this->Controls().Shown(), "Disk|Read|Off Net|Open|Off");
}

TYPED_TEST_P(TracesControlsContract, CustomAndADoubleClickInAnyColumnAskForSettings) {
  this->Controls().Click(1, 1);
  this->AnswerModify(4);
  this->Controls().PressCustom();
  EXPECT_EQ(this->Settings(1), TRC_PRESET_MAX);
  for (const int column : {0, 1, 2}) {
    this->Fill();
    this->AnswerModify(4);
    this->Controls().DoubleClick(1, column);
    EXPECT_EQ(this->Settings(1), TRC_PRESET_MAX) << column;
    EXPECT_EQ(this->Settings(0), 0u) << column;
  }
}

TYPED_TEST_P(TracesControlsContract, TheListLivesOnWithoutThem) {
  this->Controls().Click(0, 0);
  this->m_controls.reset();
  EXPECT_FALSE(this->m_traces.HasSelection());
  this->Fill();
  this->m_traces.ApplySettings(TRC_PRESET_MAX);
  EXPECT_EQ(this->Settings(0), 0u);
}

REGISTER_TYPED_TEST_SUITE_P(TracesControlsContract,
                            ShowItemsThatWereThereBeforeAndThoseOfTheNextFill,
                            TheButtonsAreEnabledOnlyWithASelection, EachButtonSetsItsSettings,
                            CustomAndADoubleClickInAnyColumnAskForSettings,
                            TheListLivesOnWithoutThem);
