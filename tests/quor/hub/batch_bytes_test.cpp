// The memory of batches: used again immediately, given back, and never more than the batches need.
#include "quor/hub/batch_bytes.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>

namespace {

std::unique_ptr<BatchBytes> Filled(const std::shared_ptr<BatchMemory>& memory, std::size_t bytes,
                                   std::uint8_t value) {
  auto filled = std::make_unique<BatchBytes>(memory);
  for (std::size_t left = bytes; left > 0; left -= std::min<std::size_t>(left, 100))
    std::memset(filled->Append(std::min<std::size_t>(left, 100)), value,
                std::min<std::size_t>(left, 100));
  filled->Fit();
  return filled;
}

bool Holds(const BatchBytes& bytes, std::size_t size, std::uint8_t value) {
  const Bytes view = bytes.View();
  return view.size() == size &&
         std::all_of(view.begin(), view.end(), [value](std::uint8_t b) { return b == value; });
}

TEST(BatchBytes, TheMemoryThatWasGivenBackLastIsTakenNext) {
  const auto memory = std::make_shared<BatchMemory>();
  auto one = Filled(memory, 60000, 1);
  auto two = Filled(memory, 60000, 2);
  const std::uint8_t* const at = two->View().data();
  two.reset();
  EXPECT_EQ(Filled(memory, 60000, 3)->View().data(), at);
  EXPECT_TRUE(Holds(*one, 60000, 1));
}

TEST(BatchBytes, BlocksThatAreNotUsedGoButForAFew) {
  const auto memory = std::make_shared<BatchMemory>();
  std::vector<std::unique_ptr<BatchBytes>> many;
  for (std::uint8_t i = 0; i < 8 * BatchMemory::kPieces; ++i)
    many.push_back(Filled(memory, 65000, i));
  EXPECT_EQ(memory->Blocks(), 8u);
  for (std::uint8_t i = 0; i < many.size(); ++i) EXPECT_TRUE(Holds(*many[i], 65000, i));
  many.erase(many.begin(), many.begin() + 6 * BatchMemory::kPieces);
  EXPECT_EQ(memory->Blocks(), 2 + BatchMemory::kSpareBlocks);
  many.clear();
  EXPECT_EQ(memory->Blocks(), BatchMemory::kSpareBlocks);
}

TEST(BatchBytes, AShortBatchKeepsNoMoreThanItNeeds) {
  const auto memory = std::make_shared<BatchMemory>();
  std::vector<std::unique_ptr<BatchBytes>> many;
  for (int i = 0; i < 1000; ++i) many.push_back(Filled(memory, 500, 7));
  EXPECT_EQ(memory->Blocks(), 1u);
  EXPECT_TRUE(Holds(*many.front(), 500, 7));
}

TEST(BatchBytes, WhatIsLongerThanUsualAndWhatHasNoMemoryLieInTheHeap) {
  const auto memory = std::make_shared<BatchMemory>();
  const auto longer = Filled(memory, 900000, 5);
  EXPECT_TRUE(Holds(*longer, 900000, 5));
  EXPECT_LE(memory->Blocks(), 1u);
  EXPECT_TRUE(Holds(*Filled(nullptr, 70000, 6), 70000, 6));
}

TEST(BatchBytes, LiveLongerThanTheirHub) {
  auto memory = std::make_shared<BatchMemory>();
  const auto bytes = Filled(memory, 65000, 9);
  memory.reset();
  EXPECT_TRUE(Holds(*bytes, 65000, 9));
}

}  // namespace
