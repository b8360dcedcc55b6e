// The simulated user's pending actions in a window. A test that ends before they have run has
// proved nothing, and fails.
//
// Shape    m_host.Post(Owed([](...) { ... })): the action is owed from here until it begins.
// Threads  The test's only.
#pragma once

#include <gtest/gtest.h>

#include <utility>

inline int g_actsOwed = 0;

template <class Act>
auto Owed(Act act) {
  ++g_actsOwed;
  return [act = std::move(act)](auto&&... what) {
    --g_actsOwed;
    return act(std::forward<decltype(what)>(what)...);
  };
}

// Collects at the end of each test. The program's main hands it to the test framework.
class OwedActs : public testing::EmptyTestEventListener {
 public:
  void OnTestEnd(const testing::TestInfo&) override {
    EXPECT_EQ(std::exchange(g_actsOwed, 0), 0) << "a person's act never began, or began twice";
  }
};
