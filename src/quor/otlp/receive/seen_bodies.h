// The bodies that came a short while ago. A client that got no answer sends the same bytes again:
// they are not taken twice.
//
// Shape    A body is known by a digest of its peer, its kind and its bytes. While it is taken,
//          whoever sends it again waits for the same verdict. Once taken it is remembered for
//          kMemory. One that was not taken is forgotten at once.
// Owner    At most kBodiesMax that were taken: of more, the oldest is forgotten.
// Threads  One. The caller gives the time.
#pragma once

#include <array>
#include <chrono>
#include <deque>
#include <map>
#include <string>
#include <vector>

#include "quor/otlp/receive/otlp_sink.h"

class SeenBodies {
 public:
  using Clock = std::chrono::steady_clock;
  using Key = std::array<std::uint8_t, 32>;
  static constexpr std::chrono::seconds kMemory{60};
  static constexpr std::size_t kBodiesMax = 16384;
  // Of one body: a peer that sends it on many connections gets no more.
  static constexpr std::size_t kWaitingMax = 16;

  // `kind`: what else makes two bodies differ.
  static Key KeyOf(const std::string& peer, const std::string& kind, Bytes body);

  enum class Look { New, Waits, Taken, TooMany };
  // New: the caller takes the body and calls Settle. New and Waits: `done` is kept.
  Look Enter(const Key& key, Clock::time_point now, OtlpSink::Done done);
  // Those that wait for this body, to be called.
  std::vector<OtlpSink::Done> Settle(const Key& key, bool taken, Clock::time_point now);
  std::size_t Size() const { return m_bodies.size(); }

 private:
  struct Body {
    bool taken = false;
    std::vector<OtlpSink::Done> waiting;
  };
  void Forget(Clock::time_point now);

  std::map<Key, Body> m_bodies;
  std::deque<std::pair<Clock::time_point, Key>> m_taken;  // the oldest first
};
