// Puts the messages of many sources in order, where they come late, twice, in any order, or not at
// all: each source is given out by its serials, and what is missing is told in its place.
//
// Shape    A source begins where its first message begins. One that is known from before begins
//          there. A message that comes before its time is held until what is missing has come, for
//          a bounded time. Then the traces in the hole are lost, and what comes for them is late.
//          Words say how far sources have come, so a loss at the end shows as well.
//
//            traces of a source behind its beginning = given out + told as lost
//
// Owner    Borrows its user.
// Errors   Messages and words may lie. What cannot be is not taken, and told as a trouble. Memory
//          is bounded: see Limits. Losses are believed up to a credible number for each machine.
// Threads  Plain, with the caller's clock. That clock should stand still while nothing is read.
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <set>
#include <string>
#include <unordered_map>

#include "quor/envelope/envelope.h"
#include "quor/relay/reader/held_messages.h"
#include "quor/relay/reader/relay_user.h"
#include "quor/relay/source_ledger.h"

struct RelayLimits {
  std::chrono::milliseconds hold{10'000};  // an election of the engine's servers
  std::size_t heldOfSource = 4u << 20, held = 64u << 20;
  std::size_t sources = 4096;  // known at a time; the one not heard of for longest is forgotten
  std::uint64_t lossesAtFirst = 36'000'000'000, lossesPerSecond = 10'000'000;  // of a machine
};

class RelayReader {
 public:
  using Time = RelayMessage::Time;

  explicit RelayReader(RelayUser& user, const RelayLimits& limits = {})
      : m_user(user), m_limits(limits) {}

  // `machine`, `app`: of the subject that it came under.
  void Take(const std::string& machine, const std::string& app, RelayMessage message, Time now);
  void TakeWord(const std::string& machine, const MachineWord& word, Time now);
  // Gives up holes whose time is over. Call it at NextLook at the latest.
  void Look(Time now);
  std::optional<Time> NextLook() const;
  // No more will come: all holes are given up.
  void Finish();

  SourceCounts Counts() const;  // of all sources there were
  std::size_t HeldBytes() const { return m_heldBytes; }
  std::size_t Sources() const { return m_sources.size(); }
  // When the oldest message that is held arrived at the engine.
  std::optional<EngineMoment> OldestHeld() const;

 private:
  struct Source {
    RelayOrigin origin;
    SourceLedger ledger;
    HeldMessages held;
    std::uint64_t id = 0, used = 0;
    std::uint64_t began = 0, told = 0;  // the user knows of the traces (began, told]
    bool isKnown = false;               // an earlier reader ended where this one begins
    bool isProvisional = false;         // only words have told of it: an earlier beginning may show
    bool isOpen = false;                // between OnBegin and OnEnd
    std::optional<std::uint64_t> endsAt;  // its last serial
    // Since when a word tells of traces up to here that did not come.
    std::optional<std::pair<Time, std::uint64_t>> reached;
    std::optional<Time> look;  // its entry in m_looks
  };
  struct Claims {
    std::uint64_t left = 0;
    Time until{0};
  };
  Source& SourceOf(const RelayOrigin& origin, std::uint64_t begins, bool byWord);
  bool CanBe(const std::string& machine, const Source& source, const RelayMessage& message);
  void Put(Source& source, RelayMessage message);
  void Begin(Source& source);
  void GiveOut(Source& source);
  void GiveUpHole(Source& source);
  void Bound(Source& source);
  void LookLater(const std::string& key, Source& source);
  void EndIfDone(Source& source);
  void ForgetOldest();
  void Flush(Source& source);
  std::uint64_t& CreditOf(const std::string& machine);
  std::uint64_t LimitLosses(const std::string& machine, std::uint64_t lost);

  RelayUser& m_user;
  const RelayLimits m_limits;
  std::unordered_map<std::string, Source> m_sources;
  std::set<std::pair<Time, std::string>> m_looks;
  std::unordered_map<std::string, Claims> m_claims;
  SourceCounts m_counts;  // of sources that were forgotten, and of what came before a beginning
  Time m_now{0};
  std::size_t m_heldBytes = 0;
  std::uint64_t m_ids = 0, m_uses = 0;
};
