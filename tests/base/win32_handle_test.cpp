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
  const HANDLE go = CreateEvent();
  std::atomic<bool> ran = false;
  const HANDLE thread = BeginThread([go, &ran] {
    go->Wait(kDeadlineMs);
    ran = true;
  });
  EXPECT_FALSE(thread->IsSet());
  go->Set();
  ASSERT_TRUE(thread->Wait(kDeadlineMs));
  EXPECT_TRUE(ran);
}

TEST(Win32Handle, WhatTheBodyHeldIsGoneWhenTheHandleIsSignalled) {
  auto held = std::make_shared<int>(1);
  const std::weak_ptr<int> watch = held;
  const HANDLE thread = BeginThread([held] { EXPECT_EQ(*held, 1); });
  held.reset();
  ASSERT_TRUE(thread->Wait(kDeadlineMs));
  EXPECT_TRUE(watch.expired());
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
