// Work that takes long in the real program: the window lives below the box, and Cancel leaves it as
// it was.
#include <QLabel>
#include <QPointer>
#include <QProgressBar>
#include <QPushButton>

#include "docview/ui/work_box_face.h"
#include "shell/command_ids.h"
#include "shell_fixture.h"
#include "support/short_pieces.h"
#include "tree/proc/proc_view.h"
#include "tree/proc/ui/tree_widget.h"

namespace {

constexpr int kManyTraces = 600000;

class LongWorkTest : public ShellTest {
 protected:
  void OpenMany() {
    Start();
    m_document = Open(TraceFile("many.trc", kManyTraces));
    m_child = Frame().MDIGetActive();
  }
  // Counts what else goes on in the program while the box is up.
  template <class Act>
  void WithWindowAlive(Act act) {
    const TimerId clock = m_host.SetTimer(1, [this] {
      if (QtHost::InModal()) ++m_ticks;
    });
    act();
    m_host.KillTimer(clock);
  }
  // Looks at the box until it has moved and the window has lived, then presses Cancel.
  void CancelWhenItHasMoved() {
    OnModal([this](QWidget* dialog) {
      auto* box = dynamic_cast<WorkBoxFace*>(dialog);
      ASSERT_TRUE(box);
      EXPECT_EQ(box->windowTitle(), QStringLiteral("Tessera"));
      m_message = box->findChild<QLabel*>()->text();
      auto* bar = box->findChild<QProgressBar*>();
      EXPECT_GT(bar->maximum(), 0);
      const int before = bar->value();
      const QPointer<QWidget> up = box;
      EXPECT_TRUE(Until([&] { return !up || (bar->value() > before && m_ticks > 3); }));
      ASSERT_TRUE(up) << "the work was over too soon";
      EXPECT_LT(bar->value(), bar->maximum());
      QTest::mouseClick(box->findChild<QPushButton*>("2"), Qt::LeftButton);
    });
  }
  QtTreeControl* ShownTree() {
    auto* tree = Window().findChild<QtTreeControl*>();
    return tree && tree->isVisible() ? tree : nullptr;
  }

  CTraceFileDoc* m_document = nullptr;
  CMDIChildWnd* m_child = nullptr;
  int m_ticks = 0;
  QString m_message;
};

}  // namespace

TEST_F(LongWorkTest, AToggleToTheTreeShowsItsProgressKeepsTheWindowAliveAndIsCancelled) {
  OpenMany();
  CView* const list = m_child->GetActiveView();
  {
    const ShortPieces pieces;
    CancelWhenItHasMoved();
    WithWindowAlive([this] { Frame().OnCommand(ID_VIEW_PROC); });
  }
  EXPECT_EQ(m_message, QStringLiteral("Building the procedure tree..."));
  EXPECT_EQ(m_child->GetActiveView(), list);
  EXPECT_EQ(m_child->Views().size(), 1U);
  EXPECT_EQ(ShownTree(), nullptr);
  EXPECT_FALSE(QtHost::InModal());
  Frame().OnCommand(ID_VIEW_PROC);
  auto* tree = dynamic_cast<CProcView*>(m_child->GetActiveView());
  ASSERT_TRUE(tree);
  EXPECT_EQ(tree->Model().TraceCount(), kManyTraces);
  EXPECT_TRUE(ShownTree());
}

TEST_F(LongWorkTest, TheBoxGoesByItselfWhenTheTreeStands) {
  OpenMany();
  const ShortPieces pieces;
  bool seen = false;
  OnModal([&](QWidget* box) { seen = dynamic_cast<WorkBoxFace*>(box) != nullptr; });
  Frame().OnCommand(ID_VIEW_PROC);
  EXPECT_TRUE(seen);
  EXPECT_FALSE(QtHost::InModal());
  EXPECT_EQ(dynamic_cast<CProcView&>(*m_child->GetActiveView()).Model().TraceCount(), kManyTraces);
}

TEST_F(LongWorkTest, AFilterOfTheListIsCancelledAndItsRowsStay) {
  OpenMany();
  CTraceView& list = *View(*m_child);
  CTraceFilter filter;
  filter.allTraces = filter.allSeverities = 0;
  filter.severities = {0, 0, 0};
  {
    const ShortPieces pieces;
    CancelWhenItHasMoved();
    WithWindowAlive([&] { EXPECT_FALSE(list.SetFilter(filter, true)); });
  }
  EXPECT_EQ(m_message, QStringLiteral("Filtering..."));
  EXPECT_EQ(list.List().ItemCount(), kManyTraces);
  EXPECT_TRUE(list.SetFilter(filter, true));
  EXPECT_EQ(list.List().ItemCount(), 0);
}

TEST_F(LongWorkTest, AnOpeningThatIsCancelledLeavesTheNodeClosed) {
  OpenMany();
  Frame().OnCommand(ID_VIEW_PROC);
  QtTreeControl* const tree = ShownTree();
  ASSERT_TRUE(tree);
  TreeItem item = tree->Walk(0, TreeStep::FirstChild);
  for (int level = 0; level < 3; ++level) {
    tree->Expand(item, true);
    item = tree->Walk(item, TreeStep::FirstChild);
  }
  const std::int64_t rows = tree->Items().Rows();
  {
    const ShortPieces pieces;
    CancelWhenItHasMoved();
    WithWindowAlive([&] { tree->Expand(item, true); });
  }
  EXPECT_EQ(m_message, QStringLiteral("Opening..."));
  EXPECT_EQ(tree->Items().Rows(), rows);
  EXPECT_FALSE(tree->ItemState(item) & kTreeExpanded);
  tree->Expand(item, true);
  EXPECT_EQ(tree->Items().Rows(), rows + kManyTraces);
}

TEST_F(LongWorkTest, EnterInTheBoxDoesNotCancel) {
  OpenMany();
  const ShortPieces pieces;
  OnModal([](QWidget* box) {
    QTest::keyClick(box, Qt::Key_Return);
    QTest::keyClick(box->findChild<QPushButton*>("2"), Qt::Key_Return);
  });
  Frame().OnCommand(ID_VIEW_PROC);
  EXPECT_TRUE(dynamic_cast<CProcView*>(m_child->GetActiveView()));
}
