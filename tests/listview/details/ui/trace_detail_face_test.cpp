#include "listview/details/ui/trace_detail_face.h"

#include <QAccessible>
#include <QComboBox>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QScrollBar>
#include <QTest>
#include <QTextEdit>
#include <functional>

#include "docview/commands/command_ids.h"
#include "docview/ui/hit_color.h"
#include "docview/ui/plain_tool_tip.h"
#include "docview/ui/qt_host.h"
#include "docview/wnd.h"
#include "listview/details/fake_cursor.h"
#include "settings/globals.h"
#include "support/pending_actions.h"
#include "support/qt_test_main.h"
#include "symbols/naming_program.h"
#include "tree/find/find_settings.h"
#include "tree/regex/regex.h"

namespace {

class TraceDetailFaceTest : public testing::Test {
 protected:
  TraceDetailFaceTest() {
    g_useUtc = true;
    m_host.RegisterFace<CTraceDetailDialog, TraceDetailFace>();
    m_cursor.Add({.text = "first", .count = 1, .machine = 1, .tic = 1000});
    m_cursor.Add({.text = "one\ntwo\r\nthree",
                  .stack = "main\nidle",
                  .count = 2,
                  .machine = 1,
                  .tic = 2500,
                  .attributes = kAttributeWarn,
                  .file = 2,
                  .line = 7});
    m_cursor.Add({.text = "last", .count = 3, .machine = 1, .tic = 3000});
    m_cursor.StandAt(1);
  }
  ~TraceDetailFaceTest() override { g_useUtc = false; }

  // Runs the dialog; `person` acts on its window.
  int Run(const std::function<void(QDialog&)>& person) {
    m_host.Post(MustRun([person] {
      auto* window = qobject_cast<QDialog*>(QApplication::activeModalWidget());
      ASSERT_TRUE(window && QTest::qWaitForWindowActive(window));
      person(*window);
      if (window->isVisible()) window->reject();
    }));
    return CTraceDetailDialog(m_host, m_cursor, m_names).DoModal();
  }
  static QString Value(QDialog& window, const char* id) {
    return window.findChild<QLineEdit*>(id)->text();
  }
  static QPushButton& Button(QDialog& window, const char* id) {
    return *window.findChild<QPushButton*>(id);
  }
  static QString Text(QDialog& window) {
    return window.findChild<QPlainTextEdit*>("1039")->toPlainText();
  }

  QtHost m_host;
  NameMap m_names = {{1, {"web-1"}}, {2, {"net.cpp"}}};
  FakeCursor m_cursor;
};

}  // namespace

TEST_F(TraceDetailFaceTest, HasItsTitleGroupsCaptionsAndButtons) {
  Run([](QDialog& window) {
    EXPECT_EQ(window.windowTitle(), "Trace Properties");
    QStringList groups, captions, buttons;
    for (const QGroupBox* group : window.findChildren<QGroupBox*>()) groups << group->title();
    EXPECT_EQ(groups, (QStringList{"Trace Info", "Process Info", "Time Info", "Location"}));
    for (const QLabel* label : window.findChildren<QLabel*>()) {
      captions << label->text();
      EXPECT_TRUE(label->buddy()) << label->text().toStdString();
    }
    EXPECT_EQ(captions,
              (QStringList{"Severity:", "Count:", "Attributes:", "Component:", "Category:",
                           "Machine:", "Application:", "PID:", "TID:", "Time:", "Tic Count:",
                           "Tic Difference:", "Source:", "Stack:"}));
    for (const char* id : {"1057", "1058", "2", "57670"}) buttons << Button(window, id).text();
    EXPECT_EQ(buttons, (QStringList{"< &Back", "&Next >", "Cancel", "Help"}));
    EXPECT_TRUE(Button(window, "1058").isDefault());
    EXPECT_FALSE(window.findChild<QPushButton*>("1"));  // no OK
    for (const CTraceDetailDialog::Field& field : CTraceDetailDialog::Fields()) {
      const auto* value = window.findChild<QLineEdit*>(QString::number(field.id));
      ASSERT_TRUE(value) << field.caption;
      EXPECT_TRUE(value->isReadOnly());
      EXPECT_FALSE(value->accessibleName().isEmpty());
    }
  });
}

TEST_F(TraceDetailFaceTest, ShowsTheTraceUnderTheCursor) {
  Run([](QDialog& window) {
    EXPECT_EQ(Value(window, "1159"), "Warning");
    EXPECT_EQ(Value(window, "1041"), "2");
    EXPECT_EQ(Value(window, "1044"), "web-1");
    EXPECT_EQ(Value(window, "1042"), "2026-11-21 09:41:07.123");
    EXPECT_EQ(Value(window, "1078"), "1500 (1.5 ns)");
    EXPECT_EQ(Value(window, "1087"), "net.cpp:7");
    const auto* stack = window.findChild<QComboBox*>("1151");
    EXPECT_TRUE(stack->isEnabled());
    EXPECT_EQ(stack->count(), 2);
    EXPECT_EQ(stack->currentText(), "main");
    EXPECT_EQ(stack->itemText(1), "idle");
  });
}

TEST_F(TraceDetailFaceTest, ATraceOfAnAccountHasALineForIt) {
  m_names[3] = {"4711 alice"};
  m_cursor.Add({.text = "hers", .count = 4, .machine = 1, .pid = 3});
  m_cursor.StandAt(2);
  Run([](QDialog& window) {
    EXPECT_FALSE(window.findChild<QLineEdit*>("1160")) << "this one has no account";
    Button(window, "1058").click();
    auto* const account = window.findChild<QLineEdit*>("1160");
    ASSERT_TRUE(account);
    EXPECT_TRUE(account->isVisible());
    EXPECT_EQ(account->text(), "alice");
    EXPECT_EQ(Value(window, "1046"), "4711 alice");
    const auto* const tid = window.findChild<QLineEdit*>("1047");
    EXPECT_GT(account->y(), tid->y());
    EXPECT_LT(account->y(), tid->y() + 3 * tid->height()) << "next to the others";
    QLabel* caption = nullptr;
    for (QLabel* label : window.findChildren<QLabel*>())
      if (label->text() == "Account:") caption = label;
    ASSERT_TRUE(caption);
    EXPECT_TRUE(caption->isVisible());
    EXPECT_EQ(caption->buddy(), account);
    Button(window, "1057").click();
    EXPECT_FALSE(account->isVisible());
    EXPECT_FALSE(caption->isVisible());
    Button(window, "1058").click();
    EXPECT_TRUE(account->isVisible());
  });
}

TEST_F(TraceDetailFaceTest, HitsOfTheLastSearchAreTinted) {
  ASSERT_EQ(RegexPrepare("t", 0, 1, 0, 0), 1);
  FindSettings.searchText = "t";
  Run([](QDialog& window) {
    auto* const box = window.findChild<QPlainTextEdit*>("1039");
    QStringList tinted;
    for (const QTextEdit::ExtraSelection& tint : box->extraSelections()) {
      tinted << QString::number(tint.cursor.selectionStart()) + tint.cursor.selectedText();
      EXPECT_EQ(tint.format.background().color(), HitColor(box->palette()));
    }
    EXPECT_EQ(tinted, (QStringList{"4t", "8t"})) << "of one, two, three";
    QTest::keyClick(&window, Qt::Key_N, Qt::AltModifier);
    EXPECT_EQ(box->extraSelections().size(), 1) << "of last";
  });
  FindSettings = {};
}

TEST_F(TraceDetailFaceTest, ItIsAsHighAsItsTextNeedsAndCutsNoValueOfOrdinaryLength) {
  int low = 0, high = 0;
  Run([&low](QDialog& window) { low = window.height(); });
  std::string lines;
  for (int line = 0; line < 15; ++line) lines += "line " + std::to_string(line) + "\n";
  m_cursor.Add(
      {.text = lines, .attributes = kAttributeInfo | kAttributeDeveloper | kAttributeVerbose});
  m_cursor.StandAt(3);
  Run([&high](QDialog& window) {
    high = window.height();
    auto* const text = window.findChild<QPlainTextEdit*>("1039");
    EXPECT_EQ(text->verticalScrollBar()->maximum(), 0) << "all lines are seen";
    window.resize(window.minimumSizeHint());
    const auto* const attributes = window.findChild<QLineEdit*>("1158");
    EXPECT_EQ(attributes->text(), "Info, Developer, Verbose");
    EXPECT_GE(attributes->width(),
              attributes->fontMetrics().horizontalAdvance(attributes->text()) + 4);
  });
  EXPECT_GE(high, low + 5 * QFontMetrics(QApplication::font()).lineSpacing());
  m_cursor.Add({.text = std::string(60000, 'x')});
  m_cursor.StandAt(4);
  Run([&](QDialog& window) { EXPECT_LT(window.height(), 2 * high); });
}

TEST_F(TraceDetailFaceTest, AltNAndAltBWalkAsFastAsTheyAreHit) {
  m_cursor.StandAt(0);
  Run([](QDialog& window) {
    QTest::keyClick(&window, Qt::Key_N, Qt::AltModifier);
    QTest::keyClick(&window, Qt::Key_N, Qt::AltModifier);
    EXPECT_EQ(Value(window, "1041"), "3");
    QTest::keyClick(&window, Qt::Key_B, Qt::AltModifier);
    QTest::keyClick(&window, Qt::Key_B, Qt::AltModifier);
    EXPECT_EQ(Value(window, "1041"), "1");
  });
}

TEST_F(TraceDetailFaceTest, AScreenReaderHearsNoMarkup) {
  Run([](QDialog& window) {
    for (const CTraceDetailDialog::Field& field : CTraceDetailDialog::Fields()) {
      auto* const value = window.findChild<QLineEdit*>(QString::number(field.id));
      QAccessibleInterface* const spoken = QAccessible::queryAccessibleInterface(value);
      ASSERT_TRUE(spoken) << field.caption;
      EXPECT_EQ(spoken->text(QAccessible::Description), QString(field.group)) << field.caption;
      EXPECT_EQ(spoken->text(QAccessible::Value), value->text()) << field.caption;
    }
  });
}

TEST_F(TraceDetailFaceTest, TheBigBoxKeepsTheLinesOfTheTextAndIsReadOnly) {
  Run([](QDialog& window) {
    auto* box = window.findChild<QPlainTextEdit*>("1039");
    EXPECT_TRUE(box->isReadOnly());
    EXPECT_EQ(Text(window), "one\ntwo\nthree");
    EXPECT_EQ(box->verticalScrollBarPolicy(), Qt::ScrollBarAlwaysOn);
    QTest::keyClick(box, Qt::Key_X);
    EXPECT_EQ(Text(window), "one\ntwo\nthree");
  });
}

TEST_F(TraceDetailFaceTest, NextAndBackWalkAndGoGreyAtTheEnds) {
  Run([](QDialog& window) {
    EXPECT_TRUE(Button(window, "1057").isEnabled());
    EXPECT_TRUE(Button(window, "1058").isEnabled());
    Button(window, "1058").click();
    EXPECT_EQ(Text(window), "last");
    EXPECT_FALSE(Button(window, "1058").isEnabled());
    EXPECT_FALSE(window.findChild<QComboBox*>("1151")->isEnabled());
    EXPECT_EQ(window.findChild<QComboBox*>("1151")->count(), 0);
    Button(window, "1057").click();
    Button(window, "1057").click();
    EXPECT_EQ(Text(window), "first");
    EXPECT_EQ(Value(window, "1078"), "n/a");
    EXPECT_FALSE(Button(window, "1057").isEnabled());
  });
}

TEST_F(TraceDetailFaceTest, EnterAndTheUnderlinedLettersWalkAndEnterAtTheEndClosesNothing) {
  Run([](QDialog& window) {
    // A button that is pressed by its letter is seen to go down first.
    QTest::keyClick(&window, Qt::Key_B, Qt::AltModifier);
    EXPECT_TRUE(QTest::qWaitFor([&] { return Text(window) == "first"; }));
    QTest::keyClick(&window, Qt::Key_N, Qt::AltModifier);
    EXPECT_TRUE(QTest::qWaitFor([&] { return Text(window) == "one\ntwo\nthree"; }));
    Button(window, "1058").setFocus();
    QTest::keyClick(window.focusWidget(), Qt::Key_Return);
    EXPECT_EQ(Text(window), "last");
    QTest::keyClick(window.focusWidget(), Qt::Key_Return);
    EXPECT_TRUE(window.isVisible());
    EXPECT_EQ(window.focusWidget()->objectName(), "1039");
  });
}

TEST_F(TraceDetailFaceTest, WithoutATraceEverythingIsEmpty) {
  Run([this](QDialog& window) {
    m_cursor.Clear();
    Button(window, "1057").click();
    for (const QLineEdit* value : window.findChildren<QLineEdit*>()) EXPECT_EQ(value->text(), "");
    EXPECT_EQ(Text(window), "");
  });
}

TEST_F(TraceDetailFaceTest, EscAndCancelEndIt) {
  EXPECT_EQ(Run([](QDialog& window) { QTest::keyClick(&window, Qt::Key_Escape); }),
            CDialog::kIdCancel);
  EXPECT_EQ(Run([](QDialog& window) { Button(window, "2").click(); }), CDialog::kIdCancel);
}

TEST_F(TraceDetailFaceTest, HelpAsksTheMainWindow) {
  class Main final : public CWnd {
   public:
    explicit Main(Host& host) : CWnd(host) {
      host.SetMainWindow(this);
      MapCommand(ID_HELP, [this] { ++asked; });
    }
    ~Main() override { GetHost().SetMainWindow(nullptr); }
    int asked = 0;
  } main(m_host);
  Run([](QDialog& window) { Button(window, "57670").click(); });
  EXPECT_EQ(main.asked, 1);
}

TEST_F(TraceDetailFaceTest, LongValuesDoNotWidenTheWindowAndCanBeReadWhole) {
  m_names[1].name = std::string(65535, 'm');
  m_names[2].name = "/" + std::string(2000, 'd') + "/net.cpp";
  m_cursor.Add({.text = std::string(65535, 't'),
                .stack = std::string(65535, 's'),
                .machine = 1,
                .file = 2,
                .line = 1});
  m_cursor.StandAt(3);
  Run([](QDialog& window) {
    EXPECT_LT(window.width(), 1000);
    EXPECT_LT(window.minimumSizeHint().width(), 800);
    EXPECT_EQ(Value(window, "1044").size(), 65535);
    EXPECT_EQ(Text(window).size(), 65535);
  });
}

TEST_F(TraceDetailFaceTest, MarkupInANameIsShownAsItIs) {
  m_names[1].name = "<b>web</b> & <img src='x'>";
  Run([](QDialog& window) {
    const auto* machine = window.findChild<QLineEdit*>("1044");
    EXPECT_EQ(machine->text(), "<b>web</b> & <img src='x'>");
    EXPECT_EQ(machine->toolTip(), PlainToolTip("<b>web</b> & <img src='x'>"));
    EXPECT_EQ(window.findChild<QLineEdit*>("1047")->toolTip(), "");  // an empty one has none
  });
}

TEST_F(TraceDetailFaceTest, GrowsIntoTheText) {
  Run([](QDialog& window) {
    window.resize(700, 600);
    QTest::qWait(0);
    const int before = window.findChild<QPlainTextEdit*>("1039")->height();
    window.resize(700, 900);
    ASSERT_TRUE(QTest::qWaitFor(
        [&] { return window.findChild<QPlainTextEdit*>("1039")->height() == before + 300; }));
  });
}

TEST_F(TraceDetailFaceTest, TheStackGetsItsNamesWhenTheyCome) {
  const NamingProgram program(NamingProgram::kHangsUntilToldTo);
  g_stackNaming = std::make_unique<StackNaming>(std::vector<std::string>(), program.Path());
  const QString recorded = "/usr/bin/orders+0x12ab [0a1b2c3d4e5f]";
  m_cursor.Add({.text = "named", .stack = recorded.toStdString()});
  m_cursor.StandAt(3);
  Run([&](QDialog& window) {
    const auto* stack = window.findChild<QComboBox*>("1151");
    EXPECT_EQ(stack->count(), 1);
    EXPECT_EQ(stack->currentText(), recorded);
    program.Tell();
    ASSERT_TRUE(QTest::qWaitFor([&] { return stack->count() == 2; }, 20000));
    EXPECT_EQ(stack->currentText(), "Charge() at pay.cpp:12 (orders)");
    EXPECT_EQ(stack->itemData(0, Qt::ToolTipRole).toString(), PlainToolTip(recorded));
    EXPECT_EQ(stack->itemText(1), "(no names for libfoo.so)");
    Button(window, "1057").click();
    EXPECT_FALSE(stack->isEnabled());
    EXPECT_EQ(stack->count(), 0);
  });
  g_stackNaming.reset();
}

TEST_F(TraceDetailFaceTest, EnterOnAFunctionLeadsToItsSource) {
  m_cursor.Add({.text = "named", .stack = "/usr/bin/orders+0x12ab [0a1b2c3d4e5f]"});
  m_cursor.StandAt(3);
  for (const bool byKey : {true, false}) {
    const NamingProgram program(NamingProgram::kAnswers, "/src/pay.cpp");
    g_stackNaming = std::make_unique<StackNaming>(std::vector<std::string>(), program.Path());
    CTraceDetailDialog dialog(m_host, m_cursor, m_names);
    m_host.Post(MustRun([byKey] {
      auto* window = qobject_cast<QDialog*>(QApplication::activeModalWidget());
      ASSERT_TRUE(window && QTest::qWaitForWindowActive(window));
      auto* const stack = window->findChild<QComboBox*>("1151");
      ASSERT_TRUE(QTest::qWaitFor([&] { return stack->count() == 2; }, 20000));
      stack->setCurrentIndex(1);  // what is missing: no function
      stack->setFocus();
      QTest::keyClick(stack, Qt::Key_G, Qt::ControlModifier);
      EXPECT_TRUE(window->isVisible());
      stack->setCurrentIndex(0);
      QTest::keyClick(stack, byKey ? Qt::Key_Return : Qt::Key_G,
                      byKey ? Qt::NoModifier : Qt::ControlModifier);
      EXPECT_FALSE(window->isVisible());
      if (window->isVisible()) window->reject();
    }));
    dialog.DoModal();
    EXPECT_EQ(dialog.m_gotoPath, "/src/pay.cpp");
    EXPECT_EQ(dialog.m_gotoLine, 12u);
    g_stackNaming.reset();
  }
}

TEST_F(TraceDetailFaceTest, EnterOnAFrameWithoutASourceIsThatOfTheDefaultButton) {
  Run([](QDialog& window) {
    auto* const stack = window.findChild<QComboBox*>("1151");
    stack->setFocus();
    QTest::keyClick(stack, Qt::Key_Return);
    EXPECT_TRUE(window.isVisible());
    EXPECT_EQ(Value(window, "1041"), "3");
  });
}
