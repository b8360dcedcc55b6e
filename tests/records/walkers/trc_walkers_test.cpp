// Several walkers over one file, beside a walk by one.
#include "records/walkers/trc_walkers.h"

#include <gtest/gtest.h>

#include <random>
#include <stdexcept>

#include "records/walkers/trc_guess.h"
#include "support/noted_walk.h"
#include "support/trc_image.h"

namespace {

class Random {
 public:
  explicit Random(unsigned seed) : m_engine(seed) {}
  std::size_t Below(std::size_t bound) { return m_engine() % bound; }
  bool OneIn(std::size_t bound) { return Below(bound) == 0; }
  std::string Bytes(std::size_t count) {
    std::string bytes;
    for (std::size_t i = 0; i < count; ++i)
      bytes += static_cast<char>(OneIn(3) ? 10 + Below(2) : Below(256));
    return bytes;
  }

 private:
  std::mt19937 m_engine;
};

std::string RecordsOnly(const TrcImage& image) {
  return image.Bytes().substr(kTrcHeaderBytes);
}

// Names, traces and stray bytes; texts that hold records, whole files and bytes like tags.
TrcImage RandomImage(Random& random, std::size_t records, int depth = 0) {
  TrcImage image;
  for (std::size_t i = 0; i < records; ++i) {
    if (random.OneIn(6))
      image.Name(static_cast<NameId>(random.Below(9)), random.Bytes(random.Below(20)));
    if (random.OneIn(25)) image.Raw(static_cast<int>(random.Below(256)));
    TraceFields fields;
    fields.text = random.Bytes(random.Below(60));
    fields.stack = random.OneIn(3) ? "/usr/bin/orders+0x12ab\norders+0x1\n" : "";
    if (depth < 2 && random.OneIn(8))
      fields.text = RandomImage(random, random.Below(12), depth + 1).Bytes();
    if (depth < 2 && random.OneIn(8))
      fields.stack = RecordsOnly(RandomImage(random, random.Below(40), depth + 1));
    if (random.OneIn(10)) fields.date = static_cast<std::uint32_t>(random.Below(1u << 30));
    if (fields.text.size() < kLongestText && fields.stack.size() < kLongestText)
      image.Trace(fields);
  }
  return image;
}

void ExpectAsAlone(Bytes file, const std::string& what) {
  const NotedWalk alone = WalkedAlone(file);
  for (const unsigned count : {1u, 2u, 3u, 8u})
    for (const std::uint64_t chunk : {1, 7, 64, 500, 3000, 100000})
      ASSERT_TRUE(WalkedTogether(file, {count, chunk}) == alone)
          << what << ": " << count << " walkers, chunks of " << chunk;
}

TEST(TrcWalkers, FindWhatOneFindsInFilesOfAnyContent) {
  for (unsigned seed = 0; seed < 60; ++seed) {
    Random random(seed);
    const TrcImage image = RandomImage(random, 5 + random.Below(60));
    ExpectAsAlone(image.Guarded().View(), "seed " + std::to_string(seed));
  }
}

TEST(TrcWalkers, FindWhatOneFindsInAFileThatIsCutAtAnyByte) {
  Random random(4711);
  const TrcImage whole = RandomImage(random, 9);
  for (std::size_t size = 0; size <= whole.Size(); size += 1 + random.Below(5)) {
    TrcImage image = whole;
    image.Cut(whole.Size() - size);
    const GuardedBytes bytes = image.Guarded();
    const NotedWalk alone = WalkedAlone(bytes.View());
    const bool holds = random.OneIn(20);
    for (const std::uint64_t chunk : {30, 200, 1000})
      ASSERT_TRUE(WalkedTogether(bytes.View(), {3, chunk}, holds) == alone)
          << size << ", " << chunk;
  }
}

TEST(TrcWalkers, FindWhatOneFindsInBytesWithoutARecord) {
  Random random(8);
  for (int round = 0; round < 30; ++round) {
    const GuardedBytes bytes(TrcImage().Bytes() + random.Bytes(random.Below(4000)));
    ExpectAsAlone(bytes.View(), "round " + std::to_string(round));
  }
  ExpectAsAlone(GuardedBytes("").View(), "an empty file");
  ExpectAsAlone(GuardedBytes("TRC Version 3.1").View(), "a header without its NUL");
}

TEST(TrcWalkers, AGuessWithinATextThatHoldsAWholeFileIsNotBelieved) {
  TrcImage inner;
  for (int i = 0; i < 900; ++i) inner.Trace("within");
  TrcImage image;
  for (int i = 0; i < 40; ++i) image.Trace({.text = inner.Bytes(), .stack = "x"});
  const GuardedBytes bytes = image.Guarded();
  const std::uint64_t middle = bytes.View().size() / 2;
  const auto guess = GuessTrcRecord(bytes.View(), middle, bytes.View().size());
  ASSERT_TRUE(guess && *guess < middle + 60) << "the guess is to go wrong";
  ExpectAsAlone(bytes.View(), "texts with files");
}

TEST(TrcWalkers, AValidFileIsWalkedOnceByAllOfThem) {
  TrcImage image;
  Random random(3);
  for (int i = 0; i < 4000; ++i) {
    if (random.OneIn(50)) image.Name(7, "name");
    image.Trace({.text = std::string(random.Below(300), 'x'), .stack = "a\nb\nc\v\n"});
  }
  const GuardedBytes bytes = image.Guarded();
  NotedParts parts;
  parts.held = 8;
  parts.heldFor = std::chrono::seconds(20);
  WalkTrcTogether(bytes.View(), {4, 20000}, parts);
  EXPECT_GT(parts.taken, 20);
  EXPECT_LE(parts.asked, bytes.View().size() + 40 * 45);
}

// Each chunk begins in a text of records, so that every guess is wrong.
TEST(TrcWalkers, NoByteIsWalkedMoreThanTwiceWhateverTheFileHolds) {
  TrcImage inner;
  for (int i = 0; i < 60; ++i) inner.Trace("within");
  TrcImage image;
  for (int i = 0; i < 1000; ++i) image.Trace({.text = inner.Bytes()});
  const GuardedBytes bytes = image.Guarded();
  for (const unsigned count : {2u, 8u}) {
    NotedParts parts;
    // As many chunks as may be walked beyond the first, which waits for them.
    parts.held = static_cast<int>(2 * count);
    parts.heldFor = std::chrono::seconds(20);
    WalkTrcTogether(bytes.View(), {count, bytes.View().size() / (2 * count)}, parts);
    EXPECT_LE(parts.asked, 2 * bytes.View().size());
    EXPECT_GT(parts.asked, bytes.View().size() * 7 / 5) << "hardly any guess was wrong";
  }
}

TEST(TrcWalkers, ACancelledWalkHasTheRecordsUpToWhereItReached) {
  TrcImage image;
  for (int i = 0; i < 60000; ++i) image.Trace("up");
  const GuardedBytes bytes = image.Guarded();
  const NotedWalk alone = WalkedAlone(bytes.View());
  for (const unsigned count : {1u, 2u, 8u}) {
    NotedParts parts;
    parts.cancelAt = bytes.View().size() / 2;
    const std::uint64_t reached =
        WalkTrcTogether(bytes.View(), {count, count == 1 ? ~std::uint64_t{0} : 150000}, parts);
    ASSERT_LT(reached, bytes.View().size());
    ASSERT_GT(reached, kTrcHeaderBytes);
    const std::uint64_t traces = (reached - kTrcHeaderBytes) / 47;
    ASSERT_EQ(parts.noted.records.size(), traces) << count;
    EXPECT_TRUE(
        std::equal(parts.noted.records.begin(), parts.noted.records.end(), alone.records.begin()));
  }
}

// Fails at the piece behind this position.
class FailingParts final : public TrcParts {
 public:
  explicit FailingParts(std::uint64_t behind) : m_behind(behind) {}
  std::unique_ptr<TrcPart> NewPart(std::uint64_t from, std::uint64_t) override {
    if (from >= m_behind) throw std::runtime_error("no memory");
    return std::make_unique<NotedPart>();
  }
  void Take(TrcPart&) override {}
  bool OnProgress(std::uint64_t) override { return true; }

 private:
  const std::uint64_t m_behind;
};

TEST(TrcWalkers, AFailureOfAnyWalkerIsThatOfTheWalk) {
  TrcImage image;
  for (int i = 0; i < 5000; ++i) image.Trace("up");
  const GuardedBytes bytes = image.Guarded();
  for (const std::uint64_t behind : {0, 100000, 200000}) {
    FailingParts parts(behind);
    EXPECT_THROW(WalkTrcTogether(bytes.View(), {4, 10000}, parts), std::runtime_error);
  }
}

TEST(TrcWalkers, ASmallFileHasOneAndALargeOneAtMostEight) {
  EXPECT_EQ(TrcWalkers::For(100000).count, 1u);
  EXPECT_LE(TrcWalkers::For(0xFFFFFFFF).count, TrcWalkers::kMost);
  EXPECT_LE(TrcWalkers::For(0xFFFFFFFF).chunkBytes, std::uint64_t{64} << 20);
}

TEST(TrcGuess, IsATraceWithADateThatOthersFollow) {
  TrcImage image;
  image.Trace({.text = "first"}).Name(3, "web");
  const std::uint64_t second = image.Size();
  image.Trace({.text = "\n\v\n\v", .stack = "a\nb\n"});
  const GuardedBytes bytes = image.Guarded();
  EXPECT_EQ(GuessTrcRecord(bytes.View(), 16, image.Size()), 16u);
  EXPECT_EQ(GuessTrcRecord(bytes.View(), 17, image.Size()), second) << "a name is passed over";
  EXPECT_EQ(GuessTrcRecord(bytes.View(), second + 1, image.Size()), std::nullopt);
  EXPECT_EQ(GuessTrcRecord(bytes.View(), 17, second), std::nullopt) << "not behind the limit";
}

}  // namespace
