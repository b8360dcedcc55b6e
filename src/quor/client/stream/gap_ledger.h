// Counts what a monitor's streams have delivered so far, and what is missing between them.
//
// Shape    See the Ledger of quor.proto. A stream begins with each Subscribe. When there are too
//          many sources, those that the service has forgotten, and then those without news for
//          longest, are forgotten. A gap is accepted only up to what a machine could have traced
//          meanwhile, because the first line about an unknown source may be a lie.
// Errors   Impossible numbers (a count that falls, say) are an error with a reason: close the
//          connection. So is a trace that is withheld on a stream that was not filtered.
// Threads  One.
#pragma once

#include <chrono>
#include <cstdint>
#include <string>
#include <unordered_map>

#include "quor/protocol/quor.pb.h"

class GapLedger {
 public:
  static constexpr std::size_t kSourcesMax = 65536;

  // A new stream: the first line about each source says what it missed. `service`: the run of the
  // service that sends it. `isRelay`: see Welcome.
  void BeginStream(const std::string& service = {}, bool isRelay = false);
  // The stream may withhold traces from now on.
  void ExpectWithheld() { m_mayWithhold = true; }
  // Processes a ledger. Adds to `gap` the traces that were produced between two streams.
  bool Take(const quor::wire::Ledger& ledger, std::uint64_t* gap, std::string* why);

  // The sources that had news last, at most so many.
  void PutKnown(std::size_t most, quor::wire::Subscribe* subscribe) const;

  // Of all streams.
  std::uint64_t Delivered() const { return m_delivered; }
  std::uint64_t Lost() const { return m_lost; }  // without gaps
  std::uint64_t Withheld() const { return m_withheld; }

 private:
  struct Source {
    std::uint64_t serial = 0;
    std::uint64_t delivered = 0, withheld = 0, lost = 0;  // of the current stream
    unsigned stream = 0;                                  // of its last line
    unsigned run = 0;                                     // of the service
    bool forgotten = false;                               // by the service: in its sum
    std::uint64_t lastLine = 0;                           // number of its last line
  };
  void ForgetOldest();
  bool TakeSource(const quor::wire::Ledger::Source& line, std::uint64_t* gap, std::string* why);
  bool CanBe(const quor::wire::Ledger::Source& line, std::string* why) const;
  void Count(const quor::wire::Ledger::Source& line, Source& source);
  bool CanHaveBeen(std::uint64_t gap);
  bool TakeForgotten(std::uint64_t sum, std::uint64_t* gap, std::string* why);
  bool TakeForgotten(const quor::wire::Ledger::Source& line, std::string* why);

  std::unordered_map<std::string, Source> m_sources;
  unsigned m_stream = 0, m_run = 0;
  std::string m_service;
  using Clock = std::chrono::steady_clock;
  Clock::time_point m_lastLedger = Clock::now(), m_silentSince = m_lastLedger;
  std::uint64_t m_believed = 0;   // of the gaps before this stream
  std::uint64_t m_forgotten = 0;  // the service's sum, as far as this stream has reported it
  std::uint64_t m_lines = 0;
  std::uint64_t m_delivered = 0, m_withheld = 0, m_lost = 0;
  bool m_mayWithhold = false;  // on this stream
  bool m_isRelay = false;
};
