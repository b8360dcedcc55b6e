#include "config/view/ui/config_pane_widget.h"

#include <QPushButton>
#include <QTest>
#include <QVBoxLayout>

#include "support/config_pane_contract.h"
#include "support/qt_test_main.h"

namespace {

// A window in which something else has the focus.
struct QtConfigPaneHarness {
  explicit QtConfigPaneHarness(ListBoxOwner& owner) : pane(new QtConfigPane(owner)) {
    auto* const layout = new QVBoxLayout(&window);
    auto* const other = new QPushButton("other");
    layout->addWidget(other);
    layout->addWidget(pane);
    window.resize(300, 300);
    window.show();
    window.activateWindow();
    EXPECT_TRUE(QTest::qWaitForWindowActive(&window));
    other->setFocus();
  }
  ConfigPane& Pane() { return *pane; }
  std::string Note() const {
    const auto* const note = pane->findChild<QLabel*>("connection");
    EXPECT_EQ(note->isVisible(), !note->text().isEmpty());
    EXPECT_EQ(note->textFormat(), Qt::PlainText);
    return note->isVisible() ? note->text().toStdString() : "";
  }
  bool ListHasFocus() const { return pane->findChild<QListView*>("applications")->hasFocus(); }
  QWidget window;
  QtConfigPane* pane;
};

}  // namespace

INSTANTIATE_TYPED_TEST_SUITE_P(OnTheScreen, ConfigPaneContract, QtConfigPaneHarness);

TEST(ConfigPaneWidget, TheNoteTakesItsRoomFromTheListAndGivesItBack) {
  QuietListBoxOwner owner;
  QtConfigPaneHarness harness(owner);
  const auto* const list = harness.pane->findChild<QListView*>("applications");
  QTest::qWait(0);
  const int before = list->height();
  harness.pane->SetNote("Not connected to web. Trying again.");
  EXPECT_TRUE(QTest::qWaitFor([&] { return list->height() < before; }));
  EXPECT_EQ(harness.pane->findChild<QLabel*>("connection")->accessibleName(),
            QStringLiteral("Not connected to web. Trying again."));
  harness.pane->SetNote("");
  EXPECT_TRUE(QTest::qWaitFor([&] { return list->height() == before; }));
}

TEST(ConfigPaneWidget, ALongNoteNeitherHidesTheListNorWidensTheWindow) {
  QuietListBoxOwner owner;
  QtConfigPaneHarness harness(owner);
  const auto* const list = harness.pane->findChild<QListView*>("applications");
  const auto* const note = harness.pane->findChild<QLabel*>("connection");
  QTest::qWait(0);
  const int before = list->height(), width = harness.window.minimumSizeHint().width();
  std::string text;
  for (int word = 0; word < 2000; ++word) text += "word" + std::to_string(word) + " ";
  harness.pane->SetNote(text + std::string(2000, 'x'));
  EXPECT_TRUE(QTest::qWaitFor([&] { return list->height() < before; }));
  EXPECT_GE(list->height(), before / 2);
  EXPECT_LE(note->height(), before / 2);
  EXPECT_EQ(harness.window.minimumSizeHint().width(), width);
  EXPECT_EQ(harness.window.size(), QSize(300, 300));
  EXPECT_TRUE(note->toolTip().contains("word1999"));
}
