// Marks and notes by the keyboard in the real window.
#include <QMenu>
#include <QPlainTextEdit>

#include "controls/list/ui/row_list_widget.h"
#include "docview/commands/command_ids.h"
#include "panes/row_mark.h"
#include "shell/child_frame.h"
#include "shell/marks/marks_pane.h"
#include "shell/marks/ui/note_face.h"
#include "shell_fixture.h"

namespace {

class MarksWindowTest : public ShellTest {
 protected:
  void OpenTraces(int traces = 30) {
    Start();
    m_document = Open(TraceFile("web.trc", traces));
    ASSERT_TRUE(m_document);
    Rows().setFocus();
    View(*Frame().Children()[0])->List().SetItemState(3, 3, 3);
  }
  QtRowList& Rows() { return static_cast<QtRowList&>(View(*Frame().Children()[0])->List()); }
  MarksPane* Pane() {
    auto& frame = dynamic_cast<CTraceChildFrame&>(*Frame().Children()[0]);
    return static_cast<MarksPane*>(frame.Beside().Find(ID_VIEW_MARKS));
  }
  QtRowList& PaneRows() { return static_cast<QtRowList&>(Pane()->Control()); }
  int ColourOf(std::size_t place) {
    return m_document->Notes().Of(*m_document->m_traces[place]).colour;
  }
  void Key(Qt::Key key, Qt::KeyboardModifiers modifiers = {}) {
    QTest::keyClick(&Rows(), key, modifiers);
    Settle();
  }

  CTraceFileDoc* m_document = nullptr;
};

}  // namespace

TEST_F(MarksWindowTest, KeysMarkRowsGoToThemAndWriteNotes) {
  OpenTraces();
  Key(Qt::Key_D, Qt::ControlModifier);
  EXPECT_EQ(ColourOf(3), 1);
  Key(Qt::Key_D, Qt::ControlModifier);
  EXPECT_EQ(ColourOf(3), 0);
  Key(Qt::Key_7, Qt::ControlModifier | Qt::AltModifier);
  EXPECT_EQ(ColourOf(3), 7);
  Key(Qt::Key_Down);
  OnModal([](QWidget* dialog) {
    auto* const text = dialog->findChild<QPlainTextEdit*>();
    ASSERT_TRUE(text);
    QTest::keyClicks(text, "why");
    static_cast<QDialog*>(dialog)->accept();
  });
  Key(Qt::Key_D, Qt::ControlModifier | Qt::ShiftModifier);
  EXPECT_EQ(m_document->Notes().Of(*m_document->m_traces[4]).note, "why");
  // Offscreen no window manager does this when a dialog closes.
  Window().activateWindow();
  ASSERT_TRUE(QTest::qWaitForWindowActive(&Window()));
  Key(Qt::Key_F2);
  EXPECT_EQ(Rows().States().Focus(), 3) << "it went around";
  Key(Qt::Key_F2, Qt::ShiftModifier);
  EXPECT_EQ(Rows().States().Focus(), 4);
}

TEST_F(MarksWindowTest, ThePaneListsThemAndItsKeysWork) {
  OpenTraces();
  m_document->Notes().Mark({5, 20}, 2);
  Key(Qt::Key_M, Qt::ControlModifier | Qt::ShiftModifier);
  ASSERT_TRUE(Pane());
  ASSERT_TRUE(Until([this] { return PaneRows().isVisible() && PaneRows().ItemCount() == 2; }));
  EXPECT_GE(Rows().CountPerPage(), 3);
  PaneRows().setFocus();
  QTest::keyClick(&PaneRows(), Qt::Key_End);
  QTest::keyClick(&PaneRows(), Qt::Key_Return);
  EXPECT_TRUE(Until([this] { return Rows().States().Focus() == 20; }));
  QTest::keyClick(&PaneRows(), Qt::Key_Delete);
  EXPECT_TRUE(Until([this] { return PaneRows().ItemCount() == 1; }));
  EXPECT_EQ(ColourOf(20), 0);
  QTest::keyClick(&PaneRows(), Qt::Key_Escape);
  EXPECT_TRUE(Until([this] { return Rows().hasFocus(); }));
  Key(Qt::Key_M, Qt::ControlModifier | Qt::ShiftModifier);
  EXPECT_FALSE(Pane());
}

TEST_F(MarksWindowTest, ASecondWindowShowsTheSame) {
  OpenTraces();
  Frame().OnCommand(ID_WINDOW_NEW);
  Settle();
  ASSERT_EQ(Frame().Children().size(), 2u);
  auto& other = *View(*Frame().Children()[1]);
  m_document->Notes().Mark({5}, 2);
  ASSERT_TRUE(other.RowListMark(5));
  EXPECT_EQ(other.RowListMark(5)->number, 2);
}

TEST_F(MarksWindowTest, ClosingTheProgramSavesThem) {
  OpenTraces();
  Key(Qt::Key_D, Qt::ControlModifier);
  Frame().OnClose();
  EXPECT_TRUE(Until([this] { return m_closed == 1; }));
  EXPECT_NE(ReadIfThere(m_dir.File("web.trc.notes")).find("\"row\": 3"), std::string::npos);
}

TEST_F(MarksWindowTest, TheColoursAreAMenuInsideTheMenu) {
  OpenTraces();
  Key(Qt::Key_D, Qt::ControlModifier);
  const QList<QMenu*> menus = Window().findChildren<QMenu*>();
  const auto found = std::find_if(menus.begin(), menus.end(), [](const QMenu* menu) {
    return menu->title() == "Mark Colo&ur" && menu->parentWidget()->isVisibleTo(nullptr) == false;
  });
  ASSERT_NE(found, menus.end());
  ASSERT_EQ((*found)->actions().size(), 9);
  QAction* const green = (*found)->actions()[3];
  EXPECT_TRUE(green->text().startsWith("&4 Green"));
  green->trigger();
  EXPECT_EQ(ColourOf(3), 4);
}
