#include "docview/ui/call_queue.h"

#include <QCoreApplication>
#include <QEvent>
#include <utility>

void CallQueue::Post(std::function<void()> call) {
  if (!call) return;
  bool wake;
  {
    const std::lock_guard lock(m_mutex);
    m_calls.push_back(std::move(call));
    ++m_posted;
    wake = !std::exchange(m_woken, true);
  }
  if (wake) QCoreApplication::postEvent(this, new QEvent(QEvent::User));
}

void CallQueue::customEvent(QEvent*) {
  {
    const std::lock_guard lock(m_mutex);
    m_woken = false;
  }
  m_turn.start(0, this);
}

void CallQueue::timerEvent(QTimerEvent*) {
  m_turn.stop();
  std::uint64_t end;
  {
    const std::lock_guard lock(m_mutex);
    end = m_posted;
  }
  while (std::function<void()> call = Take(end)) {
    // Started again, because a timer does not fire inside its own event: the call may run a loop.
    if (!Empty()) m_turn.start(0, this);
    call();
    m_ran();
  }
  if (!Empty()) m_turn.start(0, this);
}

std::function<void()> CallQueue::Take(std::uint64_t end) {
  const std::lock_guard lock(m_mutex);
  if (m_calls.empty() || m_posted - m_calls.size() >= end) return {};
  std::function<void()> call = std::move(m_calls.front());
  m_calls.pop_front();
  return call;
}

bool CallQueue::Empty() {
  const std::lock_guard lock(m_mutex);
  return m_calls.empty();
}
