// A host without a person: it answers from a script and writes down what it was asked.
//
// Shape    The transcript has one line per question, in the order in which they came:
//            box Tessera [stop] "Invalid format." (OK) -> OK
//            posted box Tessera [stop] "Error opening trace file" (OK)
//            save dialog "Save As" ext=.trc name="" filters="Trace Files (*.trc)|*.trc" -> none
//            dialog -> 1
//            modeless opened / modeless updated / modeless closed
//            wait cursor on / wait cursor off
// Errors   A question without a scripted answer is closed as a person would close it: Cancel, No,
//          or the only button. An answer that nobody asked for fails the test at the end: what a
//          script expects was never looked at.
// Threads  Post and PostBox from any thread; everything else on the test's thread, which is the
//          interface thread. A scripted file dialog does not change the current folder.
#pragma once

#include <gtest/gtest.h>

#include <chrono>
#include <deque>
#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "docview/dialog.h"
#include "docview/host.h"
#include "docview/work_box.h"
#include "support/call_line.h"
#include "support/question_text.h"

class RecordingHost : public Host {
 public:
  using DialogScript = std::function<void(CDialog&)>;

  ~RecordingHost() override {
    EXPECT_EQ(m_boxAnswers.size(), 0U) << "answers to boxes that never came";
    EXPECT_EQ(m_fileAnswers.size(), 0U) << "answers to file dialogs that never came";
    EXPECT_EQ(m_dialogScripts.size(), 0U) << "scripts of dialogs that never came";
    EXPECT_EQ(m_workScripts.size(), 0U) << "scripts of boxes of long work that never came";
  }

  // The script. Answers are used up in order.
  void AnswerBox(BoxAnswer answer) { m_boxAnswers.push_back(answer); }
  void AnswerFileDialog(std::optional<FileDialogAnswer> answer) {
    m_fileAnswers.push_back(std::move(answer));
  }
  void AnswerFileDialog(const std::string& path) { AnswerFileDialog(FileDialogAnswer{path, {}}); }
  // What the person does in the next modal dialog; one that is still open behind it is cancelled.
  void AnswerDialog(DialogScript script) { m_dialogScripts.push_back(std::move(script)); }
  // The same for the next box of long work. One without a script is waited for, without a line in
  // the transcript: on a slow machine it may come up in any test.
  void AnswerWorkBox(DialogScript script) { m_workScripts.push_back(std::move(script)); }
  // From now on such a box fails the test.
  void WantNoWorkBox(bool wanted = true) { m_wantsNoWorkBox = wanted; }
  // Goes on with the work of a box that is up, until it is done.
  void Finish(CDialog& box) {
    const TimerId timer = m_workTimers.at(&box);
    while (!box.Ended()) {
      const std::function<void()> tick = m_timers.at(timer).second;
      tick();
    }
  }

  // What happened so far.
  std::vector<std::string> Transcript() const {
    const std::lock_guard lock(m_mutex);
    return m_transcript;
  }
  std::string Told() const {  // all lines, each with its "\n"
    std::string all;
    for (const std::string& line : Transcript()) all += line + "\n";
    return all;
  }
  void ClearTranscript() {
    const std::lock_guard lock(m_mutex);
    m_transcript.clear();
  }
  // A test adds lines of its own where it wants to see the order of both.
  void Note(std::string line) {
    const std::lock_guard lock(m_mutex);
    m_transcript.push_back(std::move(line));
  }
  std::vector<FileDialogRequest> m_fileRequests;
  const std::vector<CDialog*>& Modeless() const { return m_modeless; }  // open now
  int WaitCursors() const { return m_waitCursors; }                     // nested now

  // Runs one queued call; false when there is none.
  bool RunOnePosted() { return m_posted.RunOne(); }
  // Runs queued calls, also those that they queue, until none is left.
  void RunPosted() {
    while (RunOnePosted()) {
    }
  }
  // Runs queued calls as they come until the condition holds; false when the deadline passes.
  bool RunUntil(const std::function<bool()>& condition,
                std::chrono::milliseconds limit = std::chrono::seconds(20)) {
    return m_posted.RunUntil(condition, limit);
  }
  // Waits until a call is queued, and leaves it there.
  bool WaitForPost(std::chrono::milliseconds limit = std::chrono::seconds(20)) {
    return m_posted.Wait(limit);
  }
  std::size_t PostedCount() const { return m_posted.Size(); }

  // Every open timer ticks once.
  void TickTimers() {
    const auto timers = m_timers;
    for (const auto& [id, timer] : timers) {
      if (m_timers.count(id)) timer.second();
    }
  }
  // The periods of the open timers, ms.
  std::vector<unsigned> Timers() const {
    std::vector<unsigned> periods;
    for (const auto& entry : m_timers) periods.push_back(entry.second.first);
    return periods;
  }
  // The person closes the boxes that block no window.
  void ClosePostedBoxes() {
    std::vector<std::function<void()>> boxes;
    {
      const std::lock_guard lock(m_mutex);
      boxes.swap(m_openBoxes);
    }
    for (const auto& closed : boxes) {
      if (closed) closed();
    }
  }

  BoxAnswer MessageBox(const MessageBoxRequest& request) override {
    BoxAnswer answer = ClosedBox(request.buttons);
    if (!m_boxAnswers.empty()) {
      answer = m_boxAnswers.front();
      m_boxAnswers.pop_front();
    }
    Note("box " + BoxText(request) + " -> " + AnswerText(answer));
    return answer;
  }
  void PostBox(MessageBoxRequest request, std::function<void()> closed) override {
    {
      const std::lock_guard lock(m_mutex);
      m_transcript.push_back("posted box " + BoxText(request));
      m_openBoxes.push_back(std::move(closed));
    }
    m_posted.Wake();
  }
  std::optional<FileDialogAnswer> RunFileDialog(const FileDialogRequest& request) override {
    m_fileRequests.push_back(request);
    std::optional<FileDialogAnswer> answer;
    if (!m_fileAnswers.empty()) {
      answer = std::move(m_fileAnswers.front());
      m_fileAnswers.pop_front();
    }
    Note(FileDialogText(request, answer));
    return answer;
  }
  int RunDialog(CDialog& dialog) override {
    const bool work = dynamic_cast<CWorkBox*>(&dialog) != nullptr;
    std::deque<DialogScript>& scripts = work ? m_workScripts : m_dialogScripts;
    if (work) m_workTimers[&dialog] = m_lastTimer;  // the box has just set it
    EXPECT_FALSE(work && m_wantsNoWorkBox) << "a box for short work";
    if (work && scripts.empty()) {
      Finish(dialog);
      return dialog.Result();
    }
    if (!scripts.empty()) {
      const DialogScript script = std::move(scripts.front());
      scripts.pop_front();
      script(dialog);
    }
    if (!dialog.Ended()) dialog.OnCancel();
    if (!dialog.Ended()) dialog.EndDialog(CDialog::kIdCancel);
    Note("dialog -> " + std::to_string(dialog.Result()));
    return dialog.Result();
  }
  std::unique_ptr<DialogFace> ShowModeless(CDialog& dialog) override {
    return std::make_unique<Face>(*this, dialog);
  }
  void BeginWaitCursor() override {
    ++m_waitCursors;
    Note("wait cursor on");
  }
  void EndWaitCursor() override {
    --m_waitCursors;
    Note("wait cursor off");
  }
  void Post(std::function<void()> call) override { m_posted.Push(std::move(call)); }
  TimerId SetTimer(unsigned milliseconds, std::function<void()> tick) override {
    m_timers[++m_lastTimer] = {milliseconds, std::move(tick)};
    return m_lastTimer;
  }
  void KillTimer(TimerId timer) override { m_timers.erase(timer); }

 private:
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

  std::deque<BoxAnswer> m_boxAnswers;
  std::deque<std::optional<FileDialogAnswer>> m_fileAnswers;
  std::deque<DialogScript> m_dialogScripts, m_workScripts;
  std::vector<CDialog*> m_modeless;
  std::map<TimerId, std::pair<unsigned, std::function<void()>>> m_timers;
  TimerId m_lastTimer = 0;
  std::map<CDialog*, TimerId> m_workTimers;
  bool m_wantsNoWorkBox = false;
  int m_waitCursors = 0;
  CallLine m_posted;

  mutable std::mutex m_mutex;  // guards what stands below
  std::vector<std::string> m_transcript;
  std::vector<std::function<void()>> m_openBoxes;
};
