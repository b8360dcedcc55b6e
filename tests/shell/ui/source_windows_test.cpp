// From a trace to its source on the screen: keys, window, caret, the wait, the save dialogs.
#include <QCheckBox>
#include <QClipboard>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QFileDialog>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QMimeData>
#include <QPushButton>
#include <QStatusBar>
#include <QWindow>

#include "listview/source/open_source.h"
#include "listview/source/source_map.h"
#include "listview/source/ui/find_text_face.h"
#include "listview/source/ui/locate_wait_face.h"
#include "listview/source/ui/rich_edit_widget.h"
#include "shell/menus/menu_resources.h"
#include "shell_fixture.h"
#include "symbols/naming_program.h"
#include "symbols/stack_naming.h"
#include "tree/proc/proc_view.h"

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
  // Opens a source window and its Find box.
  FindTextFace* OpenFindBox() {
    Start();
    OpenSourceAt(WriteSource("a.cpp"), 3);
    Settle();
    QTest::keyClick(Edit(), Qt::Key_F, Qt::ControlModifier);
    return Box<FindTextFace>();
  }
  // Runs `act` when a pop-up is up.
  template <class Act>
  void OnPopUp(Act act) {
    auto* clock = new QTimer(qApp);
    QObject::connect(clock, &QTimer::timeout, qApp, [clock, act = MustRun(act)] {
      QWidget* const menu = QApplication::activePopupWidget();
      if (!menu) return;
      clock->stop();
      clock->deleteLater();
      act(menu);
    });
    clock->start(5);
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
  EXPECT_EQ(edit->MarkedLine(), 399);
  QTest::keyClick(edit, Qt::Key_Up);
  EXPECT_EQ(edit->MarkedLine(), -1);
  EXPECT_FALSE(Front()->isWindowModified());
}

TEST_F(SourceWindowsTest, CtrlGOnTheSelectedItemOfATreeOpensItsFileOnItsLine) {
  Start();
  OpenTraceOf(WriteSource("a.cpp"));
  Frame().OnCommand(ID_VIEW_PROC);
  auto& tree = dynamic_cast<CProcView&>(*Frame().MDIGetActive()->GetActiveView()).Tree();
  TreeItem item = tree.Walk(0, TreeStep::FirstChild);
  for (TreeItem below = item; below; below = tree.Walk(item, TreeStep::FirstChild)) {
    item = below;
    tree.Expand(item, true);
  }
  tree.SelectItem(item);
  QTest::keyClick(QApplication::focusWidget(), Qt::Key_G, Qt::ControlModifier);
  Settle();
  ASSERT_NE(Edit(), nullptr);
  EXPECT_EQ(Front()->windowTitle(), QLatin1String("a.cpp"));
  EXPECT_EQ(Edit()->textCursor().blockNumber() + 1, 400);
  EXPECT_EQ(Edit()->MarkedLine(), 399);
}

TEST_F(SourceWindowsTest, EnterOnAFunctionOfAStackOpensItsMappedFileOnItsLine) {
  Start();
  const std::string source = WriteSource("pay.cpp");
  g_sourceMap.push_back({"/build", source.substr(0, source.rfind('/'))});
  const NamingProgram program(NamingProgram::kAnswers, "/build/pay.cpp");
  g_stackNaming = std::make_unique<StackNaming>(std::vector<std::string>(), program.Path());
  TrcImage image;
  image.Trace({.text = "up", .stack = "/usr/bin/orders+0x12ab [0a1b2c3d4e5f]"});
  ASSERT_TRUE(Open(image.WriteTo(m_dir.File("web.trc"))));
  View(*Frame().MDIGetActive())
      ->List()
      .SetItemState(0, kRowFocused | kRowSelected, kRowFocused | kRowSelected);
  OnModal([](QWidget* dialog) {
    auto* const stack = dialog->findChild<QComboBox*>("1151");
    ASSERT_TRUE(QTest::qWaitFor([&] { return stack->count() == 2; }, 20000));
    stack->setFocus();
    QTest::keyClick(stack, Qt::Key_Return);
  });
  Frame().OnCommand(ID_VIEW_PROPERTIES);
  g_stackNaming.reset();
  Settle();
  ASSERT_NE(Edit(), nullptr);
  EXPECT_EQ(Front()->windowTitle(), QLatin1String("pay.cpp"));
  EXPECT_EQ(Edit()->textCursor().blockNumber() + 1, 12);
}

TEST_F(SourceWindowsTest, TheWindowLiesInsideTheRoomOfTheOthers) {
  Start();
  OpenTraceOf(WriteSource("a.cpp"));
  Frame().OnCommand(ID_VIEW_GOTOSOURCE);
  Settle();
  EXPECT_TRUE(Face().Area().viewport()->rect().contains(Front()->geometry()));
}

TEST_F(SourceWindowsTest, TheKeyboardReachesCopyAndFind) {
  Start();
  OpenSourceAt(WriteSource("a.cpp"), 3);
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
}

TEST_F(SourceWindowsTest, CtrlSAsksAndTheOpenedFileStaysAsItIsUnderAnotherName) {
  Start();
  const std::string path = WriteSource("a.cpp"), chosen = m_dir.File("edited.cpp");
  const std::string before = ReadAll(path);
  OpenSourceAt(path, 3);
  Settle();
  QtRichEdit* edit = Edit();
  ASSERT_NE(edit, nullptr);
  QTest::keyClick(edit, Qt::Key_X);
  QString title, suggested;
  OnModal([&](QWidget* dialog) {
    title = dialog->windowTitle();
    auto* const name = dialog->findChild<QLineEdit*>("fileNameEdit");
    suggested = static_cast<QFileDialog*>(dialog)->directory().filePath(name->text());
    EXPECT_EQ(ReadAll(path), before);
    ASSERT_TRUE(QTest::qWaitForWindowActive(dialog));
    name->setFocus();
    name->selectAll();
    QTest::keyClicks(name, "edited.cpp");
    QAbstractButton* const save =
        dialog->findChild<QDialogButtonBox*>()->button(QDialogButtonBox::Save);
    QTimer::singleShot(2000, dialog, [] {
      auto* const box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
      if (!box) return;
      ADD_FAILURE() << box->text().toStdString();
      box->close();
    });
    QTest::mouseClick(save, Qt::LeftButton);
    if (dialog->isVisible()) static_cast<QDialog*>(dialog)->reject();
  });
  QTest::keyClick(edit, Qt::Key_S, Qt::ControlModifier);
  EXPECT_EQ(title, "Save As");
  EXPECT_EQ(suggested.toStdString(), path);
  EXPECT_EQ(ReadAll(path), before);
  EXPECT_NE(ReadAll(chosen).find("int a2;\nxint a3;\n"), std::string::npos);
}

TEST_F(SourceWindowsTest, AnEditPutsAStarIntoTheTitleAndTakingItBackTakesTheStarAway) {
  Start();
  OpenSourceAt(WriteSource("a.cpp"), 3);
  Settle();
  QTest::keyClick(Edit(), Qt::Key_X);
  EXPECT_EQ(Front()->windowTitle(), QLatin1String("a.cpp*"));
  QTest::keyClick(Edit(), Qt::Key_Z, Qt::ControlModifier);
  EXPECT_EQ(Front()->windowTitle(), QLatin1String("a.cpp"));
}

TEST_F(SourceWindowsTest, CtrlSThatIsCancelledWritesNothing) {
  Start();
  const std::string path = WriteSource("a.cpp");
  const std::string before = ReadAll(path);
  OpenSourceAt(path, 3);
  Settle();
  QTest::keyClick(Edit(), Qt::Key_X);
  bool asked = false;
  OnModal([&asked](QWidget* dialog) {
    asked = true;
    QTest::keyClick(dialog, Qt::Key_Escape);
  });
  QTest::keyClick(Edit(), Qt::Key_S, Qt::ControlModifier);
  EXPECT_TRUE(asked);
  EXPECT_EQ(ReadAll(path), before);
}

TEST_F(SourceWindowsTest, F3IsGreyAndDoesNothing) {
  Start();
  OpenSourceAt(WriteSource("a.cpp"), 3);
  Settle();
  QtRichEdit* edit = Edit();
  ASSERT_NE(edit, nullptr);
  QTest::keyClick(edit, Qt::Key_F, Qt::ControlModifier);
  auto* box = Box<FindTextFace>();
  ASSERT_NE(box, nullptr);
  QTest::keyClicks(box->findChild<QLineEdit*>("text"), "int");
  QTest::keyClick(box, Qt::Key_Return);
  QTest::keyClick(box, Qt::Key_Escape);
  const QTextCursor hit = edit->textCursor();
  EXPECT_EQ(hit.selectedText(), "int");
  EXPECT_FALSE(Enabled(ID_EDIT_FINDNEXT));
  QTest::keyClick(edit, Qt::Key_F3);
  EXPECT_EQ(edit->textCursor().position(), hit.position());
}

TEST_F(SourceWindowsTest, ALocatedFileOpensAndTeachesItsPlace) {
  Start();
  OpenTraceOf("c:\\build\\src\\a.cpp");
  ChooseFile(WriteSource("a.cpp"));
  Frame().OnCommand(ID_VIEW_GOTOSOURCE);
  ASSERT_NE(Edit(), nullptr);
  ASSERT_EQ(g_sourceMap.size(), 1u);
  EXPECT_EQ(g_sourceMap[0].recordedPrefix, "c:\\build\\src\\");
}

TEST_F(SourceWindowsTest, CtrlGOnATraceWithoutALocationSaysSoInTheStatusBar) {
  Start();
  TrcImage image;
  image.Trace({.text = "up"});
  ASSERT_TRUE(Open(image.WriteTo(m_dir.File("web.trc"))));
  View(*Frame().MDIGetActive())->List().SetItemState(0, kRowFocused, kRowFocused);
  auto* const bar = Window().findChild<QStatusBar*>();
  ASSERT_TRUE(bar);
  EXPECT_EQ(bar->currentMessage(), "");
  QTest::keyClick(QApplication::focusWidget(), Qt::Key_G, Qt::ControlModifier);
  EXPECT_EQ(bar->currentMessage(), kNoSourceFile);
  EXPECT_EQ(Edit(), nullptr);
  const QAction* const item = Face().Actions().Action(ID_VIEW_GOTOSOURCE);
  Face().Actions().UpdateAll();
  EXPECT_EQ(item->statusTip(), kNoSourceFile);
}

TEST_F(SourceWindowsTest, TheQuestionForAFileShowsWhereTheTraceKnowsIt) {
  Start();
  OpenTraceOf("/no/such/folder/a.cpp");
  QString shown;
  OnModal([&shown](QWidget* dialog) {
    auto* const note = dialog->findChild<QLineEdit*>("note");
    if (note && note->isVisible()) shown = note->text();
    QTest::keyClick(dialog, Qt::Key_Escape);
  });
  QTest::keyClick(QApplication::focusWidget(), Qt::Key_G, Qt::ControlModifier);
  EXPECT_EQ(shown, "/no/such/folder/a.cpp");
}

TEST_F(SourceWindowsTest, AFileOfAnotherNameIsWaitedForWhileMonitorsGoOn) {
  Start();
  OpenTraceOf("/build/a.cpp");
  ChooseFile(WriteSource("b.cpp"));
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
  ChooseFile(WriteSource("b.cpp"));
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
  ChooseFile(WriteSource("b.cpp"));
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

// A window manager can close the window from outside although the pop-up has the mouse.
TEST_F(SourceWindowsTest, ClosingTheProgramWhileThePopUpIsUpEndsBoth) {
  Start();
  OpenSourceAt(WriteSource("a.cpp"), 3);
  Settle();
  QtRichEdit* const edit = Edit();
  ASSERT_NE(edit, nullptr);
  bool closed = false;
  OnPopUp([&](QWidget*) {
    closed = true;
    Window().close();
  });
  const QPoint position(20, 60);
  QContextMenuEvent asked(QContextMenuEvent::Mouse, position, edit->mapToGlobal(position));
  QCoreApplication::sendEvent(edit->viewport(), &asked);
  EXPECT_TRUE(Until([&] { return closed && m_closed == 1; }));
  EXPECT_FALSE(QApplication::activePopupWidget());
}

TEST_F(SourceWindowsTest, ALineThatIsEndedWithShiftAndEnterLeavesTheFilesEncoding) {
  Start();
  const std::string path = m_dir.File("a.cpp", "caf\xE9\r\nint a;\r\n");
  OpenSourceAt(path, 2);
  Settle();
  ASSERT_NE(Edit(), nullptr);
  QTest::keyClick(Edit(), Qt::Key_Return, Qt::ShiftModifier);
  ASSERT_TRUE(m_app->SourceTemplate()->Documents().front()->OnSaveDocument(path));
  EXPECT_EQ(ReadAll(path), "caf\xE9\r\n\r\nint a;\r\n");
}

TEST_F(SourceWindowsTest, AltAInTheFindBoxTicksMatchCase) {
  auto* const box = OpenFindBox();
  ASSERT_NE(box, nullptr);
  ASSERT_TRUE(Until([box] {
    box->activateWindow();
    return box->isActiveWindow();
  }));
  QTest::keyClick(box, Qt::Key_A, Qt::AltModifier);
  EXPECT_TRUE(box->findChild<QCheckBox*>("match case")->isChecked());
}

// The box is modeless, so the keys of the main window are in force there too.
TEST_F(SourceWindowsTest, NoKeyOfTheFindBoxIsOneOfTheMainWindow) {
  auto* const box = OpenFindBox();
  ASSERT_NE(box, nullptr);
  QStringList texts;
  for (const auto* label : box->findChildren<QLabel*>()) texts << label->text();
  for (const auto* button : box->findChildren<QAbstractButton*>()) texts << button->text();
  QSet<QKeySequence> keys;
  for (const QString& text : texts) {
    const QKeySequence key = QKeySequence::mnemonic(text);
    if (key.isEmpty()) continue;
    EXPECT_FALSE(keys.contains(key)) << text.toStdString();
    keys.insert(key);
    for (const Accelerator& accelerator : Accelerators())
      EXPECT_NE(key, QKeySequence(QString::fromLatin1(accelerator.key))) << text.toStdString();
  }
  EXPECT_EQ(keys.size(), 4);
}

TEST_F(SourceWindowsTest, AFileThatIsDroppedOnTheTextOpens) {
  Start();
  OpenSourceAt(WriteSource("a.cpp"), 3);
  Settle();
  QtRichEdit* const edit = Edit();
  ASSERT_NE(edit, nullptr);
  const QString trace = QString::fromStdString(TraceFile("web.trc", 1));
  QMimeData data;
  data.setUrls({QUrl::fromLocalFile(trace)});
  data.setText(QUrl::fromLocalFile(trace).toString());
  // As from the window system: the window finds out which widget is below the mouse.
  QWindow* const window = Window().windowHandle();
  const QPoint at = edit->viewport()->mapTo(&Window(), QPoint(5, 5));
  QDragEnterEvent enter(at, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
  QCoreApplication::sendEvent(window, &enter);
  QDropEvent drop(at, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
  QCoreApplication::sendEvent(window, &drop);
  EXPECT_TRUE(drop.isAccepted());
  EXPECT_TRUE(Until([this] { return m_app->FileTemplate()->Documents().size() == 1; }));
  EXPECT_FALSE(edit->document()->isModified());
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
