// The find box on the screen.
#include "listview/source/ui/find_text_face.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QTest>
#include <vector>

#include "docview/ui/qt_host.h"

namespace {

class FindTextFaceTest : public testing::Test {
 protected:
  FindTextFaceTest() { m_host.RegisterFace<FindTextDialog, FindTextFace>(); }
  void Open(const RichEditFind& start) {
    m_dialog = std::make_unique<FindTextDialog>(
        m_host, start, [this](const RichEditFind& find) { m_found.push_back(find); });
  }
  static FindTextFace* Box() {
    for (QWidget* widget : QApplication::topLevelWidgets()) {
      auto* box = dynamic_cast<FindTextFace*>(widget);
      if (box && box->isVisible()) return box;
    }
    return nullptr;
  }
  template <class Widget>
  static Widget& Part(const char* name) {
    return *Box()->findChild<Widget*>(name);
  }

  QtHost m_host;
  std::vector<RichEditFind> m_found;
  std::unique_ptr<FindTextDialog> m_dialog;
};

TEST_F(FindTextFaceTest, ShowsWhatItIsOffered) {
  Open({"one", true, false});
  ASSERT_NE(Box(), nullptr);
  EXPECT_EQ(Box()->windowTitle(), QLatin1String("Find"));
  EXPECT_EQ(Part<QLineEdit>("text").text(), QLatin1String("one"));
  EXPECT_EQ(Part<QLineEdit>("text").selectedText(), QLatin1String("one"));
  EXPECT_TRUE(Part<QCheckBox>("match case").isChecked());
  EXPECT_FALSE(Part<QCheckBox>("whole word").isChecked());
  EXPECT_TRUE(Part<QPushButton>("find next").isEnabled());
}

TEST_F(FindTextFaceTest, FindNextIsDisabledWithoutAText) {
  Open({});
  EXPECT_FALSE(Part<QPushButton>("find next").isEnabled());
  QTest::keyClicks(&Part<QLineEdit>("text"), "x");
  EXPECT_TRUE(Part<QPushButton>("find next").isEnabled());
}

TEST_F(FindTextFaceTest, EnterFindsWithWhatTheWidgetsHaveAndTheBoxStays) {
  Open({});
  QTest::keyClicks(&Part<QLineEdit>("text"), "two");
  Part<QCheckBox>("whole word").click();
  QTest::keyClick(Box(), Qt::Key_Return);
  Part<QPushButton>("find next").click();
  ASSERT_EQ(m_found.size(), 2u);
  EXPECT_EQ(m_found[0].text, "two");
  EXPECT_TRUE(m_found[0].wholeWord);
  EXPECT_FALSE(m_found[0].matchCase);
  EXPECT_NE(Box(), nullptr);
}

TEST_F(FindTextFaceTest, EscClosesIt) {
  Open({"one", false, false});
  QTest::keyClick(Box(), Qt::Key_Escape);
  EXPECT_EQ(Box(), nullptr);
  EXPECT_TRUE(m_dialog->Ended());
}

TEST_F(FindTextFaceTest, GoesWithItsDialog) {
  Open({"one", false, false});
  m_dialog.reset();
  EXPECT_EQ(Box(), nullptr);
}

}  // namespace
