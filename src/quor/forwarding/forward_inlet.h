// Receives the traces that other machines' services forward to this one.
//
// Shape    Each stream has an id that its forwarder chose, and it survives broken links. A data
//          frame counts as taken when the ledger after it has come; then its traces are in the hub.
//          A data frame has traces of one source, the one in its ledger.
//          Streams and sources belong to their forwarder, which is identified by its certificate.
//          The same ids from another forwarder mean other streams and sources.
// Owner    Keeps streams and sources over reconnects. When there are too many, the oldest one that
//          no connection uses is forgotten, of the forwarder that has the most.
// Errors   A frame that contradicts itself ends the connection with a reason; nothing of it is
//          taken. Reported losses are counted only up to a credible limit: see kLossesAtFirst.
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
  // The losses that one forwarder may report at first, which is three days of 100,000 a second and
  // more; and how many more with each second.
  static constexpr std::uint64_t kLossesAtFirst = 36'000'000'000, kLossesPerSecond = 10'000'000;

  explicit ForwardInlet(Hub& hub) : m_hub(hub) {}

  // One forwarder's stream. It belongs to the connection that opened it last. Frames on an older
  // connection must not be taken.
  class Stream {
   public:
    // Grows with each Open.
    std::uint64_t Turn() const { return m_turn; }
    bool TakeData(Bytes body, std::string* why);
    // `taken` is increased when this ledger completes a data frame.
    bool TakeLedger(const quor::wire::Ledger& ledger, std::string* why);
    std::uint64_t Taken() const { return m_taken; }
    // It has seen more sources than can be kept apart: its forwarder must begin another stream.
    bool IsExhausted() const { return m_counts.size() >= kSourcesMax; }
    // Frames that were not completed will come again.
    void Break() { m_held.clear(); }

   private:
    friend class ForwardInlet;
    static constexpr std::size_t kSourcesMax = 65536;
    struct Counts {
      std::uint64_t delivered = 0, lost = 0, serial = 0;
    };
    struct Frame;
    Stream(ForwardInlet& inlet, const std::string& peer, std::string machine)
        : m_inlet(inlet), m_peer(peer), m_machine(std::move(machine)) {}
    bool TakeLine(const quor::wire::Ledger::Source& line, const Frame* frame, std::string* why);

    ForwardInlet& m_inlet;
    const std::string m_peer, m_machine;
    SourceNames m_names;
    std::vector<std::uint8_t> m_held;
    std::map<std::string, Counts> m_counts;
    std::uint64_t m_taken = 0, m_turn = 0;
  };

  // `peer`: the forwarder's name in its certificate. Null and a reason for an invalid id.
  std::shared_ptr<Stream> Open(const std::string& peer, const std::string& id,
                               const std::string& machine, std::string* why);
  void Forget(const std::string& peer, const std::string& id) { m_streams.erase({peer, id}); }

 private:
  using Clock = std::chrono::steady_clock;
  using Key = std::pair<std::string, std::string>;  // the forwarder, and its id for the object
  struct Known {
    std::shared_ptr<Source> source;
    std::uint64_t used = 0;
  };
  struct Claims {
    std::uint64_t left = kLossesAtFirst;
    Clock::time_point until = Clock::now();
    bool reported = false;
  };
  // `serial`: how many traces a new source had produced when it came here.
  std::shared_ptr<Source> SourceFor(const Key& key, std::uint64_t serial,
                                    const std::string& machine);
  // Limits losses to a credible number.
  std::uint64_t LimitLosses(const std::string& peer, std::uint64_t losses);
  void ForgetOldestSource();
  void ForgetOldestStream();

  Hub& m_hub;
  std::map<Key, std::shared_ptr<Stream>> m_streams;
  std::map<Key, Known> m_sources;
  std::map<std::string, Claims> m_claims;  // by peer: as many as there are certificates
  std::uint64_t m_uses = 0;
};
