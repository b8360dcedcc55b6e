#include "workers/piece_threads.h"

#include <gtest/gtest.h>

#include <memory>
#include <numeric>
#include <set>
#include <stdexcept>
#include <thread>
#include <vector>

#include "workers/ordered_results.h"

namespace {

constexpr std::chrono::seconds kLong(20);
constexpr std::chrono::milliseconds kLongMs = kLong;

class Squares final : public PieceThreads {
 public:
  explicit Squares(std::size_t pieces) : PieceThreads(pieces) {}

  std::vector<std::size_t> TakeAll() {
    std::vector<std::size_t> all;
    while (all.size() < Count()) {
      const auto next = results.Take(std::chrono::steady_clock::now() + kLong);
      if (!next) break;
      all.push_back(*next);
    }
    return all;
  }

  OrderedResults<std::size_t> results;
  std::size_t throwAt = ~std::size_t{0};
  std::atomic<bool> hold = false, failureSeen = false;
  std::atomic<std::size_t> begun = 0;

 private:
  struct Squaring final : Hand {
    explicit Squaring(Squares& squares) : all(squares) {}
    void Do(std::size_t piece) override {
      ++all.begun;
      while (all.hold && !all.IsStopped()) std::this_thread::yield();
      if (piece == all.throwAt) throw std::runtime_error("no memory");
      // The later pieces of each few are done first.
      for (std::size_t turn = 0; turn < (7 - piece % 7) * 10; ++turn) std::this_thread::yield();
      all.results.Put(piece, piece * piece);
    }
    Squares& all;
  };
  std::unique_ptr<Hand> MakeHand() override { return std::make_unique<Squaring>(*this); }
  void OnFailure() override { failureSeen = true; }
};

TEST(PieceThreads, ResultsComeInTheOrderOfThePiecesHoweverManyThreadsThereAre) {
  for (const std::size_t threads : {1U, 2U, 5U, 16U}) {
    const auto work = std::make_shared<Squares>(300);
    EXPECT_EQ(PieceThreads::Start(work, threads), threads);
    const std::vector<std::size_t> all = work->TakeAll();
    ASSERT_EQ(all.size(), 300U);
    for (std::size_t i = 0; i < all.size(); ++i) EXPECT_EQ(all[i], i * i);
    EXPECT_TRUE(work->WaitForEnd(kLongMs));
    EXPECT_EQ(work->begun, 300U) << "each piece once";
    EXPECT_FALSE(work->HasFailed());
  }
}

TEST(PieceThreads, NoMoreThreadsThanPieces) {
  const auto work = std::make_shared<Squares>(3);
  EXPECT_EQ(PieceThreads::Start(work, 8), 3U);
  EXPECT_EQ(work->TakeAll(), (std::vector<std::size_t>{0, 1, 4}));
  const auto nothing = std::make_shared<Squares>(0);
  EXPECT_EQ(PieceThreads::Start(nothing, 8), 0U);
  EXPECT_TRUE(nothing->WaitForEnd({}));
}

TEST(PieceThreads, AStoppedWorkBeginsNoFurtherPiece) {
  const auto work = std::make_shared<Squares>(1000);
  work->hold = true;
  PieceThreads::Start(work, 2);
  while (work->begun < 2) std::this_thread::yield();
  EXPECT_FALSE(work->WaitForEnd(std::chrono::milliseconds(1))) << "both hold";
  work->Stop();
  EXPECT_TRUE(work->WaitForEnd(kLongMs));
  EXPECT_EQ(work->begun, 2U);
}

TEST(PieceThreads, AWorkThatNobodyWaitsForGoesWithItsLastThread) {
  std::weak_ptr<Squares> held;
  {
    const auto work = std::make_shared<Squares>(1000);
    held = work;
    work->hold = true;
    PieceThreads::Start(work, 3);
    while (work->begun < 3) std::this_thread::yield();
  }
  if (const auto work = held.lock())
    work->Stop();
  else
    FAIL() << "it went while its threads still used it";
  const auto late = std::chrono::steady_clock::now() + kLong;
  while (!held.expired() && std::chrono::steady_clock::now() < late) std::this_thread::yield();
  EXPECT_TRUE(held.expired());
}

TEST(PieceThreads, APieceThatFailsEndsTheWorkAndTheResultsBeforeItAreThere) {
  const auto work = std::make_shared<Squares>(1000);
  work->throwAt = 5;
  PieceThreads::Start(work, 1);
  EXPECT_TRUE(work->WaitForEnd(kLongMs));
  EXPECT_TRUE(work->HasFailed());
  EXPECT_TRUE(work->failureSeen);
  for (std::size_t i = 0; i < 5; ++i) EXPECT_EQ(work->results.Take(), i * i);
  EXPECT_EQ(work->results.Take(), std::nullopt);
}

TEST(OrderedResults, OnlyTheOneThatIsWaitedForIsReported) {
  OrderedResults<char> results;
  EXPECT_FALSE(results.Put(1, 'b'));
  EXPECT_EQ(results.Take(), std::nullopt);
  EXPECT_TRUE(results.Put(0, 'a'));
  EXPECT_FALSE(results.Put(3, 'd'));
  EXPECT_EQ(results.Take(), 'a');
  EXPECT_EQ(results.Take(), 'b');
  EXPECT_EQ(results.Taken(), 2U);
  EXPECT_EQ(results.Take(std::chrono::steady_clock::now() + std::chrono::milliseconds(1)),
            std::nullopt);
  EXPECT_TRUE(results.Put(2, 'c'));
}

}  // namespace
