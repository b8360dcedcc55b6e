// The simulated user's pending actions in a window. A test that ends before they have run has
// proved nothing, and fails.
//
// Shape    m_host.Post(MustRun([](...) { ... })): the action is pending from here until it begins.
// Threads  The test's only.
#pragma once

#include <gtest/gtest.h>

#include <utility>

inline int g_pendingActions = 0;

template <class Act>
auto MustRun(Act act) {
  ++g_pendingActions;
  return [act = std::move(act)](auto&&... what) {
    --g_pendingActions;
    return act(std::forward<decltype(what)>(what)...);
  };
}

// Collects at the end of each test. The program's main hands it to the test framework.
class PendingActions : public testing::EmptyTestEventListener {
 public:
  void OnTestEnd(const testing::TestInfo&) override {
    EXPECT_EQ(std::exchange(g_pendingActions, 0), 0)
        << "an action of the user never began, or began twice";
  }
};
