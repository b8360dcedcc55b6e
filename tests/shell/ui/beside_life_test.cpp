// The panes beside the rows through the life of a window: all of them at once, in the real program.
#include <QMessageBox>

#include "controls/list/ui/row_list_widget.h"
#include "docview/commands/command_ids.h"
#include "shell/beside/ui/beside_area_widget.h"
#include "shell/child_frame.h"
#include "shell/details/ui/details_widget.h"
#include "shell/hits/hits_pane.h"
#include "shell/marks/marks_pane.h"
#include "shell/mdi/ui/qt_child_frame.h"
#include "shell_fixture.h"
#include "support/fake_connection.h"
#include "tree/find/find_settings.h"
#include "tree/regex/regex.h"

namespace {

constexpr unsigned kPanes[] = {ID_VIEW_DETAILS, ID_VIEW_MARKS, ID_EDIT_LISTHITS};

class BesideLifeTest : public ShellTest {
 protected:
  BesideLifeTest() { g_updateInterval = 10; }
  ~BesideLifeTest() override {
    m_app.reset();
    FindSettings = {};
    g_updateInterval = 333;
    g_traceLimit = 500000;
  }
  // A window with all panes; every tenth trace is a hit, and two are marked.
  void StartWith(int traces) {
    Start();
    m_document = Open(TraceFile("a.trc", traces));
    List().SetItemState(0, kRowFocused | kRowSelected, kRowFocused | kRowSelected);
    m_document->Notes().Mark({1, 2}, 3);
    OpenPanes();
    FindNext("0");
  }
  void OpenPanes() {
    for (const unsigned pane : kPanes) Frame().OnCommand(pane);
    Settle();
  }
  void FindNext(const std::string& text) {
    ASSERT_EQ(RegexPrepare(text.c_str(), 0, 1, 0, 0), 1);
    FindSettings = {text, 0, 0, 0, 0};
    Frame().OnCommand(ID_EDIT_FINDNEXT);
    Settle();
  }
  CTraceChildFrame& Child() { return static_cast<CTraceChildFrame&>(*Frame().MDIGetActive()); }
  QtRowList& List() { return static_cast<QtRowList&>(Child().ListView()->List()); }
  template <class Pane>
  Pane* Find(unsigned command) {
    return static_cast<Pane*>(Child().Beside().Find(command));
  }
  QtRowList& HitRows() {
    return static_cast<QtRowList&>(Find<HitsPane>(ID_EDIT_LISTHITS)->Control());
  }
  QtRowList& MarkRows() {
    return static_cast<QtRowList&>(Find<MarksPane>(ID_VIEW_MARKS)->Control());
  }
  QWidget& Details() {
    return static_cast<QtDetails&>(Find<DetailsPane>(ID_VIEW_DETAILS)->Control());
  }
  QString DetailText() { return Details().findChild<QPlainTextEdit*>("detailText")->toPlainText(); }
  QWidget& PaneOf(unsigned command) {
    return *WidgetOf(&Child().Beside().Find(command)->Control());
  }
  QtBesideArea* Area() { return Window().findChild<QtBesideArea*>("beside"); }
  ChildWindow& FrameWindow() { return *static_cast<QtChildFrame*>(Child().Face())->Window(); }
  void Press(Qt::Key key, Qt::KeyboardModifiers with = Qt::NoModifier) {
    QWidget* const focus = QApplication::focusWidget();
    ASSERT_TRUE(focus);
    QTest::keyClick(focus, key, with);
    Settle();
  }
  bool Hits(int count) {
    return Until([=, this] { return HitRows().ItemCount() == count; });
  }

  CTraceFileDoc* m_document = nullptr;
  FakeService m_service;
};

TEST_F(BesideLifeTest, EachIsSeenInSmallAndLargeWindowsAtBothEdgesInLettersOfBothSizes) {
  StartWith(60);
  FrameWindow().showNormal();
  const QFont usual = QApplication::font();
  for (const int percent : {100, 200}) {
    QFont letters = usual;
    letters.setPointSizeF(usual.pointSizeF() * percent / 100);
    QApplication::setFont(letters);
    for (const bool right : {false, true}) {
      const BesideEdge edge = right ? BesideEdge::Right : BesideEdge::Below;
      Child().Beside().SetEdge(edge);
      // The user likes them larger than these windows are.
      Child().Beside().OnExtent(1000);
      Child().Beside().SetEdge(edge);
      for (const QSize size : {QSize(420, 320), QSize(900, 700)}) {
        FrameWindow().resize(size);
        for (const unsigned pane : kPanes) {
          if (PaneOf(pane).isHidden()) Frame().OnCommand(pane);
          Settle();
          SCOPED_TRACE(std::to_string(percent) + " % at " + std::to_string(size.width()) +
                       (right ? " right " : " below ") + std::to_string(pane));
          ASSERT_TRUE(PaneOf(pane).isVisible());
          EXPECT_TRUE(Area()->rect().contains(PaneOf(pane).geometry().size().width() - 1, 1));
          EXPECT_GE(PaneOf(pane).height(), size.height() > 400 ? 60 : 10);
          EXPECT_GE(PaneOf(pane).width(), 60);
          EXPECT_GE(List().viewport()->height(), 2 * List().RowHeight());
          EXPECT_TRUE(Window().rect().contains(
              QRect(PaneOf(pane).mapTo(&Window(), QPoint()), QSize(1, 1))));
        }
      }
    }
  }
  QApplication::setFont(usual);
}

TEST_F(BesideLifeTest, ThoseBehindAnotherTabLookAnewWhenTheyComeToTheFront) {
  StartWith(60);
  ASSERT_TRUE(Hits(6));
  List().SetItemState(7, kRowFocused, kRowFocused);
  m_document->Notes().Mark({5}, 2);
  Settle();
  Frame().OnCommand(ID_VIEW_DETAILS);
  Settle();
  EXPECT_EQ(DetailText(), QStringLiteral("trace 7"));
  FindNext("11");
  Frame().OnCommand(ID_VIEW_MARKS);
  EXPECT_TRUE(Until([this] { return MarkRows().ItemCount() == 3; }));
  Frame().OnCommand(ID_EDIT_LISTHITS);
  EXPECT_TRUE(Hits(1));
  Frame().OnCommand(ID_VIEW_DETAILS);
  Settle();
  EXPECT_EQ(DetailText(), QStringLiteral("trace 11"));
}

TEST_F(BesideLifeTest, F6EscapeAndTheTabsWorkByKeyboardInEachOfThem) {
  StartWith(60);
  for (const unsigned pane : kPanes) {
    Child().Beside().Open(pane);
    List().setFocus();
    Press(Qt::Key_F6);
    EXPECT_TRUE(PaneOf(pane).hasFocus() || PaneOf(pane).isAncestorOf(QApplication::focusWidget()))
        << pane;
    Press(Qt::Key_Escape);
    EXPECT_TRUE(List().hasFocus()) << pane;
    Press(Qt::Key_F6);
    Press(Qt::Key_F6);
    EXPECT_TRUE(List().hasFocus()) << pane;
  }
  Area()->tabBar()->setFocus();
  Press(Qt::Key_Left);
  EXPECT_TRUE(PaneOf(ID_VIEW_MARKS).isVisible());
  Press(Qt::Key_Escape);
  EXPECT_TRUE(List().hasFocus());
}

TEST_F(BesideLifeTest, TheyFollowTheTreeAndTheListAfterIt) {
  StartWith(60);
  ASSERT_TRUE(Hits(6));
  Frame().OnCommand(ID_VIEW_PROC);
  Settle();
  EXPECT_TRUE(Hits(0)) << "nothing was searched in the tree";
  FindNext("11");
  EXPECT_TRUE(Hits(1));
  HitRows().setFocus();
  Press(Qt::Key_Home);
  Child().Beside().Open(ID_VIEW_DETAILS);
  Settle();
  EXPECT_EQ(DetailText(), QStringLiteral("trace 11"));
  Frame().OnCommand(ID_VIEW_PROC);
  Child().Beside().Open(ID_EDIT_LISTHITS);
  EXPECT_TRUE(Hits(6)) << "those of the list again";
  Child().Beside().Open(ID_VIEW_MARKS);
  EXPECT_TRUE(Until([this] { return MarkRows().ItemCount() == 2; }));
}

TEST_F(BesideLifeTest, AFilterTakesHitsAndTheShownTraceAwayAndGivesThemBack) {
  StartWith(60);
  ASSERT_TRUE(Hits(6));
  List().SetItemState(7, kRowFocused, kRowFocused);
  Child().Filter().TakeStep("text contains \"1\"");
  ASSERT_TRUE(Hits(1)) << "trace 10";
  Child().Beside().Open(ID_VIEW_DETAILS);
  Settle();
  EXPECT_NE(DetailText(), QStringLiteral("trace 7"));
  Frame().OnCommand(ID_VIEW_FILTERBACK);
  Child().Beside().Open(ID_EDIT_LISTHITS);
  EXPECT_TRUE(Hits(6));
}

TEST_F(BesideLifeTest, ADocumentThatClosesAmidTheirWorkTakesThemAlong) {
  for (const unsigned front : kPanes) {
    if (!m_app)
      StartWith(3000);
    else
      m_document = Open(TraceFile("b.trc", 3000));
    OpenPanes();
    Child().Beside().Open(front);
    FindNext("7");
    Child().Beside().SetFocus();
    // Each of them has a step to come: another trace, other marks, other hits, a row to go to.
    List().SetItemState(9, kRowFocused, kRowFocused);
    m_document->Notes().Mark({8}, 1);
    Find<HitsPane>(ID_EDIT_LISTHITS)->List().SetItemState(0, kRowFocused, kRowFocused);
    const QPointer<QWidget> area = Area();
    ASSERT_TRUE(area);
    Frame().OnCommand(ID_FILE_CLOSE);
    Settle();
    EXPECT_TRUE(Until([&] { return Frame().Children().empty() && !area; }));
  }
}

TEST_F(BesideLifeTest, TheProgramClosesWithTheFocusInEachOfThem) {
  StartWith(500);
  Child().Beside().Open(ID_EDIT_LISTHITS);
  Child().Beside().SetFocus();
  HitRows().SetItemState(3, kRowFocused, kRowFocused);
  Frame().OnClose();
  EXPECT_TRUE(Until([this] { return m_closed == 1; }));
}

TEST_F(BesideLifeTest, InAMonitorTheyOutliveTrimsAndAClear) {
  Start();
  g_traceLimit = 400;
  m_app->m_connectMonitor = m_service.Connector();
  m_app->OpenMonitor("web");
  OpenPanes();
  auto& monitor = static_cast<CTraceRealtimeDoc&>(*m_app->MonitorTemplate()->Documents().front());
  m_service.Last().SendMany(300);
  ASSERT_TRUE(Until([this] { return List().ItemCount() == 300; }));
  List().SetItemState(20, kRowFocused | kRowSelected, kRowFocused | kRowSelected);
  FindNext("u");
  ASSERT_TRUE(Hits(300));
  for (int round = 0; round < 12; ++round) {
    Child().Beside().Open(kPanes[round % 3]);
    HitRows().SetItemState(HitRows().ItemCount() - 1, kRowFocused, kRowFocused);
    m_service.Last().SendMany(100);
    ASSERT_TRUE(Until([this] { return m_service.Last().m_waiting.empty(); }));
    Settle();
  }
  Child().Beside().Open(ID_EDIT_LISTHITS);
  EXPECT_TRUE(Hits(static_cast<int>(monitor.m_traces.size())));
  EXPECT_LE(monitor.m_traces.size(), 400u);
  // A key would be lost while the box is not active yet.
  OnModal([](QWidget* box) { static_cast<QMessageBox*>(box)->button(QMessageBox::No)->click(); });
  Frame().OnCommand(ID_EDIT_CLEAR_ALL);
  EXPECT_TRUE(Hits(0));
  Child().Beside().Open(ID_VIEW_DETAILS);
  Settle();
  EXPECT_EQ(Find<DetailsPane>(ID_VIEW_DETAILS)->Message(), "No trace has the focus");
}

}  // namespace
