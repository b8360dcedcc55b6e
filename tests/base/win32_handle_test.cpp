#include "base/win32_handle.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>

namespace {

constexpr unsigned kDeadlineMs = 10000;

TEST(Win32Handle, AnEventIsUnsignalledUntilItIsSetAndStaysSetThen) {
  const HANDLE event = CreateEvent();
  EXPECT_FALSE(event->IsSet());
  EXPECT_FALSE(event->Wait(0));
  event->Set();
  EXPECT_TRUE(event->Wait(0));
  EXPECT_TRUE(event->Wait(0));
  EXPECT_TRUE(event->IsSet());
}

TEST(Win32Handle, AWaitEndsAtItsLimit) {
  const auto start = std::chrono::steady_clock::now();
  EXPECT_FALSE(CreateEvent()->Wait(20));
  EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(20));
}

TEST(Win32Handle, AThreadsHandleIsSignalledOnlyWhenItsBodyHasReturned) {
  const HANDLE begun = CreateEvent(), go = CreateEvent();
  std::atomic<bool> ran = false;
  const HANDLE thread = BeginThread([begun, go, &ran] {
    begun->Set();
    go->Wait(kDeadlineMs);
    ran = true;
  });
  ASSERT_TRUE(begun->Wait(kDeadlineMs));
  EXPECT_FALSE(thread->Wait(20)) << "its body is at work";
  go->Set();
  ASSERT_TRUE(thread->Wait(kDeadlineMs));
  EXPECT_TRUE(ran);
}

TEST(Win32Handle, WhatTheBodyHeldIsGoneWhenTheHandleIsSignalled) {
  const HANDLE going = CreateEvent(), go = CreateEvent();
  const auto hold = [&] {
    return std::shared_ptr<int>(new int(1), [going, go](int* held) {
      going->Set();
      go->Wait(kDeadlineMs);
      delete held;
    });
  };
  const HANDLE thread = BeginThread([held = hold()] { EXPECT_EQ(*held, 1); });
  ASSERT_TRUE(going->Wait(kDeadlineMs));
  EXPECT_FALSE(thread->Wait(20)) << "what it held is not gone yet";
  go->Set();
  EXPECT_TRUE(thread->Wait(kDeadlineMs));
}

TEST(Win32Handle, ClosingTheHandleLeavesTheThreadRunning) {
  const HANDLE go = CreateEvent();
  const HANDLE done = CreateEvent();
  AutoWin32Handle_t thread;
  thread = BeginThread([go, done] {
    go->Wait(kDeadlineMs);
    done->Set();
  });
  EXPECT_TRUE(static_cast<bool>(thread));
  thread.Close();
  EXPECT_FALSE(static_cast<bool>(thread));
  go->Set();
  EXPECT_TRUE(done->Wait(kDeadlineMs));
}

TEST(Win32Handle, TheOwnerClosesItsHandleAtItsEndAndWhenItTakesAnother) {
  std::weak_ptr<WaitObject> first, second;
  {
    AutoWin32Handle_t owner;
    owner = CreateEvent();
    first = owner.Get();
    owner = CreateEvent();
    second = owner.Get();
    EXPECT_TRUE(first.expired());
    EXPECT_FALSE(second.expired());
  }
  EXPECT_TRUE(second.expired());
}

TEST(Win32Handle, AnEventThatSomeoneStillHoldsOutlivesItsOwner) {
  AutoWin32Handle_t owner;
  owner = CreateEvent();
  const HANDLE leftBehind = owner.Get();
  owner.Close();
  leftBehind->Set();
  EXPECT_TRUE(leftBehind->IsSet());
}

}  // namespace
