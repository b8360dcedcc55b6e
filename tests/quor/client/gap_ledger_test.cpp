// Which sources are forgotten when there are too many.
#include "quor/client/stream/gap_ledger.h"

#include <gtest/gtest.h>

#include <map>

namespace {

class GapLedgerTest : public testing::Test {
 protected:
  static std::string Instance(std::size_t source) {
    std::string instance = std::to_string(source);
    instance.resize(16);
    return instance;
  }
  // The stream's only line about the source, which had made `began` traces when the stream began,
  // and nothing since. Gives the gap before it.
  std::uint64_t Hear(std::size_t source, std::uint64_t began) {
    quor::wire::Ledger ledger;
    auto* const word = ledger.add_sources();
    word->set_instance(Instance(source));
    word->set_serial(began);
    std::uint64_t gap = 0;
    std::string why;
    EXPECT_TRUE(m_ledger.Take(ledger, &gap, &why)) << why;
    return gap;
  }
  void Forget(std::size_t source) {
    quor::wire::Ledger ledger;
    auto* const word = ledger.add_forgotten_sources();
    word->set_instance(Instance(source));
    std::uint64_t gap = 0;
    std::string why;
    EXPECT_TRUE(m_ledger.Take(ledger, &gap, &why)) << why;
  }
  // As many sources as are kept, each with five traces, in the order of their numbers.
  void HearAll() {
    m_ledger.BeginStream("run");
    for (std::size_t source = 0; source < kMost; ++source) Hear(source, 5);
  }

  static constexpr std::size_t kMost = GapLedger::kSourcesMax;
  GapLedger m_ledger;
};

TEST_F(GapLedgerTest, OfTooManySourcesTheHalfWithoutNewsForLongestIsForgotten) {
  HearAll();
  Hear(0, 5);      // it has news again
  Hear(kMost, 5);  // one too many
  m_ledger.BeginStream("run");
  // All traces of a forgotten source are a gap.
  EXPECT_EQ(Hear(0, 7), 2u);
  EXPECT_EQ(Hear(1, 7), 7u);
  EXPECT_EQ(Hear(kMost / 2 - 1, 7), 7u);
  EXPECT_EQ(Hear(kMost / 2 + 1, 7), 2u);
  EXPECT_EQ(Hear(kMost - 1, 7), 2u);
  EXPECT_EQ(Hear(kMost, 7), 2u);
}

TEST_F(GapLedgerTest, SourcesThatTheServiceHasForgottenMakeRoomFirst) {
  HearAll();
  for (std::size_t source = kMost / 2; source < kMost; ++source) Forget(source);
  Hear(kMost, 5);
  m_ledger.BeginStream("run");
  EXPECT_EQ(Hear(0, 7), 2u);
  EXPECT_EQ(Hear(kMost / 2 - 1, 7), 2u);
  EXPECT_EQ(Hear(kMost - 1, 7), 7u);
}

TEST_F(GapLedgerTest, ManyLinesThatAreEachPossibleDoNotMakeASumWrap) {
  m_ledger.BeginStream("run");
  m_ledger.ExpectWithheld();
  bool taken = true;
  std::string why;
  std::size_t lines = 0;
  for (; taken && lines < 300; ++lines) {
    quor::wire::Ledger ledger;
    auto* const word = ledger.add_sources();
    word->set_instance(Instance(lines));
    word->set_serial(std::uint64_t{1} << 56);
    word->set_withheld(std::uint64_t{1} << 56);
    std::uint64_t gap = 0;
    const std::uint64_t before = m_ledger.Withheld();
    taken = m_ledger.Take(ledger, &gap, &why);
    EXPECT_GE(m_ledger.Withheld(), before);
  }
  EXPECT_EQ(lines, 17u);
  EXPECT_EQ(why, "the ledgers count more than there can be");
}

TEST_F(GapLedgerTest, OfAClusterASourceBeginsWithItsFirstTraceThatIsThere) {
  m_ledger.BeginStream("one", true);
  EXPECT_EQ(Hear(1, 100), 0u);
  m_ledger.BeginStream("two", true);
  EXPECT_EQ(Hear(1, 100), 0u);
  EXPECT_EQ(Hear(2, 700), 0u) << "what came before is not in the cluster";
  m_ledger.BeginStream("three", true);
  EXPECT_EQ(Hear(2, 705), 5u) << "it was known, and these are missing";
}

TEST_F(GapLedgerTest, TheNextStreamIsToldOfTheSourcesThatHadNewsLast) {
  m_ledger.BeginStream("one", true);
  for (std::size_t source = 1; source <= 5; ++source) Hear(source, 10 * source);
  Hear(1, 10);
  quor::wire::Subscribe all, some;
  m_ledger.PutKnown(5, &all);
  EXPECT_EQ(all.known_size(), 5);
  m_ledger.PutKnown(2, &some);
  ASSERT_EQ(some.known_size(), 2);
  std::map<std::string, std::uint64_t> known;
  for (const auto& line : some.known()) known[line.instance()] = line.serial();
  EXPECT_EQ(known, (std::map<std::string, std::uint64_t>{{Instance(1), 10}, {Instance(5), 50}}));
}

}  // namespace
