// The window of a note.
#include "shell/marks/ui/note_face.h"

#include <gtest/gtest.h>

#include <QAccessible>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTest>

#include "documents/trace_doc.h"
#include "docview/ui/qt_host.h"
#include "support/make_event.h"
#include "support/pending_actions.h"
#include "support/qt_test_main.h"

namespace {

class NoteFaceTest : public testing::Test {
 protected:
  NoteFaceTest() {
    m_host.RegisterFace<CNoteDialog, NoteFace>();
    m_document.AddTrace(MakeEvent({.text = "one"}).release());
  }
  void Run(const std::function<void(QDialog&, QPlainTextEdit&)>& person) {
    m_host.Post(MustRun([person] {
      auto* window = qobject_cast<QDialog*>(QApplication::activeModalWidget());
      ASSERT_TRUE(window);
      auto& text = *window->findChild<QPlainTextEdit*>(QString::number(CNoteDialog::kText));
      window->activateWindow();
      ASSERT_TRUE(QTest::qWaitFor([&] { return text.hasFocus(); }, 20'000));
      person(*window, text);
      if (window->isVisible()) window->reject();
    }));
    CNoteDialog(m_host, m_document.Notes(), 0, "the text\nof the trace").DoModal();
  }
  std::string Note() { return std::string(m_document.Notes().Of(*m_document.m_traces[0]).note); }

  QtHost m_host;
  CTraceDoc m_document{m_host};
};

TEST_F(NoteFaceTest, ALongTextOfSeveralLinesIsWrittenByKeyboardAndCtrlEnterKeepsIt) {
  for (const Qt::Key enter : {Qt::Key_Return, Qt::Key_Enter}) {
    Run([&](QDialog& window, QPlainTextEdit& text) {
      EXPECT_EQ(window.windowTitle(), "Note");
      QTest::keyClicks(&text, "first");
      QTest::keyClick(&text, Qt::Key_Return);
      QTest::keyClicks(&text, "second");
      text.insertPlainText(QString(70'000, u'x'));
      QTest::keyClick(&text, enter, Qt::ControlModifier);
      EXPECT_FALSE(window.isVisible());
    });
    EXPECT_EQ(Note(), "first\nsecond" + std::string(70'000, 'x'));
  }
}

TEST_F(NoteFaceTest, AnEmptyTextRemovesItAndEscLeavesIt) {
  m_document.Notes().SetNote(0, "old");
  Run([](QDialog& window, QPlainTextEdit& text) {
    EXPECT_EQ(text.toPlainText(), "old");
    text.clear();
    QTest::keyClick(&window, Qt::Key_Escape);
  });
  EXPECT_EQ(Note(), "old");
  Run([](QDialog& window, QPlainTextEdit& text) {
    QTest::keyClick(&text, Qt::Key_Backspace);
    QTest::keyClick(&text, Qt::Key_Return, Qt::ControlModifier);
    EXPECT_FALSE(window.isVisible());
  });
  EXPECT_EQ(Note(), "");
}

TEST_F(NoteFaceTest, ControlsHaveNamesAndTabLeavesTheText) {
  Run([](QDialog& window, QPlainTextEdit& text) {
    const auto name = [](QObject* of) {
      return QAccessible::queryAccessibleInterface(of)->text(QAccessible::Name);
    };
    EXPECT_EQ(name(&text), "Note");
    auto* const trace = window.findChild<QLineEdit*>(QString::number(CNoteDialog::kTrace));
    ASSERT_TRUE(trace);
    EXPECT_EQ(name(trace), "Trace");
    EXPECT_TRUE(trace->isReadOnly());
    QTest::keyClick(&text, Qt::Key_Tab);
    EXPECT_FALSE(text.hasFocus());
    EXPECT_EQ(text.toPlainText(), "");
  });
}

TEST_F(NoteFaceTest, ALargeFontFitsAndTheWindowCanBecomeLarger) {
  const QFont before = QApplication::font();
  QFont large = before;
  large.setPointSizeF(before.pointSizeF() * 2);
  QApplication::setFont(large);
  Run([](QDialog& window, QPlainTextEdit& text) {
    for (const QWidget* const child : window.findChildren<QPushButton*>())
      EXPECT_TRUE(window.rect().contains(child->geometry()));
    const int height = text.height();
    window.resize(window.width() + 200, window.height() + 300);
    QApplication::processEvents();
    EXPECT_GT(text.height(), height + 250) << "the text gets the room";
  });
  QApplication::setFont(before);
}

}  // namespace
