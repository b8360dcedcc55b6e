// Single messages, words and lies: what a reader makes of them, and how much it keeps.
#include "quor/relay/reader/relay_reader.h"

#include <gtest/gtest.h>

#include <utility>

namespace {

using namespace std::chrono_literals;

// Writes down what it is told.
class Notes final : public RelayUser {
 public:
  std::optional<std::uint64_t> Known(const RelayOrigin&) override { return known; }
  void OnBegin(std::uint64_t id, const RelayOrigin& origin, std::uint64_t serial) override {
    text += Of(id) + " begins " + origin.app + " at " + std::to_string(serial) + "\n";
  }
  void OnMessage(std::uint64_t id, const RelayMessage& message) override {
    text += Of(id) + " " + std::to_string(message.From()) + ".." +
            std::to_string(message.envelope.serial) + "\n";
  }
  void OnLost(std::uint64_t id, std::uint64_t lost) override {
    text += Of(id) + " lost " + std::to_string(lost) + "\n";
  }
  void OnEnd(std::uint64_t id) override { text += Of(id) + " ends\n"; }
  void OnTrouble(RelayTrouble trouble, const std::string& what) override {
    ++troubles[static_cast<std::size_t>(trouble)];
    last = what;
  }
  unsigned Troubles(RelayTrouble trouble) const {
    return troubles[static_cast<std::size_t>(trouble)];
  }
  std::string Take() { return std::exchange(text, {}); }

  std::string text, last;
  unsigned troubles[3] = {};
  std::optional<std::uint64_t> known;

 private:
  static std::string Of(std::uint64_t id) { return "#" + std::to_string(id); }
};

struct RelayReaderTest : testing::Test {
  Notes notes;
  RelayReader reader{notes};

  static Envelope Of(std::uint64_t from, std::uint64_t serial, std::string app = "shop") {
    Envelope envelope;
    envelope.instance = std::string(16, 'i');
    envelope.machine = "web1";
    envelope.app = std::move(app);
    envelope.serial = serial;
    envelope.delivered = serial - from;
    envelope.traces.assign(10, 1);
    return envelope;
  }
  void Take(const Envelope& envelope, RelayReader::Time now = 0ms) {
    reader.Take("web1", "shop", {envelope, {}, 0, 0}, now);
  }
  void Word(std::uint64_t serial, bool ended = false, RelayReader::Time now = 0ms) {
    reader.TakeWord("web1", {"web1", {{std::string(16, 'i'), "shop", serial, ended}}}, now);
  }
};

TEST_F(RelayReaderTest, ASourceBeginsAtItsFirstMessage) {
  Take(Of(1000, 1010));
  Take(Of(1010, 1011));
  Take(Of(990, 1000));
  EXPECT_EQ(notes.Take(), "#1 begins shop at 1000\n#1 1000..1010\n#1 1010..1011\n");
  EXPECT_EQ(reader.Counts(), (SourceCounts{11, 0, 0, 10})) << "too late for this reader, and shown";
}

TEST_F(RelayReaderTest, AHoleWaitsForTenSecondsAndIsToldInItsPlace) {
  Take(Of(0, 10), 1s);
  Take(Of(20, 30), 2s);
  Take(Of(40, 50), 5s);
  EXPECT_EQ(notes.Take(), "#1 begins shop at 0\n#1 0..10\n");
  EXPECT_EQ(reader.NextLook(), RelayReader::Time(12s));
  reader.Look(11'999ms);
  EXPECT_EQ(notes.Take(), "");
  reader.Look(12s);
  EXPECT_EQ(notes.Take(), "#1 lost 10\n#1 20..30\n");
  EXPECT_EQ(reader.NextLook(), RelayReader::Time(15s));
  Take(Of(30, 40), 13s);
  EXPECT_EQ(notes.Take(), "#1 30..40\n#1 40..50\n");
  Take(Of(10, 20), 14s);
  EXPECT_EQ(notes.Take(), "");
  EXPECT_EQ(reader.Counts(), (SourceCounts{40, 10, 0, 10}));
  EXPECT_FALSE(reader.NextLook());
}

TEST_F(RelayReaderTest, AHoleThatShrinksBySteadyArrivalsStillEndsInTime) {
  Take(Of(0, 10), 0s);
  Take(Of(100, 110), 0s);
  for (int at = 1; at < 9; ++at)
    Take(Of(100 - 2 * static_cast<unsigned>(at), 102 - 2 * static_cast<unsigned>(at)),
         std::chrono::seconds(at));
  notes.Take();
  reader.Look(10s);
  EXPECT_NE(notes.Take().find("#1 lost 74\n"), std::string::npos);
}

TEST_F(RelayReaderTest, AWordShowsThatTheLastMessagesAreMissing) {
  Take(Of(0, 10));
  Word(15, false, 1s);
  Word(17, true, 2s);
  reader.Look(10s);
  EXPECT_EQ(notes.Take(), "#1 begins shop at 0\n#1 0..10\n");
  reader.Look(11s);
  EXPECT_EQ(notes.Take(), "#1 lost 7\n#1 ends\n");
  Word(17, true, 20s);
  reader.Look(40s);
  EXPECT_EQ(notes.Take(), "");
}

TEST_F(RelayReaderTest, OfASourceThatOnlyWordsKnowALaterWordTellsTheLoss) {
  Word(100);
  Word(130, true, 1s);
  reader.Look(11s);
  EXPECT_EQ(notes.Take(), "#1 begins shop at 100\n#1 lost 30\n#1 ends\n");
}

TEST_F(RelayReaderTest, AMessageBehindAWordMayBeginEarlier) {
  Word(100);
  Take(Of(90, 95));
  Take(Of(95, 110));
  EXPECT_EQ(notes.Take(), "#1 begins shop at 90\n#1 90..95\n#1 95..110\n");
  EXPECT_FALSE(reader.NextLook());
}

TEST_F(RelayReaderTest, AnEarlierReadersEndIsTheBeginning) {
  notes.known = 50;
  Take(Of(40, 50));
  Take(Of(60, 70));
  reader.Look(10s);
  EXPECT_EQ(notes.Take(), "#1 begins shop at 50\n#1 lost 10\n#1 60..70\n");
  EXPECT_EQ(reader.Counts(), (SourceCounts{10, 10, 0, 0})) << "what it had is no duplicate";
}

TEST_F(RelayReaderTest, AMessageUnderAnotherSubjectIsDroppedAndTold) {
  reader.Take("web2", "shop", {Of(0, 10), {}, 0, 0}, 0s);
  reader.Take("web1", "bank", {Of(0, 10), {}, 0, 0}, 0s);
  reader.TakeWord("web2", {"web1", {}}, 0s);
  EXPECT_EQ(notes.Take(), "");
  EXPECT_EQ(notes.Troubles(RelayTrouble::WrongSubject), 3u);
  EXPECT_EQ(notes.last, "web2 has a word of web1");
  EXPECT_EQ(reader.Sources(), 0u);
}

TEST_F(RelayReaderTest, NumbersThatCannotBeChangeNothing) {
  Take(Of(0, 10));
  notes.Take();
  const std::uint64_t end = ~std::uint64_t{0};
  Take(Of(end - 10, end));
  Take(Of((std::uint64_t{1} << 56) - 1, std::uint64_t{1} << 56));
  Take(Of(36'000'000'011, 36'000'000'012));
  Envelope torn = Of(10, 20);
  torn.lost = end;
  Take(torn);
  torn.lost = 11;
  Take(torn);
  Word(end);
  Word(36'000'000'011);
  EXPECT_EQ(notes.Troubles(RelayTrouble::Torn), 7u);
  reader.Look(60s);
  Take(Of(10, 20), 60s);
  EXPECT_EQ(notes.Take(), "#1 10..20\n") << "the true source goes on";
}

TEST_F(RelayReaderTest, MessagesThatOverlapAreNotGivenOutTwice) {
  Take(Of(0, 10));
  Take(Of(20, 30));
  Take(Of(15, 25));
  Take(Of(25, 40));
  Take(Of(20, 29));
  EXPECT_EQ(notes.Troubles(RelayTrouble::Torn), 3u);
  Take(Of(10, 20));
  EXPECT_EQ(notes.Take(), "#1 begins shop at 0\n#1 0..10\n#1 10..20\n#1 20..30\n");
}

TEST_F(RelayReaderTest, MoreThanFourMebibytesAreNotHeldForAHole) {
  Take(Of(0, 1));
  for (std::uint64_t at = 2; at < 7; ++at) {
    Envelope envelope = Of(at, at + 1);
    envelope.traces.assign(1u << 20, 1);
    Take(envelope);
    EXPECT_LE(reader.HeldBytes(), std::size_t{4} << 20);
  }
  EXPECT_EQ(
      notes.Take(),
      "#1 begins shop at 0\n#1 0..1\n#1 lost 1\n#1 2..3\n#1 3..4\n#1 4..5\n#1 5..6\n#1 6..7\n");
  EXPECT_EQ(reader.HeldBytes(), 0u);
}

TEST(RelayReaderLimits, AllSourcesTogetherHaveABoundAndTheOldestHoleGivesWay) {
  Notes notes;
  RelayLimits limits;
  limits.held = 10'000;
  RelayReader reader(notes, limits);
  for (unsigned source = 0; source < 200; ++source)
    for (const std::uint64_t at : {std::uint64_t{0}, std::uint64_t{5}}) {
      Envelope envelope = RelayReaderTest::Of(at, at + 1);
      envelope.instance = std::string(16, static_cast<char>(source));
      envelope.traces.assign(1000, 1);
      reader.Take("web1", "shop", {envelope, {}, 0, 0}, std::chrono::milliseconds(source));
      ASSERT_LE(reader.HeldBytes(), limits.held);
    }
  const std::string text = notes.Take();
  EXPECT_NE(text.find("#1 lost 4\n"), std::string::npos);
  EXPECT_EQ(text.find("#200 lost 4\n"), std::string::npos);
}

TEST(RelayReaderLimits, MoreSourcesThanAreKnownForgetTheOldestWhichIsTold) {
  Notes notes;
  RelayLimits limits;
  limits.sources = 3;
  RelayReader reader(notes, limits);
  for (unsigned source = 0; source < 10; ++source) {
    Envelope envelope = RelayReaderTest::Of(0, 1);
    envelope.instance = std::string(16, static_cast<char>('a' + source));
    reader.Take("web1", "shop", {envelope, {}, 0, 0}, 0s);
    EXPECT_LE(reader.Sources(), 3u);
  }
  EXPECT_EQ(notes.Troubles(RelayTrouble::Forgotten), 7u);
  EXPECT_NE(notes.text.find("#7 ends\n"), std::string::npos);
  EXPECT_EQ(reader.Counts().delivered, 10u);
}

TEST(RelayReaderLimits, LossesAreBelievedUpToACredibleNumber) {
  Notes notes;
  RelayLimits limits;
  limits.lossesAtFirst = 100;
  limits.lossesPerSecond = 10;
  RelayReader reader(notes, limits);
  const auto word = [&reader](std::uint64_t serial, RelayReader::Time now) {
    reader.TakeWord("web1", {"web1", {{std::string(16, 'i'), "shop", serial, false}}}, now);
  };
  word(1, 0s);
  word(101, 0s);
  reader.Look(10s);
  EXPECT_EQ(notes.Take(), "#1 begins shop at 1\n#1 lost 100\n");
  word(301, 10s);
  EXPECT_EQ(notes.Troubles(RelayTrouble::Torn), 1u);
  word(190, 10s);
  reader.Look(20s);
  EXPECT_EQ(notes.Take(), "#1 lost 89\n");
}

}  // namespace
