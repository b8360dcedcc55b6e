// The window of Go to Time and Go to Row.
#include "shell/goto/ui/go_to_face.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QTest>

#include "docview/ui/qt_host.h"
#include "listview/rows/ui/trace_rows.h"
#include "settings/globals.h"
#include "support/make_event.h"
#include "support/pending_actions.h"
#include "support/qt_test_main.h"

namespace {

class GoToFaceTest : public testing::Test {
 protected:
  GoToFaceTest() {
    g_useUtc = true;
    m_host.RegisterFace<CGoToDlg, GoToFace>();
    m_document.m_loading = false;
    for (unsigned s = 0; s < 40; ++s)
      m_document.AddTrace(MakeEvent({.count = s + 1, .time = PackTime(9, 0, s, 0)}).release());
    m_view = std::make_unique<CTraceView>(m_document,
                                          [](RowListOwner& owner) { return MakeTraceRows(owner); });
    m_view->OnInitialUpdate();
  }
  ~GoToFaceTest() override { g_useUtc = false; }

  void Run(CGoToDlg::Kind kind, const std::function<void(QDialog&)>& person) {
    m_host.Post(MustRun([person] {
      auto* window = qobject_cast<QDialog*>(QApplication::activeModalWidget());
      ASSERT_TRUE(window);
      person(*window);
      if (window->isVisible()) window->reject();
    }));
    RunGoTo(*m_view, kind);
  }
  static QLabel& Label(QDialog& window, const char* name) {
    return *window.findChild<QLabel*>(QString::fromLatin1(name));
  }
  static QLineEdit& Field(QDialog& window) { return *window.findChild<QLineEdit*>("text"); }
  int Focused() { return m_view->List().NextItem(-1, kRowFocused); }

  QtHost m_host;
  CTraceDoc m_document{m_host};
  std::unique_ptr<CTraceView> m_view;
};

TEST_F(GoToFaceTest, ItIsUsedByTheKeyboardAlone) {
  Run(CGoToDlg::Kind::Time, [](QDialog& window) {
    EXPECT_EQ(window.windowTitle(), "Go to Time");
    EXPECT_EQ(window.focusWidget(), &Field(window));
    QTest::keyClicks(&Field(window), "09:00:30");
    QTest::keyClick(&Field(window), Qt::Key_Return);
    EXPECT_FALSE(window.isVisible());
  });
  EXPECT_EQ(Focused(), 30);
  Run(CGoToDlg::Kind::Row, [](QDialog& window) {
    EXPECT_EQ(window.windowTitle(), "Go to Row");
    QTest::keyClicks(&Field(window), "5");
    QTest::keyClick(&Field(window), Qt::Key_Escape);
  });
  EXPECT_EQ(Focused(), 30) << "Escape goes nowhere";
}

TEST_F(GoToFaceTest, AWrongTextIsToldInPlaceAndCanBeTypedOver) {
  Run(CGoToDlg::Kind::Row, [](QDialog& window) {
    QTest::keyClicks(&Field(window), "41");
    QTest::keyClick(&Field(window), Qt::Key_Return);
    EXPECT_TRUE(window.isVisible());
    const QString why = "The rows are 1 to 40, from the end -1 to -40.";
    EXPECT_EQ(Label(window, "why").text(), why);
    EXPECT_EQ(Field(window).accessibleDescription(), why);
    EXPECT_EQ(Field(window).selectedText(), "41");
    QTest::keyClicks(&Field(window), "4");
    EXPECT_EQ(Label(window, "why").text(), "");
    EXPECT_EQ(Field(window).accessibleDescription(), Label(window, "hint").text());
    QTest::keyClick(&Field(window), Qt::Key_Return);
    EXPECT_FALSE(window.isVisible());
  });
  EXPECT_EQ(Focused(), 3);
}

TEST_F(GoToFaceTest, TheHintNamesTheZone) {
  Run(CGoToDlg::Kind::Time, [](QDialog& window) {
    EXPECT_TRUE(Label(window, "hint").text().endsWith("Times are in UTC."));
  });
}

TEST_F(GoToFaceTest, AllTextsHaveRoomAlsoInLargeLetters) {
  const QFont before = QApplication::font();
  for (const double scale : {1.0, 2.0}) {
    QFont font = before;
    font.setPointSizeF(before.pointSizeF() * scale);
    QApplication::setFont(font);
    Run(CGoToDlg::Kind::Time, [](QDialog& window) {
      QTest::keyClicks(&Field(window), "12:00");
      QTest::keyClick(&Field(window), Qt::Key_Return);
      QTest::qWait(1);
      for (const char* name : {"hint", "why"}) {
        const QLabel& label = Label(window, name);
        EXPECT_FALSE(label.text().isEmpty());
        EXPECT_GE(label.height(), label.heightForWidth(label.width())) << name;
      }
      EXPECT_GE(window.width(), Field(window).x() + Field(window).width());
    });
  }
  QApplication::setFont(before);
}

}  // namespace
