// One record that OpenTelemetry sent, as a trace of this system.
//
// Shape    Texts hold no NUL and at most kLongestText bytes, and are never null. They may be
//          malformed UTF-8. Times are UTC. `tic` is in picoseconds from a moment that all traces of
//          one process share; 0: none.
// Owner    A record borrows its texts: they are valid while its taker has it.
#pragma once

#include <compare>
#include <cstdint>
#include <string>
#include <string_view>

// The process that a record is of. What two of them say is of two sources.
struct OtlpSource {
  std::string machine;  // empty: neither the resource nor the connection says it
  std::string application;
  std::string process;

  auto operator<=>(const OtlpSource&) const = default;
};

struct OtlpRecord {
  std::uint64_t unixNs = 0;
  std::uint32_t date = 0, time = 0;  // the same moment, packed
  std::uint64_t tic = 0;
  std::uint16_t attributes = 0;
  std::string_view component, category, thread, file;
  std::uint32_t line = 0;
  std::string_view text, stack;
};

class OtlpTaker {
 public:
  virtual ~OtlpTaker() = default;
  // In the order in which they are to be written. The source stays valid until OnEnd.
  virtual void OnRecord(const OtlpSource& source, const OtlpRecord& record) = 0;
  // The process was silent for long: nothing of it is held any more. It may come again.
  virtual void OnEnd(const OtlpSource& source) = 0;
};
