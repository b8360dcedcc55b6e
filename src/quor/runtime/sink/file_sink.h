// Takes the traces of this process out of its ring and writes them as a .trc file.
//
// Shape    Each file has its own header and the names that its traces use. A trace gets its number
//          here. Losses are in the file where they happened, as traces of component "Quor",
//          category "Loss", severity Warn, text "N traces lost: reason", without a number.
// Owner    Borrows the segment and the names. The space of a trace in the ring is given back when
//          the trace is in the file. So the service still finds the traces that were buffered when
//          the application was killed. If it is killed in the middle of a write, the traces of
//          that write are in the file, and the service finds them as well.
// Errors   Traces that cannot be written are counted in the segment's sinkLost and sinkUnreported.
//          TakeReport gives the reason. The file is tried again every second. A file that was
//          removed, replaced, moved or cut short is begun again under its name.
// Threads  One at a time: the link thread, or a traced thread when every trace is flushed, perhaps
//          in a signal handler. So Drain, DrainReserved and Push allocate nothing.
#pragma once

#include <memory>
#include <string>

#include "quor/ring/ring_consumer.h"
#include "quor/runtime/process/name_table.h"
#include "quor/runtime/sink/sink_files.h"
#include "records/trc_walk.h"

class FileSink {
 public:
  struct LossNames {
    AppNameId machine, app, component, category, pid, tid;
  };

  FileSink(const SegmentMap& segment, const NameTable& names, const LossNames& lossNames,
           std::string path, const SinkOptions& options);

  // Takes over the ring and begins the file.
  void Begin();
  // Takes committed traces, at most `traces`. Returns how many it took.
  std::size_t Drain(std::size_t traces);
  // Takes the traces that were reserved when the call began, and no more, because the application
  // may trace as fast as this writes. Waits for traces that are being written, but not for long:
  // the writer may be the very code that a signal handler has interrupted to come here.
  void DrainReserved();
  // Writes what it holds, then gives up the ring and the file.
  void End();
  // Hands the buffered bytes to the kernel.
  void Push();
  bool HoldsBytes() const { return m_used != 0; }
  RingConsumer::Wait BeginWait() { return m_ring.BeginWait(); }
  void EndWait() { m_ring.EndWait(); }

  // A report for the service, at most once a second or, with `last`, now. False: there is none.
  struct Report {
    std::uint64_t lost = 0;
    int error = 0;
  };
  bool TakeReport(Report* report, bool last = false);
  const std::string& Path() const { return m_files.Path(); }
  // In a fork's child.
  void Abandon();

 private:
  static constexpr std::size_t kBufferBytes = 64 * 1024;
  static constexpr std::size_t kShortestLossText = sizeof "1 traces lost: the ring was full" - 1;
  static constexpr std::size_t kSlackBytes =
      kTrcHeaderBytes +
      4 * (kTagBytes + kTraceBytesMax + 7 * (kNameRecordBytes + NameTable::kNameBytesMax));
  // A trace in the buffer that tells a loss.
  struct ReportedLoss {
    std::size_t offset;  // of its record
    std::uint64_t lost;
    bool known;  // the service has been told
  };
  // A buffer full of the shortest of them, and those that may exceed it.
  static constexpr std::size_t kReportedLossesMax =
      kBufferBytes / (kTagBytes + kTraceFixedBytes + kShortestLossText) + 4;
  // What a buffer that was written in part does not bring to the file.
  struct Unwritten {
    std::size_t whole = 0;  // bytes of whole records among those written
    std::uint64_t traces = 0;
    std::uint64_t known = 0, news = 0;  // losses that its traces tell
  };
  Unwritten UnwrittenAfter(std::size_t written) const;
  bool Ready();
  void PushBuffer();
  void WriteOut();
  void EmptyBuffer();
  void LoseFrom(std::size_t written, int error);
  bool MoveOn();
  void Take(const RingItem& item);
  bool IsFullBy(Bytes trace) const;
  void TakeTrace(Bytes trace);
  std::size_t AppendTrace(Bytes trace, std::uint32_t number);  // gives the record's offset
  void AppendNames(const std::uint8_t* trace);
  void AppendName(AppNameId id);
  void AppendLoss(std::uint64_t lost, const char* reason, bool known);
  void NoteLoss(std::size_t offset, std::uint64_t lost, bool known);
  bool ReportsLoss(std::size_t loss, std::size_t losses, std::size_t offset) const;
  void ReportMissed();
  void BeginFile();
  void Fail(std::uint64_t lost, int error);
  void Miss(std::uint64_t lost);

  SegmentHeader* m_header;
  const NameTable& m_names;
  const LossNames m_lossNames;
  const SinkOptions m_options;
  RingConsumer m_ring;
  SinkFiles m_files;
  std::unique_ptr<std::uint8_t[]> m_buffer;  // kBufferBytes, and room for what exceeds them
  std::size_t m_used = 0;
  std::unique_ptr<ReportedLoss[]> m_losses;  // in the buffer, in its order
  std::size_t m_lossCount = 0;
  IdSet<AppNameId> m_written;  // names that the current file has
  std::uint32_t m_number = 0;
  std::uint64_t m_missed = 0;  // lost since the last trace that was written
  std::uint64_t m_unreported = 0;
  std::uint64_t m_retryNs = 0, m_reportNs = 0;
  int m_error = 0;
};
