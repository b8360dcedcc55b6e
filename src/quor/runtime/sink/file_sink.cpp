#include "quor/runtime/sink/file_sink.h"

#include <sched.h>
#include <time.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <utility>

#include "quor/runtime/process/clock.h"
#include "records/record_fields.h"

namespace {

constexpr int kCommitWaits = 100;

std::uint64_t MonotonicNs() {
  timespec time{};
  clock_gettime(CLOCK_MONOTONIC_COARSE, &time);
  return static_cast<std::uint64_t>(time.tv_sec) * kSecondNs +
         static_cast<std::uint64_t>(time.tv_nsec);
}

std::size_t HeaderIn(Bytes buffer) {
  return buffer[0] == static_cast<std::uint8_t>(kTrcHeader[0]) ? kTrcHeaderBytes : 0;
}

// With its tag.
std::size_t RecordBytes(const std::uint8_t* record) {
  const std::uint8_t* const body = record + kTagBytes;
  return kTagBytes + (*record == kTagName ? RawAppName(body).Size() : RawAppTrace(body).Size());
}

}  // namespace

FileSink::FileSink(const SegmentMap& segment, const NameTable& names, const LossNames& lossNames,
                   std::string path, const SinkOptions& options)
    : m_header(segment.Header()),
      m_names(names),
      m_lossNames(lossNames),
      m_options(options),
      m_ring(segment),
      m_files(std::move(path), options),
      m_buffer(new std::uint8_t[kBufferBytes + kSlackBytes]),
      m_losses(new ReportedLoss[kReportedLossesMax]) {}

void FileSink::Begin() {
  m_ring.Resume();
  Ready();
}

void FileSink::End() {
  DrainReserved();
  Push();
  m_ring.EndWait();
  m_files.End();
}

std::size_t FileSink::Drain(std::size_t traces) {
  std::size_t taken = 0;
  RingItem item;
  while (taken < traces && m_ring.Next(item) == RingStep::Item) {
    Take(item);
    ++taken;
    if (m_used == 0) m_ring.Publish();
  }
  return taken;
}

void FileSink::DrainReserved() {
  const std::uint64_t target = m_ring.Traces() + m_ring.Uncommitted();
  for (int waits = 0; m_ring.Traces() < target && waits < kCommitWaits;) {
    const std::uint64_t before = m_ring.Traces();
    Drain(target - before);
    if (m_ring.Traces() != before) continue;
    sched_yield();
    ++waits;
  }
  Drain(1);  // drops after the last trace
}

void FileSink::Push() {
  if (m_missed != 0 && Ready()) ReportMissed();
  PushBuffer();
  m_ring.Publish();
}

void FileSink::PushBuffer() {
  if (m_used == 0) return;
  std::size_t written = 0;
  const bool whole = m_files.Write(m_buffer.get(), m_used, &written);
  if (!whole && errno == ESTALE && written == 0 && MoveOn()) return WriteOut();
  if (!whole) LoseFrom(written, errno);
  EmptyBuffer();
}

void FileSink::WriteOut() {
  std::size_t written = 0;
  if (m_used != 0 && !m_files.Write(m_buffer.get(), m_used, &written)) LoseFrom(written, errno);
  EmptyBuffer();
}

void FileSink::EmptyBuffer() {
  m_used = 0;
  m_lossCount = 0;
}

// Only whole records stay in a file: a torn record would swallow the records written after it.
FileSink::Unwritten FileSink::UnwrittenAfter(std::size_t written) const {
  const Bytes buffer(m_buffer.get(), m_used);
  Unwritten unwritten;
  std::size_t at = HeaderIn(buffer);
  if (at <= written) unwritten.whole = at;
  for (std::size_t loss = 0; at < buffer.size();) {
    const std::uint8_t* const record = buffer.data() + at;
    const bool reported = ReportsLoss(loss, m_lossCount, at);
    at += RecordBytes(record);
    if (at <= written) {
      unwritten.whole = at;
    } else if (reported) {
      (m_losses[loss].known ? unwritten.known : unwritten.news) += m_losses[loss].lost;
    } else if (*record != kTagName) {
      ++unwritten.traces;
    }
    if (reported) ++loss;
  }
  return unwritten;
}

void FileSink::LoseFrom(std::size_t written, int error) {
  const Unwritten unwritten = UnwrittenAfter(written);
  m_files.TakeBack(written - unwritten.whole);
  m_written.Clear();  // it does not matter which names reached the file: they are written again
  Fail(unwritten.traces, error);
  Miss(unwritten.news);
  m_missed += unwritten.known;
}

// Begins another file under the name. The buffered records go there, with the names that only the
// old file has.
bool FileSink::MoveOn() {
  if (!m_files.Renew()) return false;
  if (m_files.Size() != 0) return true;  // still the old file
  // Far enough from the front for everything that may be put before it.
  std::uint8_t* const from = m_buffer.get() + kBufferBytes + kSlackBytes - m_used;
  const Bytes old(from, m_used);
  std::memmove(from, m_buffer.get(), m_used);
  const std::size_t losses = m_lossCount;
  BeginFile();
  for (std::size_t at = HeaderIn(old), loss = 0; at < old.size();) {
    const std::uint8_t* const record = from + at;
    const bool reported = ReportsLoss(loss, losses, at);
    at += RecordBytes(record);
    if (*record == kTagName) continue;
    const RawAppTrace trace(record + kTagBytes);
    const std::size_t offset =
        AppendTrace({record + kTagBytes, trace.Size()}, trace.SequenceNumber());
    // In place: of those before it no more are noted again than have been read.
    if (reported) NoteLoss(offset, m_losses[loss].lost, m_losses[loss].known);
    if (reported) ++loss;
    if (m_used < kBufferBytes) continue;
    WriteOut();
    if (m_files.Size() == 0) BeginFile();
  }
  return true;
}

bool FileSink::TakeReport(Report* report, bool last) {
  if (m_error == 0 && m_unreported == 0) return false;
  const std::uint64_t now = MonotonicNs();
  if (now < m_reportNs && !last) return false;
  m_reportNs = now + kSecondNs;
  *report = {std::exchange(m_unreported, 0), std::exchange(m_error, 0)};
  return true;
}

void FileSink::Abandon() {
  EmptyBuffer();
  m_files.Abandon();
}

// Is there a file to write to? After a failure the same file is tried again after a pause, so that
// a full disk does not number the good files away.
bool FileSink::Ready() {
  if (__builtin_expect(m_retryNs == 0 && m_files.IsOpen(), 1)) return true;
  if (MonotonicNs() < m_retryNs) return false;
  m_retryNs = 0;
  if (!m_files.IsOpen() && !m_files.Begin()) {
    Fail(0, errno);
    return false;
  }
  if (m_files.Size() == 0) BeginFile();
  return true;
}

void FileSink::Take(const RingItem& item) {
  if (!Ready()) {
    Miss(item.dropsBefore + item.damagedBefore);
    if (!item.trace.empty()) Fail(1, 0);
    return;
  }
  if (m_missed != 0) ReportMissed();
  if (item.dropsBefore != 0) AppendLoss(item.dropsBefore, "the ring was full", false);
  if (item.damagedBefore != 0) AppendLoss(item.damagedBefore, "damaged in memory", false);
  if (!item.trace.empty()) TakeTrace(item.trace);
  if (m_used >= kBufferBytes) PushBuffer();
}

void FileSink::TakeTrace(Bytes trace) {
  if (IsFullBy(trace)) {
    PushBuffer();
    m_files.End();
    if (!Ready()) {
      Fail(1, 0);
      return;
    }
  }
  if (++m_number == kNoSequenceNumber) m_number = 0;
  AppendTrace(trace, m_number);
}

// Every file takes at least one trace, however long the trace is.
bool FileSink::IsFullBy(Bytes trace) const {
  const std::uint64_t size = m_files.Size() + m_used;
  if (m_options.maxBytes == 0 || size <= kTrcHeaderBytes) return false;
  if (size + kTagBytes + trace.size() > m_options.maxBytes) return true;
  std::uint64_t names = 0;
  for (const AppNameId id : RawAppTrace(trace.data()).Ids().All())
    if (!m_written.Has(id)) names += kNameRecordBytes + m_names.Text(id).size();
  return size + kTagBytes + trace.size() + names > m_options.maxBytes;
}

std::size_t FileSink::AppendTrace(Bytes trace, std::uint32_t number) {
  AppendNames(trace.data());
  const std::size_t offset = m_used;
  std::uint8_t* const to = m_buffer.get() + offset;
  m_used += kTagBytes + trace.size();
  to[0] = kTagTrace;
  std::memcpy(to + kTagBytes, trace.data(), trace.size());
  StoreBe32(to + kTagBytes + TraceAt::kCount, number);
  return offset;
}

void FileSink::AppendNames(const std::uint8_t* trace) {
  for (const AppNameId id : RawAppTrace(trace).Ids().All())
    if (!m_written.Has(id)) AppendName(id);
}

void FileSink::AppendName(AppNameId id) {
  m_used += StoreNameRecord(m_buffer.get() + m_used, id, m_names.Text(id));
  m_written.Add(id);
}

void FileSink::AppendLoss(std::uint64_t lost, const char* reason, bool known) {
  const Stamp now = TraceClock::ByKernel();
  RecordFieldsOf<AppNameId> fields;
  fields.machine = m_lossNames.machine;
  fields.app = m_lossNames.app;
  fields.component = m_lossNames.component;
  fields.category = m_lossNames.category;
  fields.pid = m_lossNames.pid;
  fields.tid = m_lossNames.tid;
  fields.date = now.date;
  fields.time = now.time;
  fields.ticCount = now.ticPs;
  fields.attributes = kAttributeWarn;
  char text[96];
  const int length = std::snprintf(text, sizeof text, "%llu traces lost: %s",
                                   static_cast<unsigned long long>(lost), reason);
  std::uint8_t trace[kTraceFixedBytes + sizeof text];
  fields.text = {text, static_cast<std::size_t>(length)};
  StoreRecord(trace, fields);
  const std::size_t offset =
      AppendTrace({trace, kTraceFixedBytes + fields.text.size()}, kNoSequenceNumber);
  NoteLoss(offset, lost, known);
}

void FileSink::NoteLoss(std::size_t offset, std::uint64_t lost, bool known) {
  m_losses[m_lossCount++] = {offset, lost, known};
}

bool FileSink::ReportsLoss(std::size_t loss, std::size_t losses, std::size_t offset) const {
  return loss < losses && m_losses[loss].offset == offset;
}

void FileSink::ReportMissed() {
  AppendLoss(std::exchange(m_missed, 0), "the file could not be written", true);
}

void FileSink::BeginFile() {
  EmptyBuffer();
  m_written.Clear();
  std::memcpy(m_buffer.get(), kTrcHeader, kTrcHeaderBytes);
  m_used = kTrcHeaderBytes;
}

void FileSink::Fail(std::uint64_t lost, int error) {
  if (error != 0) {
    m_error = error;
    m_retryNs = MonotonicNs() + kSecondNs;
  }
  m_header->sinkLost.fetch_add(lost, std::memory_order_relaxed);
  Miss(lost);
}

// Reported to the service, and in the file as soon as it can be written again.
void FileSink::Miss(std::uint64_t lost) {
  m_missed += lost;
  m_unreported += lost;
  m_header->sinkUnreported.fetch_add(lost, std::memory_order_relaxed);
}
