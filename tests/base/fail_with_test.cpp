#include "base/fail_with.h"

#include <gtest/gtest.h>

#include <memory>
#include <optional>

namespace {

TEST(FailWith, GivesFalseAndLeavesTheReason) {
  std::string why = "before";
  EXPECT_FALSE(FailWith(&why, "no room"));
  EXPECT_EQ(why, "no room");
}

TEST(FailWith, GivesFalseToACallerWhoWantsNoReason) {
  EXPECT_FALSE(FailWith(nullptr, "no room"));
  EXPECT_FALSE(FailOn(nullptr, "/a"));
}

TEST(FailWith, GivesWhatIsNothingToTheCaller) {
  const auto noPointer = [](std::string* why) -> std::unique_ptr<int> {
    return FailWith(why, "a", nullptr);
  };
  const auto noValue = [](std::string* why) -> std::optional<bool> {
    return FailWith(why, "b", std::nullopt);
  };
  std::string why;
  EXPECT_EQ(noPointer(&why), nullptr);
  EXPECT_EQ(why, "a");
  EXPECT_FALSE(noValue(&why).has_value());
  EXPECT_EQ(why, "b");
  EXPECT_EQ(FailWith(&why, "c", 7), 7);
  EXPECT_EQ(why, "c");
}

TEST(FailWith, TheSystemsReasonIsThatOfTheLastErrorOrOfTheGivenOne) {
  errno = EACCES;
  EXPECT_EQ(SystemReason(), "Permission denied");
  EXPECT_EQ(SystemReason(ENOENT), "No such file or directory");
}

TEST(FailWith, OnAPathItNamesThePathAndTheLastError) {
  std::string why;
  errno = ENOSPC;
  EXPECT_FALSE(FailOn(&why, "/a/b"));
  EXPECT_EQ(why, "/a/b: No space left on device");
}

}  // namespace
