// From a trace to its source on the screen: keys, window, caret, the wait, the save dialogs.
#include <QCheckBox>
#include <QClipboard>
#include <QFileDialog>
#include <QLineEdit>
#include <QPushButton>

#include "listview/source/open_source.h"
#include "listview/source/source_map.h"
#include "listview/source/ui/find_text_face.h"
#include "listview/source/ui/locate_wait_face.h"
#include "listview/source/ui/rich_edit_widget.h"
#include "shell_fixture.h"

namespace {

class SourceWindowsTest : public ShellTest {
 protected:
  SourceWindowsTest() { g_sourceMap.clear(); }
  ~SourceWindowsTest() override { g_sourceMap.clear(); }

  // Opens a trace file whose one trace names the source and its line 400, and focuses the trace.
  void OpenTraceOf(const std::string& source) {
    TrcImage image;
    image.Name(7, source).Trace({.text = "up", .file = 7, .line = 400});
    ASSERT_TRUE(Open(image.WriteTo(m_dir.File("web.trc"))));
    View(*Frame().MDIGetActive())->List().SetItemState(0, kRowFocused, kRowFocused);
  }
  std::string WriteSource(const std::string& name) {
    std::string text;
    for (int line = 1; line <= 1000; ++line) text += "int a" + std::to_string(line) + ";\n";
    return m_dir.File(name, text);
  }
  QtRichEdit* Edit() {
    CMDIChildWnd* child = Frame().MDIGetActive();
    return child ? dynamic_cast<QtRichEdit*>(child->GetActiveView()->Control()) : nullptr;
  }
  template <class Face>
  static Face* Box() {
    for (QWidget* widget : QApplication::topLevelWidgets()) {
      auto* box = dynamic_cast<Face*>(widget);
      if (box && box->isVisible()) return box;
    }
    return nullptr;
  }
  // Chooses the file in the dialog that comes up next.
  void Choose(const std::string& path) {
    OnModal([path](QWidget* dialog) {
      static_cast<QFileDialog*>(dialog)->selectFile(QString::fromStdString(path));
      static_cast<QDialog*>(dialog)->accept();
    });
  }
};

TEST_F(SourceWindowsTest, CtrlGOpensTheSourceWithItsLineInTheMiddle) {
  Start();
  OpenTraceOf(WriteSource("a.cpp"));
  QTest::keyClick(QApplication::focusWidget(), Qt::Key_G, Qt::ControlModifier);
  Settle();
  QtRichEdit* edit = Edit();
  ASSERT_NE(edit, nullptr);
  EXPECT_EQ(Front()->windowTitle(), QLatin1String("a.cpp"));
  EXPECT_TRUE(edit->hasFocus());
  EXPECT_EQ(edit->textCursor().blockNumber() + 1, 400);
  EXPECT_EQ(edit->textCursor().positionInBlock(), 0);
  const double place =
      edit->cursorRect().center().y() / static_cast<double>(edit->viewport()->height());
  EXPECT_GT(place, 0.3);
  EXPECT_LT(place, 0.7);
  EXPECT_FALSE(Front()->isWindowModified());
}

TEST_F(SourceWindowsTest, TheWindowLiesInsideTheRoomOfTheOthers) {
  Start();
  OpenTraceOf(WriteSource("a.cpp"));
  Frame().OnCommand(ID_VIEW_GOTOSOURCE);
  Settle();
  EXPECT_TRUE(Face().Area().viewport()->rect().contains(Front()->geometry()));
}

TEST_F(SourceWindowsTest, TheKeyboardReachesCopyFindAndSave) {
  Start();
  const std::string path = WriteSource("a.cpp");
  OpenSourceAt(path, 3);
  Settle();
  QtRichEdit* edit = Edit();
  ASSERT_NE(edit, nullptr);
  QTest::keyClick(edit, Qt::Key_End, Qt::ShiftModifier);
  QTest::keyClick(edit, Qt::Key_C, Qt::ControlModifier);
  EXPECT_EQ(QGuiApplication::clipboard()->text(), QLatin1String("int a3;"));
  QTest::keyClick(edit, Qt::Key_F, Qt::ControlModifier);
  auto* box = Box<FindTextFace>();
  ASSERT_NE(box, nullptr);
  QTest::keyClick(box, Qt::Key_Escape);
  QTest::keyClick(edit, Qt::Key_X);
  QTest::keyClick(edit, Qt::Key_S, Qt::ControlModifier);
  EXPECT_NE(ReadAll(path).find("int a2;\nx\nint a4;\n"), std::string::npos);
}

TEST_F(SourceWindowsTest, ALocatedFileOpensAndTeachesItsPlace) {
  Start();
  OpenTraceOf("c:\\build\\src\\a.cpp");
  Choose(WriteSource("a.cpp"));
  Frame().OnCommand(ID_VIEW_GOTOSOURCE);
  ASSERT_NE(Edit(), nullptr);
  ASSERT_EQ(g_sourceMap.size(), 1u);
  EXPECT_EQ(g_sourceMap[0].recordedPrefix, "c:\\build\\src\\");
}

TEST_F(SourceWindowsTest, AFileOfAnotherNameIsWaitedForWhileMonitorsGoOn) {
  Start();
  OpenTraceOf("/build/a.cpp");
  Choose(WriteSource("b.cpp"));
  int ticks = 0;
  const TimerId timer = m_host.SetTimer(5, [&] {
    if (!Box<LocateWaitFace>() || ++ticks < 40) return;
    EXPECT_TRUE(Window().isEnabled());
    EXPECT_FALSE(QtHost::InModal());
    Box<LocateWaitFace>()->findChild<QPushButton*>("cancel")->click();
  });
  Frame().OnCommand(ID_VIEW_GOTOSOURCE);
  m_host.KillTimer(timer);
  EXPECT_GE(ticks, 40);
  EXPECT_EQ(Edit(), nullptr);
  EXPECT_TRUE(m_app->SourceTemplate()->Documents().empty());
}

TEST_F(SourceWindowsTest, TheWindowThatAskedMayBeClosedDuringTheWait) {
  Start();
  OpenTraceOf("/build/a.cpp");
  Choose(WriteSource("b.cpp"));
  const TimerId timer = m_host.SetTimer(5, [&] {
    if (!Box<LocateWaitFace>()) return;
    if (Front()) {
      Front()->close();
    } else {
      LocateWait::CancelStanding();
    }
  });
  Face().Actions().Run(ID_VIEW_GOTOSOURCE);
  m_host.KillTimer(timer);
  EXPECT_TRUE(Frame().Children().empty());
}

TEST_F(SourceWindowsTest, ClosingTheProgramEndsTheWait) {
  Start();
  OpenTraceOf("/build/a.cpp");
  Choose(WriteSource("b.cpp"));
  bool closed = false;
  const TimerId timer = m_host.SetTimer(5, [&] {
    if (!Box<LocateWaitFace>() || closed) return;
    closed = true;
    Window().close();
  });
  Face().Actions().Run(ID_VIEW_GOTOSOURCE);
  m_host.KillTimer(timer);
  EXPECT_TRUE(closed);
  EXPECT_TRUE(Until([this] { return m_closed == 1; }));
}

TEST_F(SourceWindowsTest, ExportAndSaveShowTheirBoxesInTheFileDialog) {
  Start();
  OpenTraceOf(WriteSource("a.cpp"));
  const auto boxesOf = [this](unsigned command) {
    QString texts;
    OnModal([&](QWidget* dialog) {
      for (const QCheckBox* box : dialog->findChildren<QCheckBox*>())
        texts += box->text() + (box->isEnabled() ? " enabled\n" : " disabled\n");
      static_cast<QDialog*>(dialog)->reject();
    });
    Frame().OnCommand(command);
    return texts.toStdString();
  };
  EXPECT_EQ(boxesOf(ID_FILE_EXPORT),
            "Export selected items only disabled\nOutput hidden columns enabled\n");
  EXPECT_EQ(boxesOf(ID_FILE_SAVECOPY), "Only save selected items disabled\n");
}

}  // namespace
