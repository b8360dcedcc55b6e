// Posted calls that wait for the interface thread.
//
// Shape    In the order of posting. A turn runs the calls that were queued when it began. Calls
//          that these post run in a later turn, so that painting and input continue in between. If
//          a call runs a loop of its own (a modal dialog), that loop continues with the rest of the
//          queue.
// Threads  Post from any thread, the rest on the thread that made the queue. An empty event wakes
//          the interface thread.
#pragma once

#include <QBasicTimer>
#include <QObject>
#include <cstdint>
#include <deque>
#include <functional>
#include <mutex>

class CallQueue final : public QObject {
 public:
  // `ran` runs after every call.
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
