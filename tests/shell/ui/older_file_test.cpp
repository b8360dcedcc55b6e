// A trace file of the older format in the real windows.
#include <QAbstractButton>
#include <QMessageBox>
#include <QMimeData>
#include <QPushButton>
#include <QUrl>
#include <latch>

#include "shell/ui/load_status_face.h"
#include "shell_fixture.h"
#include "support/old_trc_image.h"

namespace {

constexpr char kQuestion[] =
    "This trace file was created by an older version of Tessera.  Do you want to convert it?";

class OlderFileTest : public ShellTest {
 protected:
  std::string OldFile(int traces) {
    OldTrcImage image;
    for (int i = 0; i < traces; ++i) image.Trace("up");
    return image.WriteTo(m_dir.File("old.trc"));
  }
  // Checks the question when it comes, and presses one of its buttons.
  void Answer(QMessageBox::StandardButton button) {
    OnModal([this, button](QWidget* dialog) {
      auto* box = qobject_cast<QMessageBox*>(dialog);
      ASSERT_TRUE(box);
      ++m_asked;
      EXPECT_EQ(box->text().toStdString(), kQuestion);
      EXPECT_EQ(box->icon(), QMessageBox::Critical);
      EXPECT_EQ(box->standardButtons(), QMessageBox::Yes | QMessageBox::No);
      QTest::mouseClick(box->button(button), Qt::LeftButton);
    });
  }
  template <class Widget>
  Widget* Shown() {
    for (QWidget* widget : QApplication::topLevelWidgets()) {
      auto* found = dynamic_cast<Widget*>(widget);
      if (found && found->isVisible()) return found;
    }
    return nullptr;
  }
  int m_asked = 0;
};

}  // namespace

TEST_F(OlderFileTest, YesConvertsAndShowsTheRows) {
  Start();
  Answer(QMessageBox::Yes);
  CTraceFileDoc* const document = Open(OldFile(2000));
  ASSERT_TRUE(document);
  EXPECT_EQ(m_asked, 1);
  EXPECT_TRUE(Until([this] { return View(*Frame().MDIGetActive())->List().ItemCount() == 2000; }));
  EXPECT_EQ(Shown<LoadStatusFace>(), nullptr);
}

TEST_F(OlderFileTest, NoOpensNoWindow) {
  Start();
  Answer(QMessageBox::No);
  EXPECT_EQ(m_app->OpenDocumentFile(OldFile(3)), nullptr);
  EXPECT_EQ(m_asked, 1);
  EXPECT_TRUE(Frame().Children().empty());
}

TEST_F(OlderFileTest, AFileOnTheCommandLineIsAskedForThoughTheWindowDoesNotShowYet) {
  Answer(QMessageBox::Yes);
  Start({OldFile(3)});
  EXPECT_EQ(m_asked, 1);
  EXPECT_TRUE(Until([this] { return View(*Frame().MDIGetActive())->List().ItemCount() == 3; }));
}

TEST_F(OlderFileTest, ADropOnTheWindowAsksWhenTheDropHasReturned) {
  Start();
  Answer(QMessageBox::Yes);
  QMimeData data;
  data.setUrls({QUrl::fromLocalFile(QString::fromStdString(OldFile(3)))});
  QDragEnterEvent enter(QPoint(5, 5), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
  QApplication::sendEvent(&Window(), &enter);
  QDropEvent drop(QPointF(5, 5), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
  QApplication::sendEvent(&Window(), &drop);
  EXPECT_TRUE(drop.isAccepted());
  EXPECT_EQ(m_asked, 0);  // the program that was dragged from is not kept waiting for the answer
  ASSERT_TRUE(Until([this] { return m_asked == 1 && !Frame().Children().empty(); }));
  EXPECT_TRUE(Until([this] { return View(*Frame().MDIGetActive())->List().ItemCount() == 3; }));
}

TEST_F(OlderFileTest, TheProgressBoxSaysConvertingAndItsCancelShortensTheFile) {
  Start();
  const auto go = std::make_shared<std::latch>(1);
  m_app->m_loads.beforeWalk = [go] { go->wait(); };
  Answer(QMessageBox::Yes);
  auto* document = static_cast<CTraceFileDoc*>(m_app->OpenDocumentFile(OldFile(5000)));
  ASSERT_TRUE(Until([this] { return Shown<LoadStatusFace>() != nullptr; }));
  EXPECT_EQ(Shown<LoadStatusFace>()->windowTitle(), QStringLiteral("Converting..."));
  QTest::mouseClick(Shown<LoadStatusFace>()->findChild<QPushButton*>(), Qt::LeftButton);
  go->count_down();
  EXPECT_TRUE(Until([document] { return !document->m_loading; }));
  // Of 1024 converted traces the load shows those that come before its own 1024th record.
  EXPECT_TRUE(Until([this] { return View(*Frame().MDIGetActive())->List().ItemCount() == 1023; }));
}

TEST_F(OlderFileTest, TheBoxOfAFailedStepBlocksNoWindowAndTheNextFollowsIt) {
  Start();
  const std::string path = OldFile(3);
  std::filesystem::create_directory(path + ".old");
  Answer(QMessageBox::Yes);
  ASSERT_TRUE(m_app->OpenDocumentFile(path));
  for (const char* words : {"Error removing old trace file", "Error opening trace file"}) {
    ASSERT_TRUE(Until([this, words] {
      auto* box = Shown<QMessageBox>();
      return box && box->text() == QLatin1String(words);
    })) << words;
    auto* box = Shown<QMessageBox>();
    EXPECT_FALSE(QtHost::InModal());
    EXPECT_EQ(box->icon(), QMessageBox::Critical);
    QTest::mouseClick(box->button(QMessageBox::Ok), Qt::LeftButton);
  }
  EXPECT_TRUE(Shown<LoadStatusFace>()) << "it stays until another load is done";
}
