// A host without a user: it answers from a script and records the questions.
//
// Shape    The transcript has one line per question, in the order in which they came:
//            box Tessera [stop] "Invalid format." (OK) -> OK
//            posted box Tessera [stop] "Error opening trace file" (OK)
//            save dialog "Save As" ext=.trc name="" filters="Trace Files (*.trc)|*.trc" -> none
//            dialog -> 1
//            modeless opened / modeless updated / modeless closed
//            wait cursor on / wait cursor off
// Errors   A question without a scripted answer is closed like a box without a decision: Cancel,
//          No,
//          or the only button.
// Threads  Post and PostBox from any thread; everything else on the interface thread, the test's.
#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "docview/dialogs/work_box.h"
#include "support/posted_work.h"
#include "support/question_text.h"
#include "support/test_timers.h"
#include "support/transcript.h"
#include "support/user_script.h"

class RecordingHost : public Host,
                      public UserScript,
                      public TranscriptKeeper,
                      public TestTimers,
                      public PostedWork {
 public:
  // From now on a box of long work fails the test.
  void WantNoWorkBox(bool wanted = true) { m_wantsNoWorkBox = wanted; }
  // The lines since the last look, but those of the wait cursor.
  std::string TakeBoxes() {
    std::string boxes;
    for (const std::string& line : Transcript())
      if (!line.starts_with("wait cursor ")) boxes += line + "\n";
    ClearTranscript();
    return boxes;
  }
  // Continues the work of an open box until it is done.
  void Finish(CDialog& box) {
    const TimerId timer = m_workTimers.at(&box);
    while (!box.Ended()) TickOf(timer)();
  }

  // The user chooses this in the menu that is open: by its text, without the access key.
  void Choose(const std::string& text) {
    for (std::size_t place = 0; place < m_menu.size(); ++place)
      if (m_menu[place].text == text && m_menu[place].enabled) return m_chosen(place);
    ADD_FAILURE() << "no " << text << " in the menu";
  }
  // "Fit Columns|-|+Sev|Count|(Trace)": those in brackets are grey, those with + are ticked.
  std::string MenuText() const {
    std::string all;
    for (const MenuChoice& choice : m_menu) {
      const std::string text = (choice.ticked.value_or(false) ? "+" : "") + choice.text;
      all += (all.empty() ? "" : "|") + (text.empty()     ? "-"
                                         : choice.enabled ? text
                                                          : "(" + text + ")");
    }
    return all;
  }
  void OpenMenu(const std::vector<MenuChoice>& choices, int, int,
                std::function<void(std::size_t)> chosen) override {
    m_menu = choices;
    for (MenuChoice& choice : m_menu) std::erase(choice.text, '&');
    m_chosen = std::move(chosen);
  }

  std::vector<FileDialogRequest> m_fileRequests;
  const std::vector<CDialog*>& Modeless() const { return m_modeless; }  // open now
  int WaitCursors() const { return m_waitCursors; }                     // nested now

  BoxAnswer MessageBox(const MessageBoxRequest& request) override {
    const BoxAnswer answer = NextBoxAnswer().value_or(ClosedBox(request.buttons));
    Note("box " + BoxText(request) + " -> " + AnswerText(answer));
    return answer;
  }
  void PostBox(MessageBoxRequest request, std::function<void()> closed) override {
    Open(std::move(closed));  // before the transcript mentions it
    Note("posted box " + BoxText(request));
  }
  std::optional<FileDialogAnswer> RunFileDialog(const FileDialogRequest& request) override {
    m_fileRequests.push_back(request);
    std::optional<FileDialogAnswer> answer = NextFileAnswer();
    Note(FileDialogText(request, answer));
    return answer;
  }
  int RunDialog(CDialog& dialog) override {
    const bool work = dynamic_cast<CWorkBox*>(&dialog) != nullptr;
    const DialogScript script = NextDialogScript(work);
    if (work) m_workTimers[&dialog] = Last();  // the box has just set it
    EXPECT_FALSE(work && m_wantsNoWorkBox) << "a box for short work";
    if (work && !script) {
      Finish(dialog);
      return dialog.Result();
    }
    if (script) script(dialog);
    if (!dialog.Ended()) dialog.OnCancel();
    if (!dialog.Ended()) dialog.EndDialog(CDialog::kIdCancel);
    Note("dialog -> " + std::to_string(dialog.Result()));
    return dialog.Result();
  }
  std::unique_ptr<DialogFace> ShowModeless(CDialog& dialog) override {
    return std::make_unique<Face>(*this, dialog);
  }
  bool PutOnClipboard(const std::string& text) override {
    if (m_hasClipboard) m_clipboard = text;
    return m_hasClipboard;
  }
  std::string m_clipboard;
  bool m_hasClipboard = true;
  void BeginWaitCursor() override {
    ++m_waitCursors;
    Note("wait cursor on");
  }
  void EndWaitCursor() override {
    --m_waitCursors;
    Note("wait cursor off");
  }
  void Post(std::function<void()> call) override { Push(std::move(call)); }
  TimerId SetTimer(unsigned milliseconds, std::function<void()> tick) override {
    return Add(milliseconds, std::move(tick));
  }
  void KillTimer(TimerId timer) override { Remove(timer); }

 private:
  std::vector<MenuChoice> m_menu;
  std::function<void(std::size_t)> m_chosen;
  class Face : public DialogFace {
   public:
    Face(RecordingHost& host, CDialog& dialog) : m_host(host), m_dialog(dialog) {
      m_host.m_modeless.push_back(&m_dialog);
      m_host.Note("modeless opened");
    }
    ~Face() override {
      std::erase(m_host.m_modeless, &m_dialog);
      m_host.Note("modeless closed");
    }
    void UpdateData() override { m_host.Note("modeless updated"); }

   private:
    RecordingHost& m_host;
    CDialog& m_dialog;
  };

  std::vector<CDialog*> m_modeless;
  std::map<CDialog*, TimerId> m_workTimers;
  bool m_wantsNoWorkBox = false;
  int m_waitCursors = 0;
};
