// The window of the profiles.
#include "shell/views/ui/profiles_face.h"

#include <gtest/gtest.h>

#include <QAccessible>
#include <QApplication>
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
#include "views/stored_views.h"

namespace {

using Dialog = CProfilesDialog;

class ProfilesFaceTest : public testing::Test {
 protected:
  ProfilesFaceTest() {
    SetSettingsFile(m_dir.File("settings.ini"));
    m_host.RegisterFace<Dialog, ProfilesFace>();
  }
  ~ProfilesFaceTest() override {
    QApplication::setFont(m_font);
    SetSettingsFile("");
  }
  void Run(bool saves, const std::function<void(QDialog&)>& person) {
    m_host.Post(MustRun([person] {
      auto* window = qobject_cast<QDialog*>(QApplication::activeModalWidget());
      ASSERT_TRUE(window);
      person(*window);
      if (window->isVisible()) window->reject();
    }));
    ViewState shown;
    shown.filter = "pid == 1";
    Dialog(
        m_host, [shown] { return shown; },
        [this](const ViewState& state) {
          m_applied = state.filter.value_or("none");
          return std::string();
        },
        saves)
        .DoModal();
  }
  template <class Control>
  static Control& Find(QDialog& window, unsigned id) {
    return *window.findChild<Control*>(QString::number(id));
  }
  static bool Enabled(QDialog& window, unsigned id) {
    return Find<QPushButton>(window, id).isEnabled();
  }

  const QFont m_font = QApplication::font();
  TempDir m_dir;
  QtHost m_host;
  std::string m_applied;
};

TEST_F(ProfilesFaceTest, AProfileIsSavedByTypingItsName) {
  Run(true, [](QDialog& window) {
    EXPECT_EQ(window.windowTitle(), "Profiles");
    EXPECT_EQ(window.focusWidget(), &Find<QLineEdit>(window, Dialog::kName));
    EXPECT_FALSE(Enabled(window, Dialog::kSave));
    QTest::keyClicks(window.focusWidget(), "Slow");
    EXPECT_TRUE(Enabled(window, Dialog::kSave));
    QTest::keyClick(window.focusWidget(), Qt::Key_Return);
    EXPECT_TRUE(window.isVisible()) << "Enter saves, and the window stays";
    auto& list = Find<QListWidget>(window, Dialog::kProfiles);
    ASSERT_EQ(list.count(), 1);
    EXPECT_EQ(list.item(0)->text(), "Slow");
    EXPECT_EQ(list.currentRow(), 0);
    EXPECT_EQ(window.findChild<QLabel*>("description")->text(), "filter pid == 1");
    QTest::keyClick(&window, Qt::Key_Escape);
    EXPECT_FALSE(window.isVisible());
  });
  EXPECT_TRUE(FindProfile("slow"));
}

TEST_F(ProfilesFaceTest, WithoutProfilesThereIsNothingToChoose) {
  Run(false, [](QDialog& window) {
    for (const unsigned id : {Dialog::kApply, Dialog::kRename, Dialog::kDelete, Dialog::kExport})
      EXPECT_FALSE(Enabled(window, id)) << id;
    EXPECT_TRUE(Enabled(window, Dialog::kImport));
  });
}

TEST_F(ProfilesFaceTest, TheKeysWalkTheListAndApply) {
  for (const char* name : {"a", "b & c"}) {
    Profile profile{name, {}};
    profile.state.filter = name;
    ASSERT_TRUE(KeepProfile(profile, nullptr));
  }
  Run(false, [](QDialog& window) {
    auto& list = Find<QListWidget>(window, Dialog::kProfiles);
    EXPECT_EQ(window.focusWidget(), &list);
    QTest::keyClick(&list, Qt::Key_Down);
    EXPECT_EQ(Find<QLineEdit>(window, Dialog::kName).text(), "b & c");
    Find<QPushButton>(window, Dialog::kApply).click();
    EXPECT_TRUE(window.isVisible());
  });
  EXPECT_EQ(m_applied, "b & c");
}

TEST_F(ProfilesFaceTest, EachControlHasANameForScreenReaders) {
  Run(false, [](QDialog& window) {
    for (const auto& [id, name] :
         std::vector<std::pair<unsigned, QString>>{{Dialog::kProfiles, "Profiles"},
                                                   {Dialog::kName, "Name"},
                                                   {Dialog::kSave, "Save"},
                                                   {Dialog::kApply, "Apply"},
                                                   {Dialog::kRename, "Rename"},
                                                   {Dialog::kDelete, "Delete"},
                                                   {Dialog::kImport, "Import"},
                                                   {Dialog::kExport, "Export"}}) {
      auto* const control = window.findChild<QWidget*>(QString::number(id));
      ASSERT_TRUE(control) << id;
      QAccessibleInterface* const said = QAccessible::queryAccessibleInterface(control);
      EXPECT_TRUE(said->text(QAccessible::Name).startsWith(name))
          << said->text(QAccessible::Name).toStdString();
    }
  });
}

TEST_F(ProfilesFaceTest, FitsItsTextsAlsoInAFontOfTwiceTheSize) {
  Profile profile{"a", {}};
  profile.state.filter = std::string(400, 'x') + " " + std::string(400, 'y');
  ASSERT_TRUE(KeepProfile(profile, nullptr));
  QFont large = m_font;
  large.setPointSizeF(m_font.pointSizeF() * 2);
  QApplication::setFont(large);
  Run(false, [](QDialog& window) {
    window.resize(window.minimumSizeHint());
    for (const auto* button : window.findChildren<QPushButton*>())
      EXPECT_GE(button->width(), button->minimumSizeHint().width()) << button->text().toStdString();
    EXPECT_GE(Find<QListWidget>(window, Dialog::kProfiles).height(),
              QFontMetrics(window.font()).height() * 3);
  });
}

}  // namespace
