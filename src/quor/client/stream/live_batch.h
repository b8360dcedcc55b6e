// The traces of one data frame, as the monitor gets them.
//
// Shape    The bytes of the frame's body, and an event of three words for each trace in them. The
//          name ids in the records are the service's until NameMapper replaces them by the
//          document's.
// Owner    A batch lives as long as one of its events. It is allocated once per frame, and nothing
//          is allocated per trace. Its maker releases it with Forget. Events that were not given
//          out are then destroyed, and the others are released by their owners.
// Threads  Filled by the reader, then passed on; one thread at a time. Events are given out and
//          released on one thread.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "records/trace_event.h"

class LiveBatch;

class LiveTraceEvent_t final : public _TraceEvent_t {
 public:
  LiveTraceEvent_t(const std::uint8_t* record, LiveBatch& batch)
      : _TraceEvent_t(record), m_batch(&batch) {}
  void Release() override;

 private:
  LiveBatch* m_batch;
};

class LiveBatch {
 public:
  struct Name {
    std::size_t before;  // index of the trace that it precedes
    HubNameId id;
    std::string_view text;
  };

  // Null and a reason for a body that is not whole records.
  static LiveBatch* Read(Bytes body, std::string* why);
  // A batch with one trace of the reader's own, preceded by its names.
  static LiveBatch* Own(const std::vector<std::uint8_t>& body);

  void MarkFirstOfStream() { m_firstOfStream = true; }
  bool IsFirstOfStream() const { return m_firstOfStream; }  // earlier ids are no longer valid
  void MarkOwn() { m_own = true; }
  bool IsOwn() const { return m_own; }  // has ids of its own, separate from the stream's
  std::size_t Traces() const { return m_events.size(); }
  // Traces with a number: all except loss reports.
  std::size_t Numbered() const { return m_numbered; }
  std::size_t Bytes() const {
    return m_bytes.size() + m_events.size() * sizeof(LiveTraceEvent_t) +
           m_names.size() * sizeof(Name);
  }
  const std::vector<Name>& Names() const { return m_names; }
  // The record of a trace, to change its ids.
  std::uint8_t* Record(std::size_t index);
  // Gives an event to its owner. Each at most once.
  TraceEvent_i* Give(std::size_t index);
  void Forget() { Drop(); }

 private:
  friend class LiveTraceEvent_t;
  class Filler;
  LiveBatch() = default;
  ~LiveBatch() = default;
  void Drop() {
    if (--m_holders == 0) delete this;
  }

  std::vector<std::uint8_t> m_bytes;
  std::vector<LiveTraceEvent_t> m_events;
  std::vector<Name> m_names;
  std::size_t m_numbered = 0;
  std::size_t m_holders = 1;
  bool m_firstOfStream = false, m_own = false;
};
