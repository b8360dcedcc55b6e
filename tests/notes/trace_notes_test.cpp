// Marks in memory follow their traces.
#include "notes/trace_notes.h"

#include <gtest/gtest.h>

#include <map>
#include <random>
#include <vector>

namespace {

// Only addresses count: nothing reads the records.
const std::uint8_t* At(std::uint64_t number) {
  static const std::vector<std::uint8_t> memory(100'000);
  return memory.data() + number;
}

TEST(TraceNotes, AMarkAndANoteStandAtTheirTraceUntilBothAreTakenAway) {
  TraceNotes notes;
  notes.Mark(7, At(7), 3);
  notes.SetNote(7, At(7), "why?");
  EXPECT_EQ(notes.Of(At(7)).colour, 3);
  EXPECT_EQ(notes.Of(At(7)).note, "why?");
  EXPECT_EQ(notes.Of(At(8)).colour, 0);
  EXPECT_NE(notes.Of(At(8)).note.data(), nullptr);
  notes.Mark(7, At(7), 0);
  EXPECT_EQ(notes.size(), 1u);
  notes.SetNote(7, At(7), "");
  EXPECT_TRUE(notes.empty());
  EXPECT_EQ(notes.Next(0), std::nullopt);
}

TEST(TraceNotes, NextAndPreviousGoThroughAllInOrder) {
  TraceNotes notes;
  for (const std::uint64_t number : {30u, 10u, 20u}) notes.Mark(number, At(number), 1);
  EXPECT_EQ(notes.Next(0), 10u);
  EXPECT_EQ(notes.Next(10), 20u);
  EXPECT_EQ(notes.Next(29), 30u);
  EXPECT_EQ(notes.Next(30), std::nullopt);
  EXPECT_EQ(notes.Previous(10), std::nullopt);
  EXPECT_EQ(notes.Previous(11), 10u);
  EXPECT_EQ(notes.Previous(~0ull), 30u);
}

TEST(TraceNotes, WhatAFilterHasBeenGivenNeverChanges) {
  TraceNotes notes;
  notes.SetNote(1, At(1), "first");
  const auto shared = notes.Shared();
  const WhereMark before = shared->Of(At(1));
  notes.SetNote(1, At(1), "second");
  notes.Mark(2, At(2), 5);
  EXPECT_EQ(before.note, "first");
  EXPECT_EQ(shared->Of(At(1)).note, "first");
  EXPECT_EQ(shared->Of(At(2)).colour, 0);
  EXPECT_EQ(notes.Shared()->Of(At(2)).colour, 5);
  notes.Clear();
  EXPECT_EQ(shared->Of(At(1)).note, "first");
}

// A monitor: traces come behind, and are trimmed and cleared at the front. An address that becomes
// free is used again by another trace.
TEST(TraceNotes, FollowRandomTrimsAndClears) {
  std::mt19937 random(7);
  TraceNotes notes;
  std::map<std::uint64_t, unsigned> plain;
  std::uint64_t first = 0, end = 0;
  const auto record = [](std::uint64_t number) { return At(number % 512); };
  for (int step = 0; step < 20'000; ++step) {
    switch (random() % 8) {
      case 0:
      case 1:
        end += random() % 40;
        if (end - first > 500) first = end - 500;
        break;
      case 2:
        first += random() % (end - first + 1);
        break;
      case 3:
        if (random() % 50 == 0) first = end;
        break;
      default:
        if (end == first) break;
        const std::uint64_t number = first + random() % (end - first);
        const unsigned colour = random() % 10;
        notes.Mark(number, record(number), static_cast<std::uint8_t>(colour));
        plain[number] = colour;
        if (colour == 0) plain.erase(number);
    }
    notes.ForgetBefore(first);
    plain.erase(plain.begin(), plain.lower_bound(first));
    ASSERT_EQ(notes.size(), plain.size());
    const std::uint64_t from = first + random() % 500;
    const auto next = plain.upper_bound(from);
    ASSERT_EQ(notes.Next(from), next == plain.end() ? std::nullopt : std::optional(next->first));
    for (std::uint64_t number = first; number < end && step % 16 == 0; ++number)
      ASSERT_EQ(notes.Of(record(number)).colour, plain.count(number) ? plain[number] : 0u);
  }
}

}  // namespace
