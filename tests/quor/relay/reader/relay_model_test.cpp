// Streams that delay, double, reorder and drop messages, from seeds: what is given out and what is
// told as lost is all that there was, in the order of serials.
#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <random>

#include "quor/relay/reader/relay_reader.h"

namespace {

using namespace std::chrono_literals;
using Time = RelayReader::Time;

constexpr std::string_view kMachine = "web1";

Envelope MessageOf(const std::string& app, std::uint64_t serial, std::uint64_t delivered,
                   std::uint64_t lost) {
  Envelope envelope;
  envelope.instance = std::string(16, app.back());
  envelope.machine = kMachine;
  envelope.app = app;
  envelope.pid = 7;
  envelope.serial = serial;
  envelope.delivered = delivered;
  envelope.lost = lost;
  envelope.traces.assign(delivered * 70, 1);
  return envelope;
}

// Follows what the reader says, and fails where it contradicts what was sent.
class Model final : public RelayUser {
 public:
  struct Seen {
    std::uint64_t began = 0, at = 0, delivered = 0, lost = 0, toldInside = 0;
    bool open = false;
    std::vector<std::pair<std::uint64_t, std::uint64_t>> given;  // where, and how many traces
    std::map<std::uint64_t, std::uint64_t> came;                 // from -> to, not given out yet
  };
  std::optional<std::uint64_t> Known(const RelayOrigin& origin) override {
    const auto known = knownAt.find(origin.app);
    if (known == knownAt.end()) return {};
    return known->second;
  }
  void OnBegin(std::uint64_t id, const RelayOrigin& origin, std::uint64_t serial) override {
    EXPECT_FALSE(apps.contains(id));
    apps[id] = origin.app;
    Seen& seen = all[origin.app];
    EXPECT_FALSE(seen.open);
    if (seen.at == 0) seen.began = serial;
    if (seen.at != 0) {
      EXPECT_EQ(seen.at, serial) << "it goes on where it was";
    }
    seen.at = serial;
    seen.open = true;
  }
  void OnMessage(std::uint64_t id, const RelayMessage& message) override {
    Seen& seen = all[apps.at(id)];
    ASSERT_EQ(message.Begins(), seen.at) << apps[id];
    seen.at = message.envelope.serial;
    seen.delivered += message.Delivered();
    seen.toldInside += message.Lost();
    seen.came.erase(message.From());
    seen.given.push_back({message.Begins(), message.Delivered()});
  }
  void OnLost(std::uint64_t id, std::uint64_t lost) override {
    Seen& seen = all[apps.at(id)];
    ASSERT_GT(lost, 0u);
    for (const auto& [from, to] : seen.came)
      ASSERT_FALSE(from < seen.at + lost && to > seen.at) << "it came, and is told as lost";
    seen.at += lost;
    seen.lost += lost;
  }
  void OnEnd(std::uint64_t id) override { all[apps.at(id)].open = false; }
  void OnTrouble(RelayTrouble, const std::string& what) override { ADD_FAILURE() << what; }

  std::map<std::string, Seen> all;
  std::map<std::string, std::uint64_t> knownAt;
  std::map<std::uint64_t, std::string> apps;
};

struct Arrival {
  Time at;
  Envelope envelope;               // of a message
  std::optional<SourceWord> word;  // else
};

struct Sent {
  std::uint64_t serial = 0, arrivals = 0;
  std::map<std::uint64_t, Time> first;  // by where a message begins: when it came first
};

// The messages of a few sources as an unkind engine gives them out, in the order of arrival.
std::vector<Arrival> Stream(std::mt19937& random, std::map<std::string, Sent>& sent) {
  const auto draw = [&random](unsigned below) { return random() % below; };
  std::vector<Arrival> arrivals;
  Time at = 0ms;
  for (unsigned step = 0; step < 400; ++step) {
    at += std::chrono::milliseconds(draw(60));
    const std::string app = "app" + std::to_string(draw(4));
    Sent& source = sent[app];
    const bool first = source.serial == 0;
    const std::uint64_t delivered = draw(8), lost = draw(10) == 0 ? draw(50) : 0;
    source.serial += delivered + lost + (first ? 1 : 0);
    const Envelope message = MessageOf(app, source.serial, delivered + (first ? 1 : 0), lost);
    const bool dropped = !first && draw(12) == 0;
    const unsigned copies = first ? 1 : dropped ? 0 : draw(8) == 0 ? 2 : 1;
    for (unsigned copy = 0; copy < copies; ++copy) {
      const unsigned kind = first ? 9 : draw(10);
      const Time late = std::chrono::milliseconds(kind == 0  ? draw(20'000)
                                                  : kind < 3 ? draw(500)
                                                             : 0);
      arrivals.push_back({at + late, message, {}});
    }
    if (draw(20) == 0)
      arrivals.push_back({at, {}, SourceWord{message.instance, app, source.serial, false}});
  }
  at += 1s;
  for (const auto& [app, source] : sent)
    arrivals.push_back({at, {}, SourceWord{std::string(16, app.back()), app, source.serial, true}});
  std::stable_sort(arrivals.begin(), arrivals.end(),
                   [](const Arrival& a, const Arrival& b) { return a.at < b.at; });
  return arrivals;
}

void Play(RelayReader& reader, Model& model, const std::vector<Arrival>& arrivals) {
  for (const Arrival& one : arrivals) {
    reader.Look(one.at);
    if (one.word) {
      reader.TakeWord(std::string(kMachine), {std::string(kMachine), {*one.word}}, one.at);
      continue;
    }
    const Envelope& envelope = one.envelope;
    Model::Seen& seen = model.all[envelope.app];
    const std::uint64_t from = envelope.serial - envelope.delivered - envelope.lost;
    if (from >= seen.at && envelope.serial > from) seen.came[from] = envelope.serial;
    reader.Take(std::string(kMachine), envelope.app, {envelope, {}, 0, 0}, one.at);
  }
}

// What the last words tell of is waited for, at most twice as long as a hole is held.
void LookOn(RelayReader& reader, Time at) {
  reader.Look(at + 10s);
  reader.Look(at + 20s);
}

TEST(RelayModel, WhatIsGivenOutAndWhatIsToldAsLostIsAllThatWasSent) {
  for (unsigned seed = 1; seed <= 400; ++seed) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    std::map<std::string, Sent> sent;
    const std::vector<Arrival> arrivals = Stream(random, sent);
    Model model;
    RelayReader reader(model);
    Play(reader, model, arrivals);
    LookOn(reader, arrivals.back().at);
    std::uint64_t delivered = 0, lost = 0, came = 0;
    for (const auto& [app, source] : sent) {
      const Model::Seen& seen = model.all[app];
      EXPECT_EQ(seen.at, source.serial) << app;
      EXPECT_EQ(seen.began + seen.delivered + seen.toldInside + seen.lost, source.serial) << app;
      EXPECT_FALSE(seen.open) << app;
      delivered += seen.delivered;
      lost += seen.lost + seen.toldInside;
    }
    for (const Arrival& one : arrivals) came += one.envelope.delivered;
    const SourceCounts counts = reader.Counts();
    EXPECT_EQ(counts.delivered, delivered);
    EXPECT_EQ(counts.lost, lost);
    EXPECT_EQ(counts.delivered + counts.twice + counts.late, came);
    EXPECT_EQ(reader.HeldBytes(), 0u);
    EXPECT_FALSE(reader.NextLook());
    if (testing::Test::HasFailure()) return;
  }
}

TEST(RelayModel, AReaderThatWasKilledIsContinuedByAnotherOneToTheTrace) {
  for (unsigned seed = 1; seed <= 100; ++seed) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    std::map<std::string, Sent> sent;
    const std::vector<Arrival> arrivals = Stream(random, sent);
    Model first, second;
    RelayReader killed(first);
    const auto middle = arrivals.begin() + static_cast<std::ptrdiff_t>(random() % arrivals.size());
    Play(killed, first, {arrivals.begin(), middle});
    for (const auto& [id, app] : first.apps) {
      const Model::Seen& seen = first.all[app];
      second.knownAt[app] = seen.at;
      // Its monitor may have got only a part of the last message.
      if (seen.given.empty() || seen.given.back().first < seen.at - seen.given.back().second)
        continue;
      second.knownAt[app] = seen.given.back().first + random() % (seen.given.back().second + 1);
    }
    for (auto& [app, serial] : second.knownAt) second.all[app].at = serial;
    RelayReader next(second);
    Play(next, second, arrivals);  // from some earlier place on
    LookOn(next, arrivals.back().at);
    for (const auto& [app, source] : sent) EXPECT_EQ(second.all[app].at, source.serial) << app;
    EXPECT_EQ(next.HeldBytes(), 0u);
    if (testing::Test::HasFailure()) return;
  }
}

// A message may have been given out in a part when its reader was killed.
TEST(RelayModel, AReaderGoesOnInTheMiddleOfAMessage) {
  Model model;
  model.knownAt["app1"] = 13;
  model.all["app1"].at = 13;
  RelayReader reader(model);
  reader.Take("web1", "app1", {MessageOf("app1", 10, 10, 0), {}, 0, 0}, 0ms);
  reader.Take("web1", "app1", {MessageOf("app1", 20, 8, 2), {}, 0, 0}, 0ms);
  EXPECT_EQ(model.all["app1"].at, 20u);
  EXPECT_EQ(model.all["app1"].delivered, 5u);
  EXPECT_EQ(model.all["app1"].toldInside, 2u);
  EXPECT_EQ(reader.Counts(), (SourceCounts{5, 2, 0, 0}));
}

}  // namespace
