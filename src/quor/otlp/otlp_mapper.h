// The traces that logs and spans of OpenTelemetry become: docs/opentelemetry.md has the table.
//
// Shape    Each log is one record. A span is a record for its begin, one for each event and one for
//          its end, on a lane of its process (quor/lanes), so that begins and ends nest. Logs are
//          given at once. Spans come at their ends, children first: those of a trace are held until
//          the one comes that has no parent in this process, or until nothing came for
//          OtlpRules::silence, or until they take too much memory.
//          A process is told apart by machine, application and process. What its resource says
//          besides is a record of its own, once.
// Owner    Borrows its taker. Holds the processes, at most kProcessesMax: of more, the one that was
//          silent for longest is ended.
// Errors   None: each record becomes a trace, however strange it is, and none is rejected. What was
//          cut or replaced is counted.
// Threads  One. Times are given by the caller; nothing here reads a clock.
#pragma once

#include <chrono>
#include <cstdint>
#include <list>
#include <map>
#include <memory>
#include <string>

#include "quor/otlp/otlp.pb.h"
#include "quor/otlp/otlp_record.h"

class OtlpProcess;

struct OtlpRules {
  std::chrono::nanoseconds silence = std::chrono::seconds(5);
  // Even while more spans of the trace come.
  std::chrono::nanoseconds longest = std::chrono::seconds(60);
  std::chrono::nanoseconds forgetAfter = std::chrono::minutes(10);
  std::size_t heldBytes = std::size_t{16} << 20;     // of one process
  std::size_t heldBytesAll = std::size_t{64} << 20;  // of all
  bool untilRoot = true;                             // false: the coming of the root ends nothing
};

struct OtlpArrival {
  std::string peer;                // the machine of resources that name none
  std::uint64_t unixNs = 0;        // the time of records that have none
  std::chrono::nanoseconds now{};  // of the clock that Tick goes by
};

struct OtlpCounts {
  std::uint64_t logs = 0, spans = 0, events = 0;
  std::uint64_t records = 0;  // given to the taker
  std::uint64_t cutTexts = 0, cutNames = 0;
  std::uint64_t nulBytes = 0;      // each is replaced by U+2400
  std::uint64_t namesInTexts = 0;  // of processes with too many names
};

class OtlpMapper {
 public:
  static constexpr std::size_t kProcessesMax = 4096;

  explicit OtlpMapper(OtlpTaker& taker, OtlpRules rules = {});
  ~OtlpMapper();

  void Take(const quor::otlp::ExportLogs& logs, const OtlpArrival& arrival);
  void Take(const quor::otlp::ExportSpans& spans, const OtlpArrival& arrival);
  // Gives what was held long enough, and ends silent processes. To be called once a second or more.
  void Tick(std::chrono::nanoseconds now);
  // Gives all that is held.
  void Flush();

  const OtlpCounts& Counts() const { return m_counts; }
  std::size_t HeldSpans() const;

 private:
  using Processes = std::map<OtlpSource, std::unique_ptr<OtlpProcess>>;

  OtlpProcess& ProcessOf(const quor::otlp::Resource& resource, const OtlpArrival& arrival);
  void SetInstance(OtlpSource& source, const std::string& instance) const;
  OtlpProcess* Largest();
  void GiveReady(OtlpProcess& process, std::chrono::nanoseconds now);
  void GiveAll(OtlpProcess& process);
  void EndOldest();

  OtlpTaker& m_taker;
  OtlpRules m_rules;
  OtlpCounts m_counts;
  Processes m_processes;
  std::list<OtlpProcess*> m_byUse;  // the one that is silent for longest first
  std::size_t m_heldBytes = 0;
};
