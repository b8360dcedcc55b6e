// The overview above the rows of a window.
#include "docview/commands/command_ids.h"
#include "overview/window/ui/overview_widget.h"
#include "shell/child_frame.h"
#include "shell_fixture.h"

namespace {

class OverviewTest : public ShellTest {
 protected:
  ~OverviewTest() override { StoreOverviewShown(false); }
  // A trace a second, for ten minutes.
  void OpenTraces() {
    TrcImage image;
    image.Name(7, "web").Name(8, "Net");
    for (unsigned i = 0; i < 600; ++i)
      image.Trace({.text = std::to_string(i),
                   .machine = 7,
                   .component = 8,
                   .time = PackTime(9, i / 60, i % 60, 0)});
    const std::string path = m_dir.File("web.trc");
    image.WriteTo(path);
    ASSERT_TRUE(Open(path));
  }
  CTraceChildFrame& Child() { return dynamic_cast<CTraceChildFrame&>(*Frame().Children()[0]); }
  RowList& Rows() { return View(Child())->List(); }
  static OverviewWidget* Strip() {
    for (QWidget* const widget : QApplication::allWidgets())
      if (auto* const strip = dynamic_cast<OverviewWidget*>(widget); strip && strip->isVisible())
        return strip;
    return nullptr;
  }
  const OverviewStrip& Shown() { return *Child().Overview().Strip(); }
  bool IsCounted() {
    return Until([this] { return Shown().IsWhole() && !Shown().Bars().empty(); });
  }
  // A place by its part of the width, in percent.
  static QPoint At(int percent) {
    return {Strip()->width() * percent / 100, Strip()->height() / 2};
  }
};

}  // namespace

TEST_F(OverviewTest, IsPutAwayUntilItsCommandAndAgainByIt) {
  Start();
  EXPECT_FALSE(Enabled(ID_VIEW_OVERVIEW)) << "there is no list";
  OpenTraces();
  EXPECT_EQ(Strip(), nullptr);
  Frame().OnCommand(ID_VIEW_OVERVIEW);
  ASSERT_NE(Strip(), nullptr);
  EXPECT_TRUE(Strip()->hasFocus());
  ASSERT_TRUE(IsCounted());
  EXPECT_EQ(Strip()->Description().left(11), QStringLiteral("600 traces "));
  Frame().OnCommand(ID_VIEW_OVERVIEW);
  EXPECT_TRUE(Until([] { return Strip() == nullptr; }));
}

TEST_F(OverviewTest, AClickLeadsTheRowsThereAndTheFrameFollowsThem) {
  Start();
  OpenTraces();
  Frame().OnCommand(ID_VIEW_OVERVIEW);
  ASSERT_TRUE(IsCounted());
  ASSERT_TRUE(Until([this] { return Shown().Page().has_value(); }));
  QTest::mouseClick(Strip(), Qt::LeftButton, {}, At(70));
  const int row = Rows().NextItem(-1, kRowFocused);
  EXPECT_GT(row, 380);
  EXPECT_LT(row, 460);
  const TraceEvent_i& there = *Child().ShownPane()->CurrentEvent();
  const std::int64_t time = TraceTimes().Of(there.GetDate(), there.GetTime());
  EXPECT_TRUE(Until([&] { return Shown().Page() && Shown().Page()->Has(time); }));
}

TEST_F(OverviewTest, DraggingFiltersAndTheStripFollows) {
  Start();
  OpenTraces();
  Frame().OnCommand(ID_VIEW_OVERVIEW);
  ASSERT_TRUE(IsCounted());
  QTest::mousePress(Strip(), Qt::LeftButton, {}, At(20));
  QTest::mouseMove(Strip(), At(40));
  QTest::mouseRelease(Strip(), Qt::LeftButton, {}, At(40));
  ASSERT_TRUE(Until([this] { return Rows().ItemCount() < 200; }));
  EXPECT_GT(Rows().ItemCount(), 90);
  const QString text = QString::fromStdString(Child().ShownPane()->m_filter.where->Text());
  EXPECT_TRUE(text.startsWith(QStringLiteral("time >= "))) << text.toStdString();
  EXPECT_TRUE(Until([this] {
    return Strip()->Description().startsWith(QString::number(Rows().ItemCount()) +
                                             QStringLiteral(" traces "));
  }));
  Frame().OnCommand(ID_VIEW_FILTERBACK);
  EXPECT_TRUE(Until([] { return Strip()->Description().startsWith(QStringLiteral("600 ")); }));
}

TEST_F(OverviewTest, TheKeysGoFromTheRowsToTheStripAndBack) {
  Start();
  OpenTraces();
  Frame().OnCommand(ID_VIEW_OVERVIEW);
  ASSERT_TRUE(IsCounted());
  QTest::keyClick(Strip(), Qt::Key_Escape);
  EXPECT_FALSE(Strip()->hasFocus());
  Frame().OnCommand(ID_VIEW_NEXTAREA);
  EXPECT_TRUE(Strip()->hasFocus());
  QTest::keyClick(Strip(), Qt::Key_End);
  QTest::keyClick(Strip(), Qt::Key_Return);
  EXPECT_GT(Rows().NextItem(-1, kRowFocused), 580);
  Frame().OnCommand(ID_VIEW_NEXTAREA);
  EXPECT_FALSE(Strip()->hasFocus());
}

TEST_F(OverviewTest, TheTreeHasItTooAndTheEndOfTheWindowEndsIt) {
  Start();
  OpenTraces();
  Frame().OnCommand(ID_VIEW_OVERVIEW);
  ASSERT_TRUE(IsCounted());
  Frame().OnCommand(ID_VIEW_PROC);
  EXPECT_TRUE(IsCounted());
  EXPECT_TRUE(Strip()->isVisible());
  Child().OnClose();
  EXPECT_TRUE(Until([] { return Strip() == nullptr; }));
}
