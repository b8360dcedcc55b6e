// Takes the traces of this process out of its ring and writes them as a .trc file.
//
// Shape    Each file has its own header and the names that its traces use; a trace gets its number
//          here. Losses stand in the file where they happened, as traces of component "Quor",
//          category "Loss", severity Warn, text "N traces lost: reason", without a number.
// Owner    Borrows the segment and the names.
//          The room of a trace in the ring is given back when the file has it: what was still
//          buffered when the application was killed is left to the service. When it is killed in
//          the very write, those traces stand in the file and are given to the service as well.
// Errors   Traces that cannot be written are counted in the segment's sinkLost and sinkUntold; why
//          is told by TakeReport. The file is tried again every second.
//          One that was removed, replaced, moved or cut short is begun anew under its name.
// Threads  One at a time: the link thread, or a traced one when every trace is pushed, perhaps in
//          a signal handler: what it calls (Drain, DrainReserved, Push) allocates nothing.
#pragma once

#include <bitset>
#include <memory>
#include <string>

#include "quor/ring/ring_consumer.h"
#include "quor/ring/trace_bytes.h"
#include "quor/runtime/name_table.h"
#include "quor/runtime/sink_files.h"

class FileSink {
 public:
  struct LossNames {
    NameId machine, app, component, category, pid, tid;
  };

  FileSink(const SegmentMap& segment, const NameTable& names, const LossNames& lossNames,
           std::string path, const SinkOptions& options);

  // Takes the ring over and begins the file.
  void Begin();
  // Takes what is committed, at most `traces`. Gives how many it took.
  std::size_t Drain(std::size_t traces);
  // Takes what was reserved when the call began, and no more: the application may trace as fast as
  // this writes. Waits for what is just being written, but not for long: that may be done by the
  // very code that a signal handler has interrupted to come here.
  void DrainReserved();
  // Gives ring and file up after writing what it holds.
  void End();
  // Hands what is buffered to the kernel.
  void Push();
  bool HoldsBytes() const { return m_used != 0; }
  RingConsumer::Wait BeginWait() { return m_ring.BeginWait(); }
  void EndWait() { m_ring.EndWait(); }

  // What has to be told to the service, at most once a second or, with `last`, now. False: nothing.
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
  static constexpr std::size_t kSlackBytes =
      kTrcHeaderBytes + 4 * (1 + kRawTraceBytesMax + 7 * (5 + NameTable::kNameBytesMax));
  bool Ready();
  void PushBuffer();
  void WriteOut();
  void LoseFrom(std::size_t written, int error);
  bool MoveOn();
  void Take(const RingItem& item);
  bool IsFullBy(Bytes trace) const;
  void AppendTrace(Bytes trace, std::uint32_t number);
  void AppendNames(const std::uint8_t* trace);
  void AppendName(NameId id);
  void AppendLoss(std::uint64_t lost, std::string_view reason);
  void TellMissed();
  void BeginFile();
  void Fail(std::uint64_t lost, int error);
  void Miss(std::uint64_t lost);

  SegmentHeader* m_header;
  const NameTable& m_names;
  const LossNames m_lossNames;
  const SinkOptions m_options;
  RingConsumer m_ring;
  SinkFiles m_files;
  std::unique_ptr<std::uint8_t[]> m_buffer;  // kBufferBytes, and room for what passes that mark
  std::size_t m_used = 0;
  std::bitset<65536> m_written;  // names that the current file has
  std::uint32_t m_number = 0;
  std::uint64_t m_missed = 0;  // lost since the last one that was written
  std::uint64_t m_unreported = 0;
  std::uint64_t m_retryNs = 0, m_reportNs = 0;
  int m_error = 0;
};
