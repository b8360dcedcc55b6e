// A host without a user: runs posted calls and counts boxes.
#pragma once

#include <condition_variable>
#include <deque>
#include <mutex>

#include "docview/dialogs/dialog.h"
#include "docview/host.h"

class BenchHost final : public Host {
 public:
  BoxAnswer MessageBox(const MessageBoxRequest& request) override {
    std::fprintf(stderr, "%s\n", request.text.c_str());
    return BoxAnswer::Cancel;
  }
  void PostBox(MessageBoxRequest request, std::function<void()>) override { MessageBox(request); }
  std::optional<FileDialogAnswer> RunFileDialog(const FileDialogRequest&) override { return {}; }
  // Only long work runs a dialog here.
  int RunDialog(CDialog& dialog) override {
    while (!dialog.Ended() && m_tick) m_tick();
    return dialog.Result();
  }
  std::unique_ptr<DialogFace> ShowModeless(CDialog&) override { return nullptr; }
  bool PutOnClipboard(const std::string&) override { return false; }
  void BeginWaitCursor() override {}
  void EndWaitCursor() override {}
  TimerId SetTimer(unsigned, std::function<void()> tick) override {
    m_tick = std::move(tick);
    return 1;
  }
  void KillTimer(TimerId) override {}

  void Post(std::function<void()> call) override {
    const std::lock_guard lock(m_mutex);
    m_calls.push_back(std::move(call));
    m_posted.notify_one();
  }
  template <class Done>
  void RunUntil(Done done) {
    while (!done()) {
      std::unique_lock lock(m_mutex);
      m_posted.wait(lock, [this] { return !m_calls.empty(); });
      const auto call = std::move(m_calls.front());
      m_calls.pop_front();
      lock.unlock();
      call();
    }
  }

 private:
  std::function<void()> m_tick;
  std::mutex m_mutex;
  std::condition_variable m_posted;
  std::deque<std::function<void()>> m_calls;
};
