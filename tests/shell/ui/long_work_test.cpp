// Work that takes long in the real program: the window lives below the box, and Cancel leaves it as
// it was.
#include <QAbstractScrollArea>
#include <QLabel>
#include <QPointer>
#include <QProgressBar>
#include <QPushButton>
#include <filesystem>
#include <utility>

#include "controls/tree/ui/tree_widget.h"
#include "docview/commands/command_ids.h"
#include "docview/ui/work_box_face.h"
#include "shell_fixture.h"
#include "support/short_pieces.h"
#include "tree/proc/proc_view.h"

namespace {

constexpr int kManyTraces = 600000;

class NextPaint final : public QObject {
 public:
  explicit NextPaint(bool& painted) : m_painted(painted) {}
  bool eventFilter(QObject*, QEvent* event) override {
    m_painted |= event->type() == QEvent::Paint;
    return false;
  }

 private:
  bool& m_painted;
};

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
  // The file dialog that comes up next gets the name, and the box behind it is cancelled.
  void ChooseAndCancel(const std::string& path) {
    ChooseFile(path, [this] { CancelWhenItHasMoved(); });
  }
  // A folder of its own for what is written.
  std::string OutFolder() {
    std::filesystem::create_directory(m_dir.File("out"));
    return m_dir.File("out");
  }
  static std::ptrdiff_t FilesIn(const std::string& folder) {
    return std::distance(std::filesystem::directory_iterator(folder), {});
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
    const ShortPieces pieces(m_host);
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

TEST_F(LongWorkTest, TheBoxClosesByItselfWhenTheTreeIsBuilt) {
  OpenMany();
  const ShortPieces pieces(m_host);
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
    const ShortPieces pieces(m_host);
    CancelWhenItHasMoved();
    WithWindowAlive([&] { EXPECT_FALSE(list.SetFilter(filter, true)); });
  }
  EXPECT_EQ(m_message, QStringLiteral("Filtering..."));
  EXPECT_EQ(list.List().ItemCount(), kManyTraces);
  EXPECT_TRUE(list.SetFilter(filter, true));
  EXPECT_EQ(list.List().ItemCount(), 0);
}

TEST_F(LongWorkTest, TheListPaintsItsNewRowsBelowTheBoxOfTheSearchForTheFocusedTrace) {
  OpenMany();
  CTraceView& list = *View(*m_child);
  list.List().SetItemState(kManyTraces - 1, kRowFocused, kRowFocused);
  auto* const shown = dynamic_cast<QAbstractScrollArea*>(&list.List());
  ASSERT_TRUE(shown);
  CTraceFilter filter;
  filter.allTraces = 0;
  const ShortPieces pieces(m_host);
  bool painted = false, looked = false;
  NextPaint watch(painted);
  const TimerId clock = m_host.SetTimer(1, [&] {
    auto* const box = dynamic_cast<WorkBoxFace*>(QApplication::activeModalWidget());
    if (!box || box->findChild<QLabel*>()->text() != QLatin1String("Looking for the trace..."))
      return;
    if (!std::exchange(looked, true)) {
      shown->viewport()->installEventFilter(&watch);
      shown->viewport()->update();
    }
    if (painted) QTest::mouseClick(box->findChild<QPushButton*>("2"), Qt::LeftButton);
  });
  EXPECT_TRUE(list.SetFilter(filter, true));
  m_host.KillTimer(clock);
  EXPECT_TRUE(looked);
  EXPECT_TRUE(painted);
  EXPECT_EQ(list.List().ItemCount(), kManyTraces);
  EXPECT_EQ(list.List().NextItem(-1, kRowFocused), -1);
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
    const ShortPieces pieces(m_host);
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
  const ShortPieces pieces(m_host);
  OnModal([](QWidget* box) {
    QTest::keyClick(box, Qt::Key_Return);
    QTest::keyClick(box->findChild<QPushButton*>("2"), Qt::Key_Return);
  });
  Frame().OnCommand(ID_VIEW_PROC);
  EXPECT_TRUE(dynamic_cast<CProcView*>(m_child->GetActiveView()));
}

TEST_F(LongWorkTest, AnExportOrSaveOfTheListIsCancelledAndLeavesNoFile) {
  OpenMany();
  const std::string folder = OutFolder();
  for (const auto& [command, words] :
       {std::pair{ID_FILE_EXPORT, "Exporting..."}, std::pair{ID_FILE_SAVECOPY, "Saving..."}}) {
    m_ticks = 0;
    const ShortPieces pieces(m_host);
    ChooseAndCancel(folder + "/file.trc");
    WithWindowAlive([&] { Frame().OnCommand(command); });
    EXPECT_EQ(m_message, QString::fromLatin1(words));
    EXPECT_FALSE(QtHost::InModal());
    EXPECT_EQ(FilesIn(folder), 0);
  }
  ChooseFile(folder + "/file.trc");
  Frame().OnCommand(ID_FILE_SAVECOPY);
  EXPECT_EQ(FilesIn(folder), 1);
  EXPECT_EQ(std::filesystem::file_size(folder + "/file.trc"),
            std::filesystem::file_size(m_dir.File("many.trc")));
}

TEST_F(LongWorkTest, AnExportOfTheOpenedTreeIsCancelledAndLeavesNoFile) {
  OpenMany();
  Frame().OnCommand(ID_VIEW_PROC);
  QtTreeControl* const tree = ShownTree();
  ASSERT_TRUE(tree);
  TreeItem item = tree->Walk(0, TreeStep::FirstChild);
  for (int level = 0; level < 4; ++level) {
    tree->Expand(item, true);
    item = tree->Walk(item, TreeStep::FirstChild);
  }
  const std::string folder = OutFolder();
  {
    const ShortPieces pieces(m_host);
    ChooseAndCancel(folder + "/tree.txt");
    WithWindowAlive([this] { Frame().OnCommand(ID_FILE_EXPORT); });
  }
  EXPECT_EQ(m_message, QStringLiteral("Exporting..."));
  EXPECT_EQ(FilesIn(folder), 0);
}

TEST_F(LongWorkTest, NextIntoALargeNodeIsCancelledAndThePropertiesStayWhereTheyWere) {
  OpenMany();
  Frame().OnCommand(ID_VIEW_PROC);
  QtTreeControl* const tree = ShownTree();
  ASSERT_TRUE(tree);
  TreeItem item = tree->Walk(0, TreeStep::FirstChild);
  for (int level = 0; level < 3; ++level) {
    tree->Expand(item, true);
    item = tree->Walk(item, TreeStep::FirstChild);
  }
  tree->SelectItem(item);
  const std::int64_t rows = tree->Items().Rows();
  const ShortPieces pieces(m_host);
  bool looked = false;
  OnModal([&](QWidget* dialog) {
    auto* next = dialog->findChild<QPushButton*>("1058");
    ASSERT_TRUE(next && next->isEnabled());
    auto* clock = new QTimer(dialog);
    QObject::connect(clock, &QTimer::timeout, dialog, [this, clock, dialog] {
      if (QApplication::activeModalWidget() == dialog) return;
      clock->stop();
      CancelWhenItHasMoved();
    });
    clock->start(1);
    QTest::mouseClick(next, Qt::LeftButton);
    EXPECT_EQ(QApplication::activeModalWidget(), dialog);
    EXPECT_EQ(tree->SelectedItem(), item);
    EXPECT_EQ(tree->Items().Rows(), rows);
    looked = true;
    static_cast<QDialog*>(dialog)->reject();
  });
  WithWindowAlive([this] { Frame().OnCommand(ID_VIEW_PROPERTIES); });
  EXPECT_TRUE(looked);
  EXPECT_EQ(m_message, QStringLiteral("Opening..."));
}
