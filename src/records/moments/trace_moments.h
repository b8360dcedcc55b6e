// The times of traces for other programs: ISO 8601 with microseconds and zone.
//
// A trace has its time in milliseconds, and a tic count in picoseconds since some moment of its
// process. Where all traces of a process agree on that moment, it is known to a few microseconds:
// each one puts it into one millisecond. A clock that was set, or a tic count of another meaning,
// agrees with nothing: then another moment begins, and where that happens often the process has
// milliseconds only.
//
// Shape    "2026-11-23T09:41:07.123456+01:00", or "Z" in UTC. The last three digits are zeros where
//          a trace has no tic count, or its process no moment. The milliseconds are always those of
//          the trace.
// Owner    Borrows nothing.
// Threads  One.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "records/trace_list.h"

class TraceMoments {
 public:
  explicit TraceMoments(bool utc) : m_utc(utc) {}

  // All traces of a file, so that a trace has the same time wherever a command begins.
  void Learn(const TraceList_t& traces);
  // A trace of a stream, with its place there. REQUIRES: rising places.
  void Learn(std::uint64_t place, const TraceEvent_i& trace);
  // Ids mean other processes from now on, whose moments are to be learned.
  void ForgetIds() { m_processes.clear(); }
  void UseUtc(bool utc);
  // False and nothing is appended: the fields hold no time of a calendar.
  bool Append(std::string& to, std::uint64_t place, const TraceEvent_i& trace);
  // The same with three digits behind the point where no more are known, also without a place.
  bool AppendKnown(std::string& to, std::optional<std::uint64_t> place, const TraceEvent_i& trace);

 private:
  // From a trace on, the moment of tic 0 lies between the two, in nanoseconds since 1970.
  struct Span {
    std::uint64_t from;
    std::int64_t least, most;
  };
  struct Process {
    std::vector<Span> spans;
    std::uint64_t traces = 0;
    bool agrees = true;
  };
  static bool HasTic(const TraceEvent_i& trace, std::int64_t& ms);
  bool MakeSecond(const TraceEvent_i& trace);
  bool Append(std::string& to, const TraceEvent_i& trace, std::optional<unsigned> microseconds,
              bool allDigits);
  std::optional<unsigned> MicrosecondsOf(std::uint64_t place, const TraceEvent_i& trace) const;

  bool m_utc;
  std::unordered_map<std::uint32_t, Process> m_processes;  // by machine and process id
  // The second that was written last: most traces are in the same.
  std::uint64_t m_second = ~std::uint64_t{0};
  bool m_isMoment = false;
  std::string m_before, m_zone;
};
