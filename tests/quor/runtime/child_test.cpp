// What a traced child of these tests finds wrong reaches the test.
#include <gtest/gtest-spi.h>

#include "support/traced_child.h"

namespace {

int FailTwice(TracedChild&) {
  EXPECT_EQ(1 + 1, 2);
  EXPECT_EQ(1 + 1, 3) << "first";
  EXPECT_EQ(1 + 1, 4) << "second";
  return 0;
}

TEST(TracedChildTest, AFailureInTheChildIsTheTestsOwn) {
  EXPECT_NONFATAL_FAILURE_ON_ALL_THREADS(
      {
        TracedChild child(FailTwice);
        child.Wait();
      },
      "2 failures in the child, the first: ");
  // Also of one that is killed because the test goes on without it.
  EXPECT_NONFATAL_FAILURE_ON_ALL_THREADS(
      {
        TracedChild child([](TracedChild& self) {
          FailTwice(self);
          self.Report(1);
          self.AwaitGo();
          return 0;
        });
        child.Reported();
      },
      "first");
}

TEST(TracedChildTest, AChildWithoutAFailureLeavesTheTestAlone) {
  TracedChild child([](TracedChild&) {
    EXPECT_TRUE(true);
    return 7;
  });
  EXPECT_EQ(child.Wait(), 7);
}

}  // namespace
