// View > Profiles: the profiles of the user, listed when the menu opens.
#include <QMenu>
#include <QMenuBar>

#include "shell/child_frame.h"
#include "shell/ui/menus.h"
#include "shell_fixture.h"
#include "views/stored_views.h"

namespace {

class ProfilesMenuTest : public ShellTest {
 protected:
  void OpenFile() {
    Start();
    Open(TraceFile("web.trc", 20));
  }
  // As when the user opens it.
  QMenu& Opened() {
    for (QAction* action : Window().menuBar()->actions()) {
      if (action->text() != QStringLiteral("&View")) continue;
      emit action->menu()->aboutToShow();
      for (QAction* item : action->menu()->actions())
        if (item->menu() && IsOfProfiles(*item->menu())) return Shown(*item->menu());
    }
    ADD_FAILURE() << "there is no such menu";
    return m_none;
  }
  static bool IsOfProfiles(const QMenu& menu) {
    return menu.title().remove('&') == QStringLiteral("Profiles");
  }
  static QMenu& Shown(QMenu& menu) {
    emit menu.aboutToShow();
    return menu;
  }
  static QStringList Listed(const QMenu& menu) {
    QStringList texts;
    for (const QAction* action : menu.actions()) {
      if (action->isSeparator()) break;
      texts << action->text();
    }
    return texts;
  }
  static void Keep(const std::string& name, const std::string& filter) {
    Profile profile{name, {}};
    profile.state.filter = filter;
    ASSERT_TRUE(KeepProfile(profile, nullptr));
  }
  std::string InForce() {
    auto& child = dynamic_cast<CTraceChildFrame&>(*Frame().MDIGetActive());
    EXPECT_TRUE(Until([&child] { return !child.ShownPane()->FilterProgress(); }));
    const CTraceFilter& filter = child.ShownPane()->m_filter;
    return filter.where ? filter.where->Text() : "";
  }

  QMenu m_none;
};

TEST_F(ProfilesMenuTest, ListsTheProfilesBeforeItsFixedItemsAndAppliesTheChosenOne) {
  OpenFile();
  EXPECT_TRUE(Listed(Opened()).isEmpty());
  Keep("slow", "pid == 1");
  Keep("a & b", "pid == 2");
  QMenu& menu = Opened();
  EXPECT_EQ(Listed(menu), QStringList({"a && b", "slow"}));
  const QAction* const last = menu.actions().back();
  EXPECT_EQ(last->text(), QStringLiteral("&Manage..."));
  menu.actions()[1]->trigger();
  EXPECT_EQ(InForce(), "pid == 1");
  Shown(menu).actions()[0]->trigger();
  EXPECT_EQ(InForce(), "pid == 2");
  DeleteProfile("slow");
  EXPECT_EQ(Listed(Shown(menu)), QStringList({"a && b"}));
}

// Another program keeps one while the menu is open.
TEST_F(ProfilesMenuTest, TheOneThatWasChosenIsAppliedWhereverItStandsByThen) {
  OpenFile();
  Keep("b", "pid == 2");
  QMenu& menu = Opened();
  Keep("a", "pid == 1");
  menu.actions()[0]->trigger();
  EXPECT_EQ(InForce(), "pid == 2");
  DeleteProfile("b");
  menu.actions()[0]->trigger();
  EXPECT_EQ(InForce(), "pid == 2") << "one that has gone changes nothing";
}

TEST_F(ProfilesMenuTest, ListsSixteenAtTheMost) {
  OpenFile();
  for (int i = 10; i < 30; ++i) Keep("profile " + std::to_string(i), "");
  const QStringList listed = Listed(Opened());
  EXPECT_EQ(listed.size(), 16);
  EXPECT_EQ(listed.back(), QStringLiteral("profile 25"));
}

TEST_F(ProfilesMenuTest, ALongNameOrOneOfSeveralLinesIsOneItemThatFits) {
  OpenFile();
  const QFont before = Window().menuBar()->font();
  for (const qreal size : {1.0, 2.0}) {
    QFont font = before;
    font.setPointSizeF(before.pointSizeF() * size);
    Window().menuBar()->setFont(font);
    Keep("first\nsecond \xE2\x80\xA6 \xF0\x9F\x90\x8C", "");
    Keep(std::string(256, 'n'), "");
    const QStringList listed = Listed(Opened());
    ASSERT_EQ(listed.size(), 2);
    EXPECT_FALSE(listed[0].contains('\n'));
    EXPECT_LT(listed[1].size(), 256);
    EXPECT_TRUE(listed[1].startsWith("nnn"));
  }
}

TEST_F(ProfilesMenuTest, AWindowWithoutTracesHasNoSuchMenu) {
  Start();
  for (const QAction* action : Window().menuBar()->actions()) {
    ASSERT_TRUE(action->menu());
    for (const QAction* item : action->menu()->actions())
      EXPECT_FALSE(item->menu() && IsOfProfiles(*item->menu()));
  }
  ASSERT_TRUE(KeepProfile({"a", {}}, nullptr));
  Frame().OnCommand(ID_VIEW_PROFILE1);
}

}  // namespace
