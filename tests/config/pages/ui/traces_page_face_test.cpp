#include <QElapsedTimer>

#include "config_sheet_harness.h"
#include "support/qt_test_main.h"

namespace {

using TracesPageFaceTest = ConfigSheetFaceTest;

}  // namespace

TEST_F(TracesPageFaceTest, OpensWithTheTracesInFrontAndTheFocusInTheList) {
  Run([](QDialog& window) {
    EXPECT_EQ(window.windowTitle(), "Configuration for orders");
    auto& tabs = *window.findChild<QTabWidget*>();
    EXPECT_EQ(tabs.tabText(0), "Traces");
    EXPECT_EQ(tabs.tabText(1), "Sink");
    EXPECT_EQ(tabs.currentIndex(), 0);
    EXPECT_EQ(window.focusWidget(), &List(window));
    EXPECT_EQ(Shown(window), "Disk|Read|Off Net|Open|Off Net|Close|Off");
    QStringList buttons;
    for (const QPushButton* button : tabs.currentWidget()->findChildren<QPushButton*>()) {
      buttons << button->text();
      EXPECT_FALSE(button->isEnabled());
    }
    EXPECT_EQ(buttons, (QStringList{"O&ff", "&Support", "&Developer", "&Max", "&Custom"}));
    const auto* const label = tabs.currentWidget()->findChild<QLabel*>();
    EXPECT_EQ(label->text(), "Select the &traces you want to change:");
    EXPECT_EQ(label->buddy(), &List(window));
  });
}

TEST_F(TracesPageFaceTest, KeysAloneSetAllTraces) {
  EXPECT_EQ(Run([](QDialog& window) {
              QTest::keyClick(window.focusWidget(), Qt::Key_A, Qt::ControlModifier);
              EXPECT_FALSE(Apply(window).isEnabled());
              QTest::keyClick(&window, Qt::Key_S, Qt::AltModifier);
              EXPECT_TRUE(Apply(window).isEnabled());
              EXPECT_EQ(Shown(window),
                        "Disk|Read|Info, Warn, Error Net|Open|Info, Warn, Error "
                        "Net|Close|Info, Warn, Error");
              QTest::keyClick(&window, Qt::Key_Return);
            }),
            CDialog::kIdOk);
  EXPECT_EQ(m_machine.InForce("orders"), "Net/Open=7 Net/Close=7 Disk/Read=7");
}

TEST_F(TracesPageFaceTest, EachButtonSetsItsPreset) {
  Run([](QDialog& window) {
    List(window).selectAll();
    using Panel = TracesPanel;
    const std::pair<unsigned, const char*> presets[] = {
        {Panel::kMax, "Info, Warn, Error, Developer, Verbose, Location, Stack"},
        {Panel::kDeveloper, "Info, Warn, Error, Developer"},
        {Panel::kSupport, "Info, Warn, Error"},
        {Panel::kOff, "Off"}};
    for (const auto& [button, words] : presets) {
      QTest::mouseClick(&Control<QPushButton>(window, button), Qt::LeftButton);
      EXPECT_EQ(List(window).model()->index(2, 2).data().toString(), words);
    }
  });
}

TEST_F(TracesPageFaceTest, EnterInTheListAndOnAButtonIsOk) {
  for (const unsigned focus : {0u, TracesPanel::kSupport}) {
    EXPECT_EQ(Run([focus](QDialog& window) {
                List(window).selectAll();
                if (focus != 0) Control<QWidget>(window, focus).setFocus();
                QTest::keyClick(window.focusWidget(), Qt::Key_Return);
              }),
              CDialog::kIdOk)
        << focus;
    EXPECT_EQ(m_machine.InForce("orders"), "Net/Open=0 Net/Close=0 Disk/Read=0");
  }
}

TEST_F(TracesPageFaceTest, AClickOnAHeadingSortsAndLosesTheSelection) {
  Run([](QDialog& window) {
    List(window).selectAll();
    EXPECT_TRUE(Control<QPushButton>(window, TracesPanel::kOff).isEnabled());
    ClickHeading(window, 1);
    EXPECT_EQ(Shown(window), "Disk|Read|Off Net|Open|Off Net|Close|Off");
    EXPECT_FALSE(Control<QPushButton>(window, TracesPanel::kOff).isEnabled());
    ClickHeading(window, 1);
    EXPECT_EQ(Shown(window), "Net|Close|Off Net|Open|Off Disk|Read|Off");
  });
}

TEST_F(TracesPageFaceTest, ADoubleClickOpensModifyTraceWhoseChoiceIsApplied) {
  Run([](QDialog& window) {
    OnNext([](QDialog& dialog) {
      EXPECT_EQ(dialog.windowTitle(), "Modify Trace");
      Control<QWidget>(dialog, ModifyTraceFace::kModes + 2).setFocus();
      QTest::keyClick(&dialog, Qt::Key_M, Qt::AltModifier);
      QTest::keyClick(&dialog, Qt::Key_Return);
    });
    const QPoint at = List(window).visualRect(List(window).model()->index(1, 0)).center();
    QTest::mouseClick(List(window).viewport(), Qt::LeftButton, {}, at);
    QTest::mouseDClick(List(window).viewport(), Qt::LeftButton, {}, at);
    EXPECT_EQ(Shown(window),
              "Disk|Read|Off Net|Open|Info, Warn, Error, Developer, Verbose, Location, Stack "
              "Net|Close|Off");
    EXPECT_TRUE(window.isVisible());
  });
}

TEST_F(TracesPageFaceTest, TheColumnsFillTheListWithoutAHorizontalScrollBar) {
  Run([](QDialog& window) {
    const QTreeView& list = List(window);
    const int room = list.columnWidth(0) + list.columnWidth(1) + list.columnWidth(2);
    EXPECT_LE(room, list.viewport()->width());
    EXPECT_GT(room, list.viewport()->width() - 40);
    EXPECT_EQ(list.columnWidth(0), room * 35 / 100);
    EXPECT_EQ(list.columnWidth(1), list.columnWidth(0));
    window.resize(window.width() + 200, window.height());
    const auto follows = [&] { return list.columnWidth(0) == (room + 200) * 35 / 100; };
    EXPECT_TRUE(QTest::qWaitFor(follows)) << list.columnWidth(0);
  });
}

TEST_F(TracesPageFaceTest, TheSheetCanBecomeSmall) {
  Run([](QDialog& window) {
    window.resize(460, 320);
    const auto isSmall = [&] { return window.width() <= 460 && window.height() <= 320; };
    EXPECT_TRUE(QTest::qWaitFor(isSmall)) << window.height();
  });
}

TEST_F(TracesPageFaceTest, TenThousandTracesOpenSortAndAreSetAtOnce) {
  constexpr int kTraces = 10000, kOpenMs = 200, kSortMs = 100;
  std::vector<std::string> names;
  for (int trace = 0; trace < kTraces; ++trace)
    names.push_back("Component" + std::to_string(trace / 20) + "/Trace" + std::to_string(trace));
  m_machine.Run("big", names);
  m_app = m_doc->AddApplication("big");
  QElapsedTimer clock;
  clock.start();
  CConfigPropertySheet sheet(m_host, *m_doc, *m_app);
  ConfigSheetFace window(sheet, nullptr);
  window.UpdateData();
  window.show();
  window.grab();
  EXPECT_LT(clock.restart(), kOpenMs);
  const QTreeView& list = List(window);
  EXPECT_EQ(list.columnWidth(0) + list.columnWidth(1) + list.columnWidth(2),
            list.viewport()->width())
      << "beside a scroll bar";
  ClickHeading(window, 1);
  window.grab();
  EXPECT_LT(clock.restart(), kSortMs);
  List(window).selectAll();
  Control<QPushButton>(window, TracesPanel::kMax).click();
  window.grab();
  EXPECT_LT(clock.restart(), kSortMs);
  const QAbstractItemModel& rows = *List(window).model();
  EXPECT_EQ(rows.index(kTraces - 1, 2).data().toString(),
            "Info, Warn, Error, Developer, Verbose, Location, Stack");
}

TEST_F(TracesPageFaceTest, AMachineThatIsAwayIsToldInALineBelowThePages) {
  Run([](QDialog& window) { EXPECT_FALSE(window.findChild<QLabel*>("note")->isVisible()); });
  m_machine.m_away = true;
  Run([](QDialog& window) {
    const auto* const note = window.findChild<QLabel*>("note");
    EXPECT_TRUE(note->isVisible());
    EXPECT_EQ(note->text(), "web does not answer. These are the settings that it had before.");
    List(window).selectAll();
    Control<QPushButton>(window, TracesPanel::kMax).click();
    Apply(window).click();
    EXPECT_EQ(note->text(), "These changes are not in force: web does not answer.");
    EXPECT_TRUE(window.isVisible());
  });
}

TEST_F(TracesPageFaceTest, WhatIsKeptForLaterStartsStandsBelowThePages) {
  m_machine.m_apps["orders"].kept = "Net=max;<b>=off";
  Run([](QDialog& window) {
    const auto* const note = window.findChild<QLabel*>("note");
    EXPECT_TRUE(note->isVisible());
    EXPECT_EQ(note->text(),
              "Kept for later starts: Net=max;<b>=off (\"trc forget orders\" takes it back)");
    EXPECT_EQ(note->textFormat(), Qt::PlainText);
  });
}

TEST_F(TracesPageFaceTest, EveryControlHasANameForScreenReaders) {
  Run([](QDialog& window) {
    for (const unsigned id : {TracesPanel::kOff, TracesPanel::kSupport, TracesPanel::kDeveloper,
                              TracesPanel::kMax, TracesPanel::kCustom})
      EXPECT_NE(Control<QWidget>(window, id).accessibleName(), "");
    EXPECT_EQ(List(window).accessibleName(), "Traces");
    using Sink = CAppSinkCfgPropertyPage;
    for (unsigned id = Sink::kServer; id <= Sink::kMaxSize; ++id)
      EXPECT_NE(Control<QWidget>(window, id).accessibleName(), "") << id;
    EXPECT_EQ(Control<QWidget>(window, Sink::kFlush).accessibleName(), "Force Flush");
  });
}
