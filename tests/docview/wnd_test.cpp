#include "docview/wnd.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "docview/dialogs/dialog.h"
#include "support/recording_host.h"

namespace {

class Window : public CWnd {
 public:
  Window(Host& host, std::string& told) : CWnd(host), m_told(told) {}
  std::intptr_t OnMessage(unsigned message, std::uintptr_t wParam, std::intptr_t lParam) override {
    m_told += std::to_string(message) + " " + std::to_string(wParam) + " " +
              std::to_string(lParam) + "\n";
    return 7;
  }

 private:
  std::string& m_told;
};

TEST(Wnd, ASentMessageIsADirectCallWithAResult) {
  RecordingHost host;
  std::string told;
  Window window(host, told);
  EXPECT_EQ(window.SendMessage(1125, 3, -1), 7);
  EXPECT_EQ(told, "1125 3 -1\n");
}

TEST(Wnd, AnUnknownMessageGivesNothing) {
  RecordingHost host;
  CWnd window(host);
  EXPECT_EQ(window.SendMessage(1), 0);
}

TEST(Wnd, PostedMessagesComeLaterAndInOrder) {
  RecordingHost host;
  std::string told;
  Window window(host, told);
  window.PostMessage(1, 10);
  window.PostMessage(2, 20);
  window.SendMessage(3, 30);
  EXPECT_EQ(told, "3 30 0\n");
  host.RunPosted();
  EXPECT_EQ(told, "3 30 0\n1 10 0\n2 20 0\n");
}

TEST(Wnd, WhatIsQueuedForAWindowIsDroppedWithIt) {
  RecordingHost host;
  std::string told;
  auto window = std::make_unique<Window>(host, told);
  window->PostMessage(1128, 1002);
  window->PostCall([&told] { told += "called\n"; });
  window.reset();
  host.RunPosted();
  EXPECT_EQ(told, "");
}

TEST(Wnd, APostedCallMayDestroyItsWindow) {
  RecordingHost host;
  std::string told;
  auto window = std::make_unique<Window>(host, told);
  window->PostCall([&window] { window.reset(); });
  window->PostMessage(1);
  host.RunPosted();
  EXPECT_EQ(window, nullptr);
  EXPECT_EQ(told, "");
}

class Dialog : public CDialog {
 public:
  using CDialog::CDialog;
  void OnInitDialog() override {
    m_told += "init ";
    if (m_endAtOnce) EndDialog(5);
  }
  void OnOK() override {
    m_told += "ok ";
    CDialog::OnOK();
  }
  std::string m_told;
  bool m_endAtOnce = false;
};

TEST(Dialog, IsInitialisedShownAndGivesItsResult) {
  RecordingHost host;
  Dialog dialog(host);
  host.AnswerDialog([](CDialog& shown) { shown.OnOK(); });
  EXPECT_EQ(dialog.DoModal(), CDialog::kIdOk);
  EXPECT_EQ(dialog.m_told, "init ok ");
}

TEST(Dialog, ClosedByThePersonGivesCancelAlsoWhenItIsRunAgain) {
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
  EXPECT_EQ(host.Told(), "");
}

}  // namespace
