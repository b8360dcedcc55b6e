// Calls that wait for their turn on the interface thread.
//
// Shape    First posted, first run. A turn runs the calls that were there when it began; what they
//          post runs in a later turn, so that painting and input go on in between. When a call
//          runs a loop of its own (a modal dialog), that loop goes on with the rest of the queue.
// Threads  Post from any thread, the rest on the thread that made the queue. The interface thread
//          is woken by an event that carries nothing.
#pragma once

#include <QBasicTimer>
#include <QObject>
#include <cstdint>
#include <deque>
#include <functional>
#include <mutex>

class CallQueue final : public QObject {
 public:
  // `ran` runs behind every call.
  explicit CallQueue(std::function<void()> ran) : m_ran(std::move(ran)) {}

  void Post(std::function<void()> call);

 protected:
  void customEvent(QEvent* event) override;
  void timerEvent(QTimerEvent* event) override;

 private:
  // The oldest call if it was posted before `end`.
  std::function<void()> Take(std::uint64_t end);
  bool Empty();

  const std::function<void()> m_ran;
  QBasicTimer m_turn;
  std::mutex m_mutex;  // guards the following
  std::deque<std::function<void()>> m_calls;
  std::uint64_t m_posted = 0;
  bool m_woken = false;
};
