// The host of a program without windows: boxes are printed to standard error, and the interface
// thread is the one that calls RunUntil.
//
// There may be no user to answer a question. So the question is printed, and the answer is the
// careful one: No or Cancel.
//
// Threads  See Host: Post and PostBox from any thread.
#pragma once

#include <chrono>
#include <condition_variable>
#include <deque>
#include <map>
#include <mutex>

#include "docview/host.h"
#include "terminal/progress_line.h"

class TerminalHost final : public Host {
 public:
  TerminalHost() = default;

  // Runs posted calls and timers on this thread until `done` returns true. It is called after each
  // call and at least every kLookMs, so that it may check for a signal too.
  void RunUntil(const std::function<bool()>& done);
  // The subject of the next boxes: "trc: PATH: message".
  void SetSubject(const std::string& path) { m_subject = path; }
  // How many boxes have been printed.
  unsigned Boxes() const { return m_boxes; }
  ProgressLine& Progress() { return m_progress; }

  BoxAnswer MessageBox(const MessageBoxRequest& request) override;
  void PostBox(MessageBoxRequest request, std::function<void()> closed) override;
  // There are no dialogs: the answer is Cancel.
  std::optional<FileDialogAnswer> RunFileDialog(const FileDialogRequest& request) override;
  int RunDialog(CDialog& dialog) override;
  std::unique_ptr<DialogFace> ShowModeless(CDialog& dialog) override;
  bool PutOnClipboard(const std::string&) override { return false; }
  // The only long work under a wait cursor is a save.
  void BeginWaitCursor() override;
  void EndWaitCursor() override;
  void Post(std::function<void()> call) override;
  TimerId SetTimer(unsigned milliseconds, std::function<void()> tick) override;
  void KillTimer(TimerId timer) override { m_timers.erase(timer); }

 private:
  using Clock = std::chrono::steady_clock;
  static constexpr std::chrono::milliseconds kLookMs{20};
  struct Timer {
    std::chrono::milliseconds period;
    Clock::time_point next;
    std::function<void()> tick;
  };

  bool RunOneCall();
  void RunDueTimers();
  void WaitForWork();

  std::mutex m_mutex;  // guards m_calls
  std::condition_variable m_posted;
  std::deque<std::function<void()>> m_calls;
  std::map<TimerId, Timer> m_timers;
  TimerId m_lastTimer = 0;
  std::string m_subject;
  unsigned m_boxes = 0;
  unsigned m_waitCursors = 0;
  ProgressLine m_progress;
};
