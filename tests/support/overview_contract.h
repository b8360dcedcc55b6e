// What every face of the overview must do: the Qt class and the fake.
//
// A harness has Strip(), Face(), Owner() and Document() with 1,000 traces in ten seconds,
// ShowAt(width) for a window of this width, and Click, DragTo, Turn Press(key) and OpenMenu as
// a user does them; pixels are those of the strip.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

#include "overview/window/overview_documents.h"
#include "overview/window/overview_strip.h"

class RecordingOverviewOwner final : public OverviewOwner {
 public:
  void TakeOverviewStep(const std::string& text) override { m_steps.push_back(text); }
  void LeaveOverview() override { ++m_left; }
  std::vector<std::string> m_steps;
  int m_left = 0;
};

// What a harness shows.
class OverviewOnShow {
 public:
  OverviewOnShow() {
    for (int i = 0; i < 1000; ++i)
      m_document.AddAt(i * 10, i % 100 == 50 ? kAttributeError : kAttributeInfo);
  }
  ~OverviewOnShow() { m_strip.SetPane(nullptr); }
  OverviewStrip& Strip() { return m_strip; }
  RecordingOverviewOwner& Owner() { return m_owner; }
  void AddFarTrace() { m_document.Add(MakeEvent({.date = PackDate(1970, 1, 1), .time = 0})); }
  RecordingHost& GetHost() { return m_document.m_host; }
  void Settle() {
    m_strip.SetPane(&m_document.m_pane);
    do {
      m_document.m_host.TickTimers();
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
    } while (!m_document.m_host.Timers().empty());
  }

 protected:
  OverviewDocument<LendingDoc> m_document;
  RecordingOverviewOwner m_owner;
  OverviewStrip m_strip{m_document.m_host, m_owner};
};

template <class Harness>
class OverviewContract : public testing::Test {
 protected:
  OverviewStrip& Strip() { return m_harness.Strip(); }
  Harness m_harness;
};
TYPED_TEST_SUITE_P(OverviewContract);

TYPED_TEST_P(OverviewContract, TheStripKnowsTheRoomAtEachWidth) {
  for (const int width : {60, 300, 1900}) {
    this->m_harness.ShowAt(width);
    this->m_harness.Settle();
    EXPECT_LE(this->Strip().Scale().widthPx, width);
    EXPECT_GE(this->Strip().Scale().widthPx, width / 2);
    std::uint64_t traces = 0;
    for (const OverviewBar& bar : this->Strip().Bars()) traces += bar.counts.Traces();
    EXPECT_EQ(traces, 1000U);
  }
}

TYPED_TEST_P(OverviewContract, HasTheFocusWhenItIsGiven) {
  this->m_harness.ShowAt(400);
  EXPECT_FALSE(this->m_harness.Face().HasFocus());
  this->m_harness.Face().SetFocus();
  EXPECT_TRUE(this->m_harness.Face().HasFocus());
}

TYPED_TEST_P(OverviewContract, AClickPutsTheCursorThereAndADragTakesAStep) {
  this->m_harness.ShowAt(600);
  this->m_harness.Settle();
  this->m_harness.Click(200);
  ASSERT_TRUE(this->Strip().Cursor().has_value());
  EXPECT_TRUE(this->Strip().Cursor()->Has(this->Strip().Scale().TimeAt(200)));
  EXPECT_TRUE(this->m_harness.Owner().m_steps.empty());
  this->m_harness.Drag(100, 250);
  EXPECT_EQ(this->m_harness.Owner().m_steps.size(), 1U);
}

TYPED_TEST_P(OverviewContract, TheWheelZoomsAndADoubleClickEndsThat) {
  this->m_harness.ShowAt(600);
  this->m_harness.Settle();
  this->m_harness.Turn(300, 2);
  EXPECT_TRUE(this->Strip().IsZoomed());
  this->m_harness.DoubleClick(300);
  EXPECT_FALSE(this->Strip().IsZoomed());
}

TYPED_TEST_P(OverviewContract, TheKeysReachTheStrip) {
  using Key = OverviewStrip::Key;
  this->m_harness.ShowAt(600);
  this->m_harness.Settle();
  this->m_harness.Face().SetFocus();
  this->m_harness.Press(Key::Home, false);
  const TimeLimits first = this->Strip().Cursor().value();
  this->m_harness.Press(Key::Right, false);
  EXPECT_EQ(this->Strip().Cursor()->from, first.to);
  this->m_harness.Press(Key::Right, true);
  EXPECT_TRUE(this->Strip().Chosen().has_value());
  this->m_harness.Press(Key::Enter, false);
  EXPECT_EQ(this->m_harness.Owner().m_steps.size(), 1U);
  this->m_harness.Press(Key::ZoomIn, false);
  EXPECT_TRUE(this->Strip().IsZoomed());
  this->m_harness.Press(Key::ZoomOut, false);
  EXPECT_FALSE(this->Strip().IsZoomed());
  this->m_harness.Press(Key::Escape, false);
  EXPECT_EQ(this->m_harness.Owner().m_left, 1);
}

TYPED_TEST_P(OverviewContract, AKeyAndTheMenuShowTimesFarAwayAndLeaveThemOut) {
  this->m_harness.AddFarTrace();
  this->m_harness.ShowAt(600);
  this->m_harness.Settle();
  this->m_harness.Face().SetFocus();
  EXPECT_EQ(this->Strip().Scale().from / 86'400'000, 20'778);
  this->m_harness.Press(OverviewStrip::Key::Far, false);
  this->m_harness.Settle();
  EXPECT_TRUE(this->Strip().ShowsFar());
  EXPECT_EQ(this->Strip().Scale().from, 0);
  this->m_harness.OpenMenu();
  EXPECT_EQ(this->m_harness.GetHost().MenuText(), "+Show Times Far Away|(Zoom Out)");
  this->m_harness.GetHost().Choose("Show Times Far Away");
  this->m_harness.Settle();
  EXPECT_EQ(this->Strip().Scale().from / 86'400'000, 20'778);
}

REGISTER_TYPED_TEST_SUITE_P(OverviewContract, TheStripKnowsTheRoomAtEachWidth,
                            HasTheFocusWhenItIsGiven, AClickPutsTheCursorThereAndADragTakesAStep,
                            TheWheelZoomsAndADoubleClickEndsThat, TheKeysReachTheStrip,
                            AKeyAndTheMenuShowTimesFarAwayAndLeaveThemOut);
