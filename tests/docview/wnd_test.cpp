#include "docview/wnd.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "docview/dialogs/dialog.h"
#include "support/recording_host.h"

namespace {

class Window : public CWnd {
 public:
  Window(Host& host, std::string& reported) : CWnd(host), m_reported(reported) {}
  std::intptr_t OnMessage(unsigned message, std::uintptr_t wParam, std::intptr_t lParam) override {
    m_reported += std::to_string(message) + " " + std::to_string(wParam) + " " +
                  std::to_string(lParam) + "\n";
    return 7;
  }

 private:
  std::string& m_reported;
};

TEST(Wnd, ASentMessageIsADirectCallWithAResult) {
  RecordingHost host;
  std::string reported;
  Window window(host, reported);
  EXPECT_EQ(window.SendMessage(1125, 3, -1), 7);
  EXPECT_EQ(reported, "1125 3 -1\n");
}

TEST(Wnd, AnUnknownMessageGivesNothing) {
  RecordingHost host;
  CWnd window(host);
  EXPECT_EQ(window.SendMessage(1), 0);
}

TEST(Wnd, PostedMessagesComeLaterAndInOrder) {
  RecordingHost host;
  std::string reported;
  Window window(host, reported);
  window.PostMessage(1, 10);
  window.PostMessage(2, 20);
  window.SendMessage(3, 30);
  EXPECT_EQ(reported, "3 30 0\n");
  host.RunPosted();
  EXPECT_EQ(reported, "3 30 0\n1 10 0\n2 20 0\n");
}

TEST(Wnd, WhatIsQueuedForAWindowIsDroppedWithIt) {
  RecordingHost host;
  std::string reported;
  auto window = std::make_unique<Window>(host, reported);
  window->PostMessage(1128, 1002);
  window->PostCall([&reported] { reported += "called\n"; });
  window.reset();
  host.RunPosted();
  EXPECT_EQ(reported, "");
}

TEST(Wnd, APostedCallMayDestroyItsWindow) {
  RecordingHost host;
  std::string reported;
  auto window = std::make_unique<Window>(host, reported);
  window->PostCall([&window] { window.reset(); });
  window->PostMessage(1);
  host.RunPosted();
  EXPECT_EQ(window, nullptr);
  EXPECT_EQ(reported, "");
}

class Dialog : public CDialog {
 public:
  using CDialog::CDialog;
  void OnInitDialog() override {
    m_reported += "init ";
    if (m_endAtOnce) EndDialog(5);
  }
  void OnOK() override {
    m_reported += "ok ";
    CDialog::OnOK();
  }
  std::string m_reported;
  bool m_endAtOnce = false;
};

TEST(Dialog, IsInitialisedShownAndGivesItsResult) {
  RecordingHost host;
  Dialog dialog(host);
  host.AnswerDialog([](CDialog& shown) { shown.OnOK(); });
  EXPECT_EQ(dialog.DoModal(), CDialog::kIdOk);
  EXPECT_EQ(dialog.m_reported, "init ok ");
}

TEST(Dialog, ClosedByTheUserGivesCancelAlsoWhenItIsRunAgain) {
  RecordingHost host;
  Dialog dialog(host);
  host.AnswerDialog([](CDialog& shown) { shown.OnOK(); });
  EXPECT_EQ(dialog.DoModal(), CDialog::kIdOk);
  EXPECT_EQ(dialog.DoModal(), CDialog::kIdCancel);
}

TEST(Dialog, ThatEndsWhileItIsInitialisedIsNotShown) {
  RecordingHost host;
  Dialog dialog(host);
  dialog.m_endAtOnce = true;
  EXPECT_EQ(dialog.DoModal(), 5);
  EXPECT_EQ(host.Reported(), "");
}

}  // namespace
