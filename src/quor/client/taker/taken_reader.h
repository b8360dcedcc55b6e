// The frames of a stream that a client takes: see Take in quor.proto.
//
// Shape    Each frame is given out once in the life of the object, in order, also if it comes again
//          over another connection. When the service has forgotten a stream, what was lost between
//          that stream and the next one is told, with the first ledger.
// Owner    A frame borrows the bytes of the connection and the names for the call.
// Errors   What contradicts itself is an error with a reason: end the connection. The stream can go
//          on over another one.
// Threads  One.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "quor/client/stream/gap_ledger.h"
#include "quor/protocol/frames.h"

// Its texts by the ids in the records of a frame. Id 0 has no text.
using TakenNames = std::unordered_map<HubNameId, std::string>;

struct TakenFrame {
  std::uint64_t number = 0;  // from 1, within the stream
  std::string instance;      // of the source, 16 bytes; empty: it speaks of none
  // The frame covers the traces (serial - delivered - lost, serial] of the source.
  std::uint64_t serial = 0, delivered = 0, lost = 0;
  Bytes records;  // tagged traces and names; empty: only the loss, if there is one
  const TakenNames* names = nullptr;
  std::vector<std::string> forgotten;  // sources of which nothing will come
};

class TakenReader final : private DataSink {
 public:
  using Give = std::function<void(const TakenFrame&)>;
  // So many traces came between two streams and are lost.
  using Tell = std::function<void(std::uint64_t gap)>;

  TakenReader(Give give, Tell tell) : m_give(std::move(give)), m_tell(std::move(tell)) {}

  // A stream with another id begins. `service`: the run of the service that has it.
  void BeginStream(const std::string& service);
  // The service has agreed. `taken`: as in its answer.
  void BeginConnection(std::uint64_t taken);
  bool TakeData(Bytes body, std::string* why);
  bool TakeLedger(const quor::wire::Ledger& ledger, std::string* why);
  // Frames that came over this connection, or were confirmed before it.
  std::uint64_t Received() const { return m_received; }
  std::uint64_t Given() const { return m_given; }
  // Of all streams, in traces.
  std::uint64_t Delivered() const { return m_ledger.Delivered(); }
  std::uint64_t Lost() const { return m_ledger.Lost() + m_gaps; }

 private:
  struct Counts {
    std::uint64_t delivered = 0, lost = 0;
  };
  void OnName(HubNameId id, std::string_view utf8) override;
  void OnTrace(const std::uint8_t* record, std::size_t bytes) override;
  bool TakeFirst(const quor::wire::Ledger& ledger, std::string* why);
  bool TakeFrame(const quor::wire::Ledger& ledger, std::string* why);
  bool ReadSource(const quor::wire::Ledger::Source& line, TakenFrame& frame, std::string* why);
  bool Add(quor::wire::Ledger ledger, const TakenFrame& frame, std::string* why);
  bool Count(const quor::wire::Ledger& ledger, std::string* why);

  const Give m_give;
  const Tell m_tell;
  GapLedger m_ledger;
  std::uint64_t m_gaps = 0, m_given = 0, m_received = 0;
  bool m_firstOfStream = true;
  std::unordered_map<std::string, Counts> m_stream;  // since the stream began
  // Of this connection.
  std::unordered_map<std::string, quor::wire::Ledger::Source> m_lines;
  TakenNames m_names;
  std::size_t m_nameBytes = 0;
  std::vector<std::uint8_t> m_data;
  std::uint64_t m_numbered = 0;
  bool m_began = false;
};
