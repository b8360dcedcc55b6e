#include <QClipboard>
#include <QLineEdit>
#include <QProgressBar>
#include <QPushButton>
#include <latch>

#include "docview/ui/plain_tool_tip.h"
#include "shell/ui/load_status_face.h"
#include "shell_fixture.h"

namespace {

constexpr int kTraces = 5000;

// Holds every load before its walk until it is released. The latch is shared: a load thread may
// still be about to leave it.
class HeldLoad {
 public:
  explicit HeldLoad(CTesseraApp& app) {
    app.m_loads.beforeWalk = [go = m_go] { go->wait(); };
  }
  ~HeldLoad() { Go(); }
  void Go() {
    if (!m_gone) m_go->count_down();
    m_gone = true;
  }

 private:
  const std::shared_ptr<std::latch> m_go = std::make_shared<std::latch>(1);
  bool m_gone = false;
};

class LoadTest : public ShellTest {
 protected:
  LoadStatusFace* Box() {
    for (QWidget* widget : QApplication::topLevelWidgets()) {
      auto* box = dynamic_cast<LoadStatusFace*>(widget);
      if (box && box->isVisible()) return box;
    }
    return nullptr;
  }
  bool HasBox() { return Box() != nullptr; }
};

}  // namespace

TEST_F(LoadTest, TheFrameShowsBeforeTheTracesAndTheBoxTellsFileAndProgress) {
  Start();
  HeldLoad held(*m_app);
  const std::string path = TraceFile("a.trc", kTraces);
  auto* document = static_cast<CTraceFileDoc*>(m_app->OpenDocumentFile(path));
  ASSERT_TRUE(document);
  EXPECT_TRUE(Front() && Front()->isVisible());
  ASSERT_TRUE(Until([this] { return HasBox(); }));
  EXPECT_EQ(Box()->windowTitle(), QStringLiteral("Loading..."));
  auto* edit = Box()->findChild<QLineEdit*>();
  EXPECT_TRUE(edit->isReadOnly());
  EXPECT_EQ(edit->toolTip(), PlainToolTip(QString::fromStdString(path)));
  EXPECT_EQ(Box()->findChild<QProgressBar*>()->value(), 0);
  EXPECT_EQ(Box()->findChild<QPushButton*>()->text(), QStringLiteral("Cancel"));
  held.Go();
  EXPECT_TRUE(Until([this] { return !HasBox(); }));
  EXPECT_TRUE(
      Until([this] { return View(*Frame().MDIGetActive())->List().ItemCount() == kTraces; }));
}

TEST_F(LoadTest, EnterDoesNothingInTheBoxNotEvenOnTheCancelButton) {
  Start();
  HeldLoad held(*m_app);
  auto* document =
      static_cast<CTraceFileDoc*>(m_app->OpenDocumentFile(TraceFile("a.trc", kTraces)));
  ASSERT_TRUE(Until([this] { return HasBox(); }));
  QTest::keyClick(Box(), Qt::Key_Return);
  QTest::keyClick(Box()->findChild<QPushButton*>(), Qt::Key_Return);
  QTest::keyClick(Box()->findChild<QPushButton*>(), Qt::Key_Enter);
  EXPECT_TRUE(HasBox());
  EXPECT_FALSE(document->CancelEvent()->IsSet());
}

TEST_F(LoadTest, CancelEndsTheWalkAtItsNextLookAndTheTracesSoFarShow) {
  Start();
  HeldLoad held(*m_app);
  auto* document =
      static_cast<CTraceFileDoc*>(m_app->OpenDocumentFile(TraceFile("a.trc", kTraces)));
  ASSERT_TRUE(Until([this] { return HasBox(); }));
  QTest::mouseClick(Box()->findChild<QPushButton*>(), Qt::LeftButton);
  EXPECT_TRUE(document->CancelEvent()->IsSet());
  EXPECT_TRUE(HasBox());  // it stays until the load says that it is done
  held.Go();
  EXPECT_TRUE(Until([this] { return !HasBox(); }));
  EXPECT_TRUE(Until([document] { return !document->m_loading; }));
  RowList& list = View(*Frame().MDIGetActive())->List();
  EXPECT_TRUE(Until([&list] { return list.ItemCount() > 0; }));
  const int rows = list.ItemCount();
  EXPECT_LT(rows, kTraces);
}

TEST_F(LoadTest, EscapeIsCancel) {
  Start();
  HeldLoad held(*m_app);
  auto* document =
      static_cast<CTraceFileDoc*>(m_app->OpenDocumentFile(TraceFile("a.trc", kTraces)));
  ASSERT_TRUE(Until([this] { return HasBox(); }));
  QTest::keyClick(Box(), Qt::Key_Escape);
  EXPECT_TRUE(document->CancelEvent()->IsSet());
  EXPECT_TRUE(HasBox());
}

TEST_F(LoadTest, TwoLoadsShareOneBoxAndTheFirstDoneMessageTakesItDown) {
  Start();
  HeldLoad held(*m_app);
  // One after the other: the threads of two would tell of their starts in any order.
  for (const char* const name : {"a.trc", "b.trc"}) {
    m_app->OpenDocumentFile(TraceFile(name, kTraces));
    ASSERT_TRUE(Until([this, name] {
      return HasBox() && Box()->findChild<QLineEdit*>()->toolTip().contains(QLatin1String(name));
    })) << name;
  }
  int boxes = 0;
  for (QWidget* widget : QApplication::topLevelWidgets())
    boxes += dynamic_cast<LoadStatusFace*>(widget) && widget->isVisible();
  EXPECT_EQ(boxes, 1);
  held.Go();
  EXPECT_TRUE(Until([this] { return !HasBox(); }));
  EXPECT_TRUE(Until([this] {
    for (const auto& child : Frame().Children())
      if (View(*child)->List().ItemCount() != kTraces) return false;
    return true;
  }));
}

TEST_F(LoadTest, ClosingADocumentDuringItsLoadTakesItsWindowAway) {
  Start();
  {
    HeldLoad held(*m_app);
    m_app->OpenDocumentFile(TraceFile("a.trc", kTraces));
    ASSERT_TRUE(Until([this] { return HasBox(); }));
    held.Go();
    Frame().OnCommand(ID_FILE_CLOSE);
  }
  EXPECT_TRUE(Until([this] { return Frame().Children().empty() && !HasBox(); }));
}

TEST_F(LoadTest, ALongPathCanBeReadAndCopiedWhole) {
  Start();
  CLoadStatus status(m_host, CreateEvent());
  LoadStatusFace face(status, nullptr);
  face.show();
  status.m_path = "/var/" + std::string(300, 'x') + "/web.trc";
  face.UpdateData();
  auto* edit = face.findChild<QLineEdit*>();
  EXPECT_EQ(edit->text().toStdString(), status.m_path);
  EXPECT_EQ(edit->accessibleDescription(), edit->text());
  edit->setFocus();
  QTest::keyClick(edit, Qt::Key_A, Qt::ControlModifier);
  QTest::keyClick(edit, Qt::Key_C, Qt::ControlModifier);
  EXPECT_EQ(QGuiApplication::clipboard()->text().toStdString(), status.m_path);
}

TEST_F(LoadTest, TheBoxGrowsWithThePathWithinBoundsAndThenShowsTheFilesName) {
  Start();
  CLoadStatus status(m_host, CreateEvent());
  LoadStatusFace face(status, nullptr);
  face.show();
  auto* edit = face.findChild<QLineEdit*>();
  const auto show = [&](const std::string& path) {
    status.m_path = path;
    face.UpdateData();
    Settle();
  };
  show("/var/web.trc");
  const int narrow = face.width();
  show("/var/" + std::string(60, 'x') + "/web.trc");
  EXPECT_GT(face.width(), narrow);
  EXPECT_LT(edit->fontMetrics().horizontalAdvance(edit->text()), edit->width());
  show("/var/" + std::string(3000, 'x') + "/web.trc");
  EXPECT_LT(face.width(), 900);
  EXPECT_EQ(edit->cursorPosition(), edit->text().size());
  const QRect caret = edit->inputMethodQuery(Qt::ImCursorRectangle).toRect();
  EXPECT_GT(caret.left(), edit->width() / 2);
  EXPECT_LE(caret.left(), edit->width());
}

TEST_F(LoadTest, AFileOfNearlyFourGigabytesStillFillsTheBarFromEndToEnd) {
  Start();
  CLoadStatus status(m_host, CreateEvent());
  LoadStatusFace face(status, nullptr);
  status.m_range = 0xffffffffu;
  status.m_position = 0x80000000u;
  face.UpdateData();
  const QProgressBar* bar = face.findChild<QProgressBar*>();
  EXPECT_NEAR(bar->value(), bar->maximum() / 2, 1);
  status.m_position = 0xffffffffu;
  face.UpdateData();
  EXPECT_EQ(bar->value(), bar->maximum());
}
