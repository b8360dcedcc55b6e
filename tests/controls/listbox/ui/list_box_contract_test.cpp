#include "support/list_box_contract.h"

#include <QApplication>
#include <QContextMenuEvent>
#include <QElapsedTimer>
#include <QTest>
#include <QVBoxLayout>

#include "controls/listbox/ui/list_box_widget.h"
#include "support/qt_test_main.h"

namespace {

// A window that notes the keys which its list box left to it.
class KeyWindow final : public QWidget {
 public:
  int keys = 0;

 protected:
  void keyPressEvent(QKeyEvent*) override { ++keys; }
};

class QtListBoxHarness {
 public:
  QtListBoxHarness(ListBoxOwner& owner, ListBoxMode mode)
      : m_box(new QtListBox(owner, mode, "Applications", &m_window)) {
    m_box->resize(200, 200);
    m_window.resize(220, 220);
    m_window.show();
    m_window.activateWindow();
  }
  ListBox& Box() { return *m_box; }
  QtListBox& Widget() { return *m_box; }
  void SetPage(int items) {
    m_window.resize(300, 1000);
    const int around = m_box->height() - m_box->viewport()->height();
    m_box->resize(200, around + items * m_box->RowHeight());
    QApplication::processEvents();
  }
  void Click(int item, bool control = false) {
    QTest::mouseClick(m_box->viewport(), Qt::LeftButton,
                      control ? Qt::ControlModifier : Qt::NoModifier, At(item));
  }
  void DoubleClick(int item) {
    Click(item);
    QTest::mouseDClick(m_box->viewport(), Qt::LeftButton, {}, At(item));
  }
  void RightClick(int item) {
    QTest::mouseClick(m_box->viewport(), Qt::RightButton, {}, At(item));
    QContextMenuEvent menu(QContextMenuEvent::Mouse, At(item),
                           m_box->viewport()->mapToGlobal(At(item)));
    QApplication::sendEvent(m_box->viewport(), &menu);
  }
  bool Press(ListBoxKey key) {
    const int before = m_window.keys;
    QTest::keyClick(m_box, key == ListBoxKey::Enter ? Qt::Key_Return : Qt::Key_Delete);
    return m_window.keys == before;
  }

 private:
  QPoint At(int item) const {
    const int height = m_box->viewport()->height();
    if (item < 0) return {10, height - 2};
    return m_box->visualRect(m_box->model()->index(item, 0)).center();
  }
  KeyWindow m_window;
  QtListBox* m_box;
};

}  // namespace

INSTANTIATE_TYPED_TEST_SUITE_P(OnTheScreen, ListBoxContract, QtListBoxHarness);

TEST(ListBoxWidget, TypingTheBeginningOfANameSelectsIt) {
  RecordingListBoxOwner owner;
  QtListBoxHarness harness(owner, ListBoxMode::One);
  for (const char* name : {"archiv", "billing", "lager"}) harness.Box().AddString(name);
  harness.Box().SetFocus();
  QTest::keyClick(&harness.Widget(), Qt::Key_L);
  EXPECT_EQ(harness.Box().CurSel(), 2);
  EXPECT_EQ(owner.Reported(), "selection");
}

TEST(ListBoxWidget, AMenuKeyOpensTheMenuAndSelectsNothingElse) {
  RecordingListBoxOwner owner;
  QtListBoxHarness harness(owner, ListBoxMode::One);
  harness.Box().AddString("archiv");
  harness.Box().AddString("billing");
  harness.Box().SetCurSel(1);
  QContextMenuEvent menu(QContextMenuEvent::Keyboard, {0, 0}, {0, 0});
  QApplication::sendEvent(&harness.Widget(), &menu);
  EXPECT_EQ(owner.Reported(), "menu");
  EXPECT_EQ(harness.Box().CurSel(), 1);
}

TEST(ListBoxWidget, ANameWithLineEndsIsOneLine) {
  RecordingListBoxOwner owner;
  QtListBoxHarness harness(owner, ListBoxMode::One);
  harness.Box().AddString("plain");
  const int height = harness.Widget().sizeHintForRow(0);
  harness.Box().AddString("a\nb\x01");
  EXPECT_EQ(harness.Widget().model()->index(0, 0).data().toString(),
            QString("a%1b ").arg(QChar(0x23CE)));
  EXPECT_EQ(harness.Widget().sizeHintForRow(0), height);
  EXPECT_EQ(harness.Box().Text(0), "a\nb\x01");
}

TEST(ListBoxWidget, HasANameForScreenReaders) {
  RecordingListBoxOwner owner;
  QtListBoxHarness harness(owner, ListBoxMode::One);
  EXPECT_EQ(harness.Widget().accessibleName(), "Applications");
}

// A machine that has run for years. One range for each item takes a hundred times as long.
TEST(ListBoxWidget, TenThousandSelectedItemsAnswerAtOnce) {
  class CountingOwner final : public ListBoxOwner {
   public:
    void OnListBoxSelection() override { counts.push_back(box->SelectedCount()); }
    void OnListBoxDoubleClick() override {}
    bool OnListBoxKey(ListBoxKey) override { return false; }
    void OnListBoxContextMenu(int, int) override {}
    const ListBox* box = nullptr;
    std::vector<int> counts;
  } owner;
  QtListBoxHarness harness(owner, ListBoxMode::Several);
  owner.box = &harness.Box();
  std::vector<int> all;
  for (int item = 0; item < 10'000; ++item) {
    harness.Box().AddString("app" + std::to_string(item));
    all.push_back(item);
  }
  QElapsedTimer clock;
  clock.start();
  harness.Box().SelectOnly(all);
  EXPECT_EQ(harness.Box().SelectedCount(), 10'000);
  harness.Click(3, true);
  harness.Click(5, true);
  EXPECT_EQ(owner.counts, (std::vector{9'999, 9'998}));
  int selected = 0;
  for (const int item : all) selected += harness.Box().IsSelected(item);
  EXPECT_EQ(selected, 9'998);
  EXPECT_LT(clock.elapsed(), 2000);
}
