// The messages of one source that came before their time.
//
// Shape    By serial; none overlaps another one.
// Threads  Plain values.
#pragma once

#include <chrono>
#include <cstdint>
#include <map>
#include <optional>
#include <set>

#include "quor/envelope/envelope.h"

using EngineMoment = std::chrono::sys_time<std::chrono::nanoseconds>;

struct RelayMessage {
  using Time = std::chrono::nanoseconds;  // of the reader's clock
  Envelope envelope;
  EngineMoment arrived{};  // at the engine
  // Of its traces so many in front were accounted for before, and then so many of those it tells as
  // lost.
  std::uint64_t skipped = 0, skippedLost = 0;

  std::uint64_t From() const { return envelope.serial - envelope.delivered - envelope.lost; }
  // Where what was not accounted for begins.
  std::uint64_t Begins() const { return From() + skipped + skippedLost; }
  std::uint64_t Delivered() const { return envelope.delivered - skipped; }
  std::uint64_t Lost() const { return envelope.lost - skippedLost; }
  // What it takes in memory, about.
  std::size_t Bytes() const { return kOwnBytes + envelope.traces.size(); }
  // What of it is up to this serial was accounted for before. REQUIRES: not all of it.
  void Skip(std::uint64_t serial);

 private:
  static constexpr std::size_t kOwnBytes = 512;
};

class HeldMessages {
 public:
  using Time = RelayMessage::Time;

  bool IsEmpty() const { return m_messages.empty(); }
  std::size_t Bytes() const { return m_bytes; }
  // Is a part of (from, to] held, but not by a message of exactly this range?
  bool Contradicts(std::uint64_t from, std::uint64_t to) const;
  void Hold(RelayMessage message, Time now);
  // The first message, if it begins at this serial.
  std::optional<RelayMessage> TakeAt(std::uint64_t serial);
  // When the one came that has waited for longest. REQUIRES: not empty.
  Time Since() const { return *m_times.begin(); }
  EngineMoment OldestArrival() const;

 private:
  struct Held {
    RelayMessage message;
    Time since;
  };
  std::map<std::uint64_t, Held> m_messages;  // by where they begin
  std::multiset<Time> m_times;
  std::size_t m_bytes = 0;
};
