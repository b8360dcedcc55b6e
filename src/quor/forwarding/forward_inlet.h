// What other machines' services hand on to this one.
//
// Shape    Each stream has an id of its forwarder's choice, which lives over broken links: a data
//          frame counts as taken when the ledger behind it has come, and then it is in the hub. A
//          data frame holds traces of one source, the one that its ledger names.
//          Streams and sources are their forwarder's own: it is known by its certificate, and what
//          another one says of the same ids means something else.
// Owner    Keeps streams and sources over reconnects. When there are too many, the oldest go that
//          no connection uses, of the forwarder that has the most.
// Errors   A frame that contradicts itself ends the connection with a reason; nothing of it was
//          taken. Of the losses that a forwarder tells no more is counted than can have been: see
//          kLossesAtFirst.
// Threads  The service's one thread.
#pragma once

#include <chrono>
#include <map>

#include "quor/hub/hub.h"
#include "quor/protocol/quor.pb.h"

class ForwardInlet {
 public:
  static constexpr std::size_t kStreamsMax = 64;
  static constexpr std::size_t kSourcesMax = 4096;
  // What one forwarder may have lost before it is first heard of, three days of 100,000 a second
  // and more; and then with each second.
  static constexpr std::uint64_t kLossesAtFirst = 36'000'000'000, kLossesPerSecond = 10'000'000;

  explicit ForwardInlet(Hub& hub) : m_hub(hub) {}

  // One forwarder's stream. It belongs to the connection that opened it last: what still comes over
  // an older one is not to be taken.
  class Stream {
   public:
    // Grows with each Open.
    std::uint64_t Turn() const { return m_turn; }
    bool TakeData(Bytes body, std::string* why);
    // `taken` grows when this ledger completed a data frame.
    bool TakeLedger(const quor::wire::Ledger& ledger, std::string* why);
    std::uint64_t Taken() const { return m_taken; }
    // It has seen more sources than can be kept apart: its forwarder is to begin another one.
    bool IsWornOut() const { return m_words.size() >= kWordsMax; }
    // What was not completed comes again.
    void Break() { m_held.clear(); }

   private:
    friend class ForwardInlet;
    static constexpr std::size_t kWordsMax = 65536;
    struct Word {
      std::uint64_t delivered = 0, lost = 0, serial = 0;
    };
    struct Frame;
    Stream(ForwardInlet& inlet, const std::string& peer, std::string machine)
        : m_inlet(inlet), m_peer(peer), m_machine(std::move(machine)) {}
    bool TakeWord(const quor::wire::Ledger::Source& word, const Frame* frame, std::string* why);

    ForwardInlet& m_inlet;
    const std::string m_peer, m_machine;
    SourceNames m_names;
    std::vector<std::uint8_t> m_held;
    std::map<std::string, Word> m_words;
    std::uint64_t m_taken = 0, m_turn = 0;
  };

  // `peer`: who forwards, as its certificate says. Null and a reason for an id that is none.
  std::shared_ptr<Stream> Open(const std::string& peer, const std::string& id,
                               const std::string& machine, std::string* why);
  void Forget(const std::string& peer, const std::string& id) { m_streams.erase({peer, id}); }

 private:
  using Clock = std::chrono::steady_clock;
  using Key = std::pair<std::string, std::string>;  // whose, and its id there
  struct Known {
    std::shared_ptr<Source> source;
    std::uint64_t used = 0;
  };
  struct Claims {
    std::uint64_t left = kLossesAtFirst;
    Clock::time_point until = Clock::now();
    bool told = false;
  };
  // `serial`: how many traces it had produced when it came here, if it is new.
  std::shared_ptr<Source> SourceFor(const Key& key, std::uint64_t serial,
                                    const std::string& machine);
  // As many of them as can have been.
  std::uint64_t Believe(const std::string& peer, std::uint64_t losses);
  void ForgetOldestSource();
  void ForgetOldestStream();

  Hub& m_hub;
  std::map<Key, std::shared_ptr<Stream>> m_streams;
  std::map<Key, Known> m_sources;
  std::map<std::string, Claims> m_claims;  // by peer: as many as there are certificates
  std::uint64_t m_uses = 0;
};
