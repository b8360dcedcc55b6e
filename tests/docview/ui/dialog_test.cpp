#include <gtest/gtest.h>

#include <QTest>
#include <functional>
#include <string>

#include "docview/ui/qt_control.h"
#include "docview/ui/qt_host.h"
#include "support/pending_actions.h"

namespace {

class Question : public CDialog {
 public:
  using CDialog::CDialog;
  void OnInitDialog() override { state = "fresh"; }
  void OnOK() override {
    ++oks;
    if (mayEnd) EndDialog(7);
  }
  void OnCancel() override {
    ++cancels;
    if (mayEnd) CDialog::OnCancel();
  }
  std::string state;
  bool mayEnd = true;
  int oks = 0, cancels = 0;
};
class OtherQuestion final : public Question {
 public:
  using Question::Question;
};

class QuestionFace : public QtDialogFace {
 public:
  QuestionFace(Question& question, QWidget* parent)
      : QtDialogFace(question, parent), m_question(question) {
    setWindowTitle("plain");
  }
  void UpdateData() override { setObjectName(QString::fromStdString(m_question.state)); }

 private:
  Question& m_question;
};

class OtherFace final : public QuestionFace {
 public:
  OtherFace(Question& question, QWidget* parent) : QuestionFace(question, parent) {
    setWindowTitle("other");
  }
};
// Its dialog has ended before the window is shown.
class EndingFace final : public QuestionFace {
 public:
  EndingFace(Question& question, QWidget* parent) : QuestionFace(question, parent) {
    question.EndDialog(9);
  }
};

class DialogTest : public testing::Test {
 protected:
  DialogTest() {
    m_host.RegisterFace<Question, QuestionFace>();
    m_host.RegisterFace<OtherQuestion, OtherFace>();
  }
  int Run(Question& question, const std::function<void(QDialog&)>& person) {
    m_host.Post(MustRun([person] {
      auto* window = qobject_cast<QDialog*>(QApplication::activeModalWidget());
      ASSERT_TRUE(window);
      person(*window);
    }));
    return question.DoModal();
  }
  QtHost m_host;
};

QuestionFace* ShownFace() {
  for (QWidget* window : QApplication::topLevelWidgets())
    if (auto* face = dynamic_cast<QuestionFace*>(window); face && face->isVisible()) return face;
  return nullptr;
}

}  // namespace

TEST_F(DialogTest, TheFaceIsThatOfTheDialogsDynamicType) {
  OtherQuestion other(m_host);
  Question& dialog = other;
  EXPECT_EQ(Run(dialog,
                [](QDialog& window) {
                  EXPECT_EQ(window.windowTitle(), "other");
                  EXPECT_EQ(window.objectName(), "fresh") << "shown with the dialog's state";
                  window.accept();
                }),
            7);
  EXPECT_FALSE(QtHost::InModal());
}

TEST_F(DialogTest, OkAndEscReachTheDialogWhichMayStay) {
  Question dialog(m_host);
  dialog.mayEnd = false;
  const int result = Run(dialog, [&](QDialog& window) {
    window.accept();
    QTest::keyClick(&window, Qt::Key_Escape);
    window.close();
    EXPECT_TRUE(window.isVisible());
    EXPECT_EQ(dialog.oks, 1);
    EXPECT_EQ(dialog.cancels, 2);
    dialog.mayEnd = true;
    window.reject();
  });
  EXPECT_EQ(result, CDialog::kIdCancel);
}

TEST_F(DialogTest, ADialogEndedByAPostedCallOrATimerCloses) {
  Question dialog(m_host);
  EXPECT_EQ(Run(dialog, [&](QDialog&) { m_host.Post([&] { dialog.EndDialog(5); }); }), 5);
  const TimerId timer = m_host.SetTimer(1, [&] { dialog.EndDialog(6); });
  EXPECT_EQ(dialog.DoModal(), 6);
  m_host.KillTimer(timer);
}

TEST_F(DialogTest, ADialogThatItsWindowEndsIsNotShown) {
  m_host.RegisterFace<Question, EndingFace>();
  Question dialog(m_host);
  bool shown = false;
  const TimerId timer = m_host.SetTimer(1, [&] {
    shown = ShownFace() != nullptr;
    dialog.EndDialog(1);
  });
  EXPECT_EQ(dialog.DoModal(), 9);
  m_host.KillTimer(timer);
  EXPECT_FALSE(shown);
}

TEST_F(DialogTest, UnderAWaitCursorADialogShowsTheNormalOne) {
  Question dialog(m_host);
  const CWaitCursor wait(m_host);
  Run(dialog, [](QDialog& window) {
    EXPECT_EQ(QApplication::overrideCursor()->shape(), Qt::ArrowCursor);
    window.reject();
  });
  EXPECT_EQ(QApplication::overrideCursor()->shape(), Qt::WaitCursor);
}

TEST_F(DialogTest, AModelessFaceBlocksNothingFollowsItsDialogAndGoesWithItsHandle) {
  Question dialog(m_host);
  dialog.state = "first";
  std::unique_ptr<DialogFace> face = m_host.ShowModeless(dialog);
  ASSERT_TRUE(ShownFace());
  EXPECT_FALSE(QtHost::InModal());
  EXPECT_EQ(ShownFace()->objectName(), "first");
  dialog.state = "second";
  face->UpdateData();
  EXPECT_EQ(ShownFace()->objectName(), "second");
  face.reset();
  EXPECT_EQ(ShownFace(), nullptr);
}

TEST_F(DialogTest, AModelessFaceMayBeDestroyedByItsOwnCancel) {
  class Closing final : public Question {
   public:
    using Question::Question;
    void OnCancel() override { face.reset(); }
    std::unique_ptr<DialogFace> face;
  };
  m_host.RegisterFace<Closing, QuestionFace>();
  Closing dialog(m_host);
  dialog.face = m_host.ShowModeless(dialog);
  ASSERT_TRUE(ShownFace());
  ShownFace()->reject();
  EXPECT_EQ(ShownFace(), nullptr);
  EXPECT_EQ(dialog.face, nullptr);
}

TEST(QtControls, AWidgetGivenBackOutlivesItsWindow) {
  class Control final : public QWidget, public ViewControl, public QtControl {
   public:
    void SetFocus() override {}
    QWidget* Widget() override { return this; }
  } control;
  class NoWidget final : public ViewControl {
   public:
    void SetFocus() override {}
  } fake;
  EXPECT_EQ(WidgetOf(&control), &control);
  EXPECT_EQ(WidgetOf(&fake), nullptr);
  EXPECT_EQ(WidgetOf(nullptr), nullptr);
  {
    QWidget window;
    control.setParent(&window);
    window.show();
    ReleaseControl(control);
  }
  EXPECT_EQ(control.parent(), nullptr);
  EXPECT_FALSE(control.isVisible());
}
