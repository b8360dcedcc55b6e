// The window of the colour rules.
#include "shell/colours/ui/colour_rules_face.h"

#include <gtest/gtest.h>

#include <QCheckBox>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QTest>

#include "docview/ui/qt_host.h"
#include "settings/registry.h"
#include "support/pending_actions.h"
#include "support/qt_test_main.h"
#include "support/temp_dir.h"

namespace {

using Dialog = CColourRulesDialog;

class ColourRulesFaceTest : public testing::Test {
 protected:
  ColourRulesFaceTest() {
    SetSettingsFile(m_directory.File("settings.ini"));
    ReadActiveColours();
    m_host.RegisterFace<Dialog, ColourRulesFace>();
  }
  ~ColourRulesFaceTest() override {
    SetSettingsFile(m_directory.File("none.ini"));
    ReadActiveColours();
    SetSettingsFile("");
  }
  int Run(const std::function<void(QDialog&)>& person) {
    m_host.Post(MustRun([person] {
      auto* window = qobject_cast<QDialog*>(QApplication::activeModalWidget());
      ASSERT_TRUE(window);
      person(*window);
      if (window->isVisible()) window->reject();
    }));
    return Dialog(m_host).DoModal();
  }
  template <class Control>
  static Control& Find(QDialog& window, unsigned id) {
    return *window.findChild<Control*>(QString::number(id));
  }
  static void Press(QDialog& window, unsigned id) { Find<QPushButton>(window, id).click(); }
  static void Write(QDialog& window, unsigned id, const char* text) {
    auto& edit = Find<QLineEdit>(window, id);
    edit.selectAll();
    QTest::keyClicks(&edit, text);
  }

  TempDir m_directory;
  QtHost m_host;
};

TEST_F(ColourRulesFaceTest, ARuleIsMadeInTheWindowAndPutIntoUse) {
  const int result = Run([](QDialog& window) {
    EXPECT_EQ(window.windowTitle(), "Colour Rules");
    EXPECT_FALSE(Find<QLineEdit>(window, Dialog::kName).isEnabled()) << "there is no rule yet";
    Press(window, Dialog::kAdd);
    Write(window, Dialog::kName, "Slow");
    Write(window, Dialog::kText, "text contains \"slow\"");
    Write(window, Dialog::kInk, "#003f6f");
    Write(window, Dialog::kGround, "#d7eeff");
    auto& rules = Find<QListWidget>(window, Dialog::kRules);
    ASSERT_EQ(rules.count(), 1);
    EXPECT_EQ(rules.item(0)->text(), "Slow    text contains \"slow\"");
    EXPECT_EQ(rules.item(0)->foreground().color(), QColor("#003f6f"));
    EXPECT_EQ(rules.item(0)->background().color(), QColor("#d7eeff"));
    EXPECT_EQ(rules.item(0)->checkState(), Qt::Checked);
    Find<QCheckBox>(window, Dialog::kShown).setChecked(true);
    Press(window, CDialog::kIdOk);
  });
  EXPECT_EQ(result, CDialog::kIdOk);
  ASSERT_TRUE(ActiveColours());
  const ColourRule slow{"Slow", "text contains \"slow\"", {0, 0x3f, 0x6f}, {0xd7, 0xee, 0xff}};
  EXPECT_EQ(ActiveColours()->Rules(), ColourRules{slow});
}

TEST_F(ColourRulesFaceTest, TheRulesOfASetAreSwitchedMovedAndRemovedByTheirButtons) {
  Run([](QDialog& window) {
    auto& rules = Find<QListWidget>(window, Dialog::kRules);
    Press(window, Dialog::kLight);
    EXPECT_TRUE(Find<QCheckBox>(window, Dialog::kShown).isChecked());
    ASSERT_EQ(rules.count(), 8);
    EXPECT_EQ(rules.currentRow(), 0);
    EXPECT_FALSE(Find<QPushButton>(window, Dialog::kUp).isEnabled());
    Press(window, Dialog::kDown);
    EXPECT_EQ(rules.currentRow(), 1);
    EXPECT_TRUE(rules.item(1)->text().startsWith("Lost traces"));
    EXPECT_TRUE(Find<QPushButton>(window, Dialog::kUp).isEnabled());
    rules.item(2)->setCheckState(Qt::Unchecked);
    rules.setCurrentRow(0);
    EXPECT_EQ(Find<QLineEdit>(window, Dialog::kName).text(), "Errors");
    Press(window, Dialog::kRemove);
    ASSERT_EQ(rules.count(), 7);
    EXPECT_TRUE(rules.item(0)->text().startsWith("Lost traces"));
    EXPECT_EQ(rules.item(1)->checkState(), Qt::Unchecked);
    Press(window, CDialog::kIdOk);
  });
  ASSERT_TRUE(ActiveColours());
  EXPECT_EQ(ActiveColours()->Rules().size(), 7u);
  EXPECT_FALSE(ActiveColours()->Rules()[1].on);
}

TEST_F(ColourRulesFaceTest, ASampleShowsTheRuleThatTheSelectionHides) {
  Run([](QDialog& window) {
    auto& sample = *window.findChild<QLabel*>("sample");
    EXPECT_FALSE(sample.isVisible()) << "there is no rule yet";
    Press(window, Dialog::kAdd);
    EXPECT_TRUE(sample.isVisible());
    EXPECT_EQ(window.focusWidget(), &Find<QLineEdit>(window, Dialog::kName));
    Write(window, Dialog::kInk, "#003f6f");
    Write(window, Dialog::kGround, "#d7eeff");
    const QImage shown = sample.grab().toImage();
    EXPECT_EQ(shown.pixelColor(1, 1), QColor("#d7eeff"));
    EXPECT_EQ(sample.palette().color(sample.foregroundRole()), QColor("#003f6f"));
  });
}

TEST_F(ColourRulesFaceTest, TheBoxOfARuleHasItsGroundAndALongTextIsCutOff) {
  Run([](QDialog& window) {
    auto& rules = *window.findChild<QListWidget*>();
    Press(window, Dialog::kLight);
    const QRect lost = rules.visualItemRect(rules.item(0));
    ASSERT_EQ(rules.item(0)->foreground().color(), QColor("#ffffff"));
    const QColor ground = rules.item(0)->background().color();
    rules.setCurrentRow(1);
    const QImage box = rules.viewport()->grab(lost).toImage();
    int white = 0, grounds = 0;
    for (int x = 0; x < lost.height(); ++x)
      for (int y = 0; y < lost.height(); ++y) {
        white += box.pixelColor(x, y) == QColor(Qt::white);
        grounds += box.pixelColor(x, y) == ground;
      }
    EXPECT_GT(grounds, lost.height() * lost.height() / 2);
    EXPECT_LT(white, lost.height() * lost.height() / 4);
    EXPECT_EQ(lost.width(), rules.viewport()->width());
  });
}

TEST_F(ColourRulesFaceTest, TheNoticeFollowsWhatIsWritten) {
  Run([](QDialog& window) {
    auto& notice = *window.findChild<QLabel*>("notice");
    Press(window, Dialog::kAdd);
    EXPECT_EQ(notice.text(), "");
    Write(window, Dialog::kText, "severity >= wran");
    const QListWidgetItem& item = *Find<QListWidget>(window, Dialog::kRules).item(0);
    EXPECT_FALSE(item.icon().isNull()) << "the list says which rules are wrong";
    EXPECT_EQ(item.toolTip(), notice.text());
    EXPECT_TRUE(notice.text().contains("did you mean \"warn\"?")) << notice.text().toStdString();
    EXPECT_EQ(Find<QLineEdit>(window, Dialog::kText).text(), "severity >= wran");
    Write(window, Dialog::kText, "stack");
    EXPECT_EQ(notice.text(), "");
    EXPECT_TRUE(item.icon().isNull());
    Write(window, Dialog::kInk, "#eeeeee");
    EXPECT_TRUE(notice.text().startsWith("Hard to read")) << notice.text().toStdString();
    Write(window, Dialog::kInk, "#eee");
    EXPECT_EQ(Find<QListWidget>(window, Dialog::kRules).item(0)->foreground().color(),
              QColor("#eeeeee"))
        << "half of a colour is none";
    EXPECT_TRUE(notice.text().startsWith("A colour is written as")) << notice.text().toStdString();
  });
}

}  // namespace
