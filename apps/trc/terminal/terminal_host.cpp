#include "terminal/terminal_host.h"

#include <algorithm>
#include <utility>

#include "docview/dialogs/dialog.h"
#include "terminal/output.h"

namespace {

class NoFace final : public DialogFace {
 public:
  void UpdateData() override {}
};

}  // namespace

void TerminalHost::RunUntil(const std::function<bool()>& done) {
  while (!done()) {
    RunDueTimers();
    if (!RunOneCall()) WaitForWork();
  }
}

bool TerminalHost::RunOneCall() {
  std::function<void()> call;
  {
    const std::lock_guard lock(m_mutex);
    if (m_calls.empty()) return false;
    call = std::move(m_calls.front());
    m_calls.pop_front();
  }
  call();
  return true;
}

void TerminalHost::RunDueTimers() {
  const Clock::time_point now = Clock::now();
  std::vector<TimerId> due;
  for (const auto& [id, timer] : m_timers) {
    if (timer.next <= now) due.push_back(id);
  }
  for (const TimerId id : due) {
    const auto timer = m_timers.find(id);
    if (timer == m_timers.end()) continue;  // an earlier tick has killed it
    timer->second.next = now + timer->second.period;
    const std::function<void()> tick = timer->second.tick;  // a tick may kill its own timer
    tick();
  }
}

void TerminalHost::WaitForWork() {
  Clock::time_point until = Clock::now() + kLookMs;
  for (const auto& [id, timer] : m_timers) until = std::min(until, timer.next);
  std::unique_lock lock(m_mutex);
  m_posted.wait_until(lock, until, [this] { return !m_calls.empty(); });
}

BoxAnswer TerminalHost::MessageBox(const MessageBoxRequest& request) {
  m_progress.Clear();
  PrintError(m_subject.empty() ? request.text : m_subject + ": " + request.text);
  ++m_boxes;
  switch (request.buttons) {
    case BoxButtons::Ok:
      return BoxAnswer::Ok;
    case BoxButtons::YesNo:
      return BoxAnswer::No;
    default:
      return BoxAnswer::Cancel;
  }
}

void TerminalHost::PostBox(MessageBoxRequest request, std::function<void()> closed) {
  Post([this, request = std::move(request), closed = std::move(closed)] {
    MessageBox(request);
    if (closed) closed();
  });
}

std::optional<FileDialogAnswer> TerminalHost::RunFileDialog(const FileDialogRequest&) {
  return std::nullopt;
}

int TerminalHost::RunDialog(CDialog&) {
  return CDialog::kIdCancel;
}

std::unique_ptr<DialogFace> TerminalHost::ShowModeless(CDialog&) {
  return std::make_unique<NoFace>();
}

void TerminalHost::BeginWaitCursor() {
  if (m_waitCursors++ == 0) m_progress.Show("Saving...");
}

void TerminalHost::EndWaitCursor() {
  if (--m_waitCursors == 0) m_progress.Clear();
}

void TerminalHost::Post(std::function<void()> call) {
  {
    const std::lock_guard lock(m_mutex);
    m_calls.push_back(std::move(call));
  }
  m_posted.notify_one();
}

TimerId TerminalHost::SetTimer(unsigned milliseconds, std::function<void()> tick) {
  const std::chrono::milliseconds period(milliseconds);
  m_timers[++m_lastTimer] = {period, Clock::now() + period, std::move(tick)};
  return m_lastTimer;
}
