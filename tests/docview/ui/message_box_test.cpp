#include <gtest/gtest.h>

#include <QMessageBox>
#include <QPushButton>
#include <QTest>
#include <functional>

#include "docview/ui/qt_host.h"
#include "docview/ui/qt_message_box.h"
#include "support/pending_actions.h"

namespace {

// Asks, while `person` acts on the box.
BoxAnswer Ask(QtHost& host, const MessageBoxRequest& request,
              const std::function<void(QMessageBox&)>& person) {
  host.Post(MustRun([person] {
    auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
    ASSERT_TRUE(box);
    person(*box);
  }));
  return host.MessageBox(request);
}

std::function<void(QMessageBox&)> Press(QMessageBox::StandardButton button) {
  return [button](QMessageBox& box) { box.button(button)->click(); };
}

QtMessageBox* PostedBox() {
  for (QWidget* window : QApplication::topLevelWidgets())
    if (auto* box = dynamic_cast<QtMessageBox*>(window); box && box->isVisible() && !box->isModal())
      return box;
  return nullptr;
}

}  // namespace

TEST(MessageBoxes, HaveTheTextCaptionIconAndButtonsAskedFor) {
  QtHost host;
  const MessageBoxRequest request = {
      .text = "Quick Close (selecting yes will exit without saving any files)?",
      .icon = BoxIcon::Question,
      .buttons = BoxButtons::YesNoCancel,
      .caption = "Application Exit"};
  const BoxAnswer answer = Ask(host, request, [](QMessageBox& box) {
    EXPECT_EQ(box.text(), "Quick Close (selecting yes will exit without saving any files)?");
    EXPECT_EQ(box.windowTitle(), "Application Exit");
    EXPECT_EQ(box.icon(), QMessageBox::Question);
    EXPECT_EQ(box.standardButtons(), QMessageBox::Yes | QMessageBox::No | QMessageBox::Cancel);
    EXPECT_EQ(box.windowModality(), Qt::ApplicationModal);
    EXPECT_TRUE(QtHost::InModal());
    box.button(QMessageBox::No)->click();
  });
  EXPECT_EQ(answer, BoxAnswer::No);
  EXPECT_FALSE(QtHost::InModal());
}

TEST(MessageBoxes, TheDefaultCaptionIsTheProgramsName) {
  QtHost host;
  const BoxAnswer answer = Ask(host, {.text = "Text not found."}, [](QMessageBox& box) {
    EXPECT_EQ(box.windowTitle(), "Tessera");
    EXPECT_EQ(box.icon(), QMessageBox::Warning);
    EXPECT_EQ(box.standardButtons(), QMessageBox::Ok);
    box.button(QMessageBox::Ok)->click();
  });
  EXPECT_EQ(answer, BoxAnswer::Ok);
}

TEST(MessageBoxes, TheAnswerIsTheButtonsOwn) {
  QtHost host;
  EXPECT_EQ(Ask(host, {.text = "?", .buttons = BoxButtons::YesNo}, Press(QMessageBox::Yes)),
            BoxAnswer::Yes);
  EXPECT_EQ(Ask(host, {.text = "?", .buttons = BoxButtons::OkCancel}, Press(QMessageBox::Cancel)),
            BoxAnswer::Cancel);
  EXPECT_EQ(Ask(host, {.text = "?", .buttons = BoxButtons::OkCancel}, Press(QMessageBox::Ok)),
            BoxAnswer::Ok);
}

TEST(MessageBoxes, EscAndTheCloseButtonCancelWhereThatIsAnAnswer) {
  QtHost host;
  const auto escape = [](QMessageBox& box) { QTest::keyClick(&box, Qt::Key_Escape); };
  const auto close = [](QMessageBox& box) { box.close(); };
  EXPECT_EQ(Ask(host, {.text = "?", .buttons = BoxButtons::YesNoCancel}, escape),
            BoxAnswer::Cancel);
  EXPECT_EQ(Ask(host, {.text = "?", .buttons = BoxButtons::YesNoCancel}, close), BoxAnswer::Cancel);
  EXPECT_EQ(Ask(host, {.text = "?"}, escape), BoxAnswer::Ok);
}

TEST(MessageBoxes, YesAndNoWithoutCancelMustBeAnswered) {
  QtHost host;
  const BoxAnswer answer =
      Ask(host, {.text = "?", .buttons = BoxButtons::YesNo}, [](QMessageBox& box) {
        QTest::keyClick(&box, Qt::Key_Escape);
        EXPECT_TRUE(box.isVisible());
        box.close();
        EXPECT_TRUE(box.isVisible());
        box.button(QMessageBox::No)->click();
      });
  EXPECT_EQ(answer, BoxAnswer::No);
}

TEST(MessageBoxes, MarkupInATextIsShownAsItIs) {
  QtHost host;
  Ask(host, {.text = "<b>x</b>"}, [](QMessageBox& box) {
    EXPECT_EQ(box.textFormat(), Qt::PlainText);
    box.button(QMessageBox::Ok)->click();
  });
}

TEST(MessageBoxes, UnderAWaitCursorTheNormalOneShowsUntilTheAnswer) {
  QtHost host;
  {
    const CWaitCursor outer(host);
    const CWaitCursor inner(host);
    Ask(host, {.text = "?"}, [](QMessageBox& box) {
      EXPECT_EQ(QApplication::overrideCursor()->shape(), Qt::ArrowCursor);
      box.button(QMessageBox::Ok)->click();
    });
    ASSERT_TRUE(QApplication::overrideCursor());
    EXPECT_EQ(QApplication::overrideCursor()->shape(), Qt::WaitCursor);
  }
  EXPECT_EQ(QApplication::overrideCursor(), nullptr);
}

TEST(MessageBoxes, TimersAndPostedCallsGoOnWhileOneIsUp) {
  QtHost host;
  int ticks = 0;
  host.SetTimer(1, [&] {
    if (++ticks < 5) return;
    if (auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget()))
      box->button(QMessageBox::Ok)->click();
  });
  EXPECT_EQ(host.MessageBox({.text = "?"}), BoxAnswer::Ok);
  EXPECT_GE(ticks, 5);
}

TEST(MessageBoxes, OneThatLosesItsWindowAnswersWhatRefuses) {
  QtHost host;
  const auto answerWithoutWindow = [&host](BoxButtons buttons) {
    auto main = std::make_unique<QWidget>();
    main->show();
    host.SetMainWidget(main.get());
    host.Post([&] { main.reset(); });
    return host.MessageBox({.text = "?", .buttons = buttons});
  };
  EXPECT_EQ(answerWithoutWindow(BoxButtons::Ok), BoxAnswer::Ok);
  EXPECT_EQ(answerWithoutWindow(BoxButtons::OkCancel), BoxAnswer::Cancel);
  EXPECT_EQ(answerWithoutWindow(BoxButtons::YesNo), BoxAnswer::No);
  EXPECT_EQ(answerWithoutWindow(BoxButtons::YesNoCancel), BoxAnswer::Cancel);
}

TEST(PostedBoxes, BlockNoWindowAndTellWhenTheyAreClosed) {
  QtHost host;
  bool closed = false;
  host.PostBox({.text = "Error opening trace file", .icon = BoxIcon::Stop}, [&] { closed = true; });
  ASSERT_TRUE(QTest::qWaitFor([] { return PostedBox() != nullptr; }));
  EXPECT_EQ(PostedBox()->text(), "Error opening trace file");
  EXPECT_EQ(PostedBox()->windowModality(), Qt::NonModal);
  EXPECT_FALSE(QtHost::InModal());
  EXPECT_FALSE(closed);
  PostedBox()->button(QMessageBox::Ok)->click();
  EXPECT_TRUE(closed);
}

TEST(PostedBoxes, CanBeAnsweredWhileAModalBoxIsUp) {
  QtHost host;
  std::string order;
  host.PostBox({.text = "from a thread"}, [&] { order += "posted "; });
  host.SetTimer(1, [&] {
    if (QtMessageBox* box = PostedBox()) {
      // Through the window, where a modal one would block it.
      const QPushButton* ok = qobject_cast<QPushButton*>(box->button(QMessageBox::Ok));
      QTest::mouseClick(box->windowHandle(), Qt::LeftButton, {},
                        ok->mapTo(box, ok->rect().center()));
    } else if (!order.empty()) {
      if (auto* modal = qobject_cast<QMessageBox*>(QApplication::activeModalWidget()))
        modal->button(QMessageBox::Ok)->click();
    }
  });
  host.MessageBox({.text = "modal"});
  EXPECT_EQ(order, "posted ");
}

TEST(PostedBoxes, ThatAreStillUpWhenTheHostGoesAreReportedAsClosed) {
  bool closed = false;
  {
    QtHost host;
    host.PostBox({.text = "x"}, [&] { closed = true; });
    ASSERT_TRUE(QTest::qWaitFor([] { return PostedBox() != nullptr; }));
  }
  EXPECT_TRUE(closed);
  EXPECT_EQ(PostedBox(), nullptr);
}

TEST(MessageBoxes, EnterPressesTheFirstButtonUnlessAnotherIsPreferred) {
  QtHost host;
  MessageBoxRequest request = {.text = "Leave?", .buttons = BoxButtons::YesNoCancel};
  const auto enter = [](QMessageBox& box) { QTest::keyClick(&box, Qt::Key_Return); };
  EXPECT_EQ(Ask(host, request, enter), BoxAnswer::Yes);
  request.preferred = BoxAnswer::No;
  EXPECT_EQ(Ask(host, request, enter), BoxAnswer::No);
  request.preferred = BoxAnswer::Cancel;
  EXPECT_EQ(Ask(host, request, enter), BoxAnswer::Cancel);
}

TEST(MessageBoxes, AreAtLeastAsWideAsTheirTitle) {
  QtHost host;
  const std::string caption = "A caption that is much longer than what the box has to say";
  Ask(host, {.text = "No.", .caption = caption}, [&](QMessageBox& box) {
    // With room for the window's icon and its buttons beside the title.
    EXPECT_GE(box.width(),
              box.fontMetrics().horizontalAdvance(QString::fromStdString(caption)) + 100);
    box.button(QMessageBox::Ok)->click();
  });
}

TEST(MessageBoxes, OfAFewWordsAreNoNarrowStrip) {
  QtHost host;
  Ask(host, {.text = "Text not found.", .icon = BoxIcon::None}, [&](QMessageBox& box) {
    EXPECT_GE(box.width(), box.fontMetrics().averageCharWidth() * 40);
    box.button(QMessageBox::Ok)->click();
  });
}
