#include "docview/ui/call_queue.h"

#include <gtest/gtest.h>

#include <QEventLoop>
#include <QTest>
#include <QTimer>
#include <algorithm>
#include <string>
#include <thread>
#include <vector>

#include "docview/ui/qt_host.h"
#include "support/qt_test_main.h"

TEST(PostedCalls, RunInTheOrderInWhichTheyWerePosted) {
  QtHost host;
  std::string order;
  for (const char c : {'a', 'b', 'c'}) host.Post([&order, c] { order += c; });
  EXPECT_EQ(order, "") << "not before the loop turns";
  ASSERT_TRUE(QTest::qWaitFor([&] { return order.size() == 3; }));
  EXPECT_EQ(order, "abc");
}

TEST(PostedCalls, FromAnyThreadRunOnTheInterfaceThreadAndKeepEachThreadsOrder) {
  constexpr int kThreads = 4, kCalls = 2000;
  QtHost host;
  const auto interface = std::this_thread::get_id();
  std::vector<std::vector<int>> seen(kThreads);
  int elsewhere = 0, total = 0;
  std::vector<std::thread> threads;
  for (int thread = 0; thread < kThreads; ++thread)
    threads.emplace_back([&, thread] {
      for (int call = 0; call < kCalls; ++call)
        host.Post([&, thread, call] {
          elsewhere += std::this_thread::get_id() != interface;
          seen[static_cast<std::size_t>(thread)].push_back(call);
          ++total;
        });
    });
  EXPECT_TRUE(QTest::qWaitFor([&] { return total == kThreads * kCalls; }, 30000));
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(elsewhere, 0);
  for (const auto& calls : seen) EXPECT_TRUE(std::is_sorted(calls.begin(), calls.end()));
}

TEST(PostedCalls, ACallThatPostsItselfLetsTheLoopGoOn) {
  QtHost host;
  int calls = 0;
  bool stop = false;
  std::function<void()> again = [&] {
    ++calls;
    if (!stop) host.Post(again);
  };
  host.Post(again);
  bool fired = false;
  QTimer::singleShot(20, [&] { fired = true; });
  EXPECT_TRUE(QTest::qWaitFor([&] { return fired; }, 10000)) << "timers and painting starve";
  EXPECT_GT(calls, 1);
  stop = true;
}

TEST(PostedCalls, ALoopInsideACallGoesOnWithTheRestInOrder) {
  QtHost host;
  std::string order;
  QEventLoop inner;
  host.Post([&] {
    order += "[";
    host.Post([&] {
      order += "c";
      inner.quit();
    });
    inner.exec();
    order += "]";
  });
  host.Post([&] { order += "a"; });
  host.Post([&] { order += "b"; });
  ASSERT_TRUE(QTest::qWaitFor([&] { return order.size() == 5; }, 10000)) << order;
  EXPECT_EQ(order, "[abc]");
}

TEST(PostedCalls, OfAHostThatIsGoneAreDropped) {
  bool ran = false;
  {
    QtHost host;
    host.Post([&] { ran = true; });
  }
  QtHost other;
  bool turned = false;
  other.Post([&] { turned = true; });
  ASSERT_TRUE(QTest::qWaitFor([&] { return turned; }));
  EXPECT_FALSE(ran);
}

TEST(Timers, TickUntilTheyAreKilledAlsoByTheirOwnTick) {
  QtHost host;
  int ticks = 0;
  TimerId timer = 0;
  timer = host.SetTimer(1, [&] {
    if (++ticks == 3) host.KillTimer(timer);
  });
  bool later = false;
  ASSERT_TRUE(QTest::qWaitFor([&] { return ticks == 3; }, 10000));
  host.SetTimer(20, [&] { later = true; });
  ASSERT_TRUE(QTest::qWaitFor([&] { return later; }, 10000));
  EXPECT_EQ(ticks, 3);
  host.KillTimer(timer);
  host.KillTimer(12345);
}

TEST(Timers, GoOnInsideALoopThatTheirOwnTickRuns) {
  QtHost host;
  int ticks = 0;
  QEventLoop inner;
  host.SetTimer(1, [&] {
    ++ticks;
    if (ticks == 1) inner.exec();
    if (ticks == 4) inner.quit();
  });
  EXPECT_TRUE(QTest::qWaitFor([&] { return ticks >= 4 && !inner.isRunning(); }, 10000)) << ticks;
}
