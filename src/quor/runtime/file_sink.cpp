#include "quor/runtime/file_sink.h"

#include <time.h>

#include <algorithm>
#include <cstdio>
#include <utility>

#include "quor/ring/trace_bytes.h"
#include "quor/runtime/clock.h"

namespace {

constexpr std::uint64_t kSecondNs = 1'000'000'000;

std::uint64_t MonotonicNs() {
  timespec time{};
  clock_gettime(CLOCK_MONOTONIC_COARSE, &time);
  return static_cast<std::uint64_t>(time.tv_sec) * kSecondNs +
         static_cast<std::uint64_t>(time.tv_nsec);
}

// How many of the first `written` bytes are whole records, and how many numbered traces they hold.
// Only these stay in a file: a torn record would swallow whatever is written behind it.
std::size_t WholeRecords(Bytes buffer, std::size_t written, std::uint64_t* traces) {
  std::size_t at = buffer[0] == static_cast<std::uint8_t>(kTrcHeader[0]) ? kTrcHeaderBytes : 0;
  if (at > written) return 0;
  while (at < buffer.size()) {
    const std::uint8_t* const record = buffer.data() + at;
    const bool name = *record == kTagName;
    const std::size_t size =
        1 + (name ? kNameBodyBytes + LoadBe16(record + 3) : RawTrace(record + 1).Size());
    if (at + size > written) break;
    at += size;
    if (!name && RawTrace(record + 1).SequenceNumber() != kNoSequenceNumber) ++*traces;
  }
  return at;
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
      m_buffer(new std::uint8_t[kBufferBytes + kSlackBytes]) {
  Ready();
}

FileSink::~FileSink() {
  Push();
  m_ring.Publish();
}

std::size_t FileSink::Drain(std::size_t traces) {
  std::size_t taken = 0;
  RingItem item;
  while (taken < traces && m_ring.Next(item) == RingStep::Item) {
    Take(item);
    // The room is given back in batches: the producers look at it only when they run out.
    if (++taken % 256 == 0) m_ring.Publish();
  }
  if (taken != 0) m_ring.Publish();
  return taken;
}

void FileSink::Push() {
  if (m_used == 0) return;
  std::size_t written = 0;
  std::string why;
  if (!m_files.Write(m_buffer.get(), m_used, &written, &why)) {
    std::uint64_t traces = 0;
    m_files.TakeBack(written - WholeRecords({m_buffer.get(), m_used}, written, &traces));
    m_written.reset();  // which of its names reached the file does not matter: they come again
    Fail(m_buffered - traces, why);
  }
  m_used = 0;
  m_buffered = 0;
}

bool FileSink::TakeReport(std::uint64_t* lost, std::string* text) {
  if (m_why.empty() && m_unreported == 0) return false;
  const std::uint64_t now = MonotonicNs();
  if (now < m_reportNs) return false;
  m_reportNs = now + kSecondNs;
  *lost = std::exchange(m_unreported, 0);
  *text = std::exchange(m_why, {});
  if (text->empty()) *text = m_files.Path() + ": cannot be written";
  return true;
}

void FileSink::Abandon() {
  m_used = 0;
  m_files.Abandon();
}

// Is there a file to write to? After a failure it is tried again when it is time: the same file, so
// that a full disk does not number the good ones away.
bool FileSink::Ready() {
  if (__builtin_expect(m_retryNs == 0 && m_files.IsOpen(), 1)) return true;
  if (MonotonicNs() < m_retryNs) return false;
  m_retryNs = 0;
  std::string why;
  if (!m_files.IsOpen() && !m_files.Begin(&why)) {
    Fail(0, why);
    return false;
  }
  if (m_files.Size() == 0) BeginFile();
  return true;
}

void FileSink::Take(const RingItem& item) {
  if (!Ready()) {
    m_missed += item.dropsBefore + item.damagedBefore;
    if (!item.trace.empty()) Fail(1, {});
    return;
  }
  if (m_missed != 0) AppendLoss(std::exchange(m_missed, 0), "the file could not be written");
  if (item.dropsBefore != 0) AppendLoss(item.dropsBefore, "the ring was full");
  if (item.damagedBefore != 0) AppendLoss(item.damagedBefore, "damaged in memory");
  if (item.trace.empty()) return;
  if (m_options.maxBytes != 0 && m_files.Size() + m_used + item.trace.size() > m_options.maxBytes &&
      m_files.Size() + m_used > kTrcHeaderBytes) {
    Push();
    m_files.End();
    if (!Ready()) {
      Fail(1, {});
      return;
    }
  }
  if (++m_number == kNoSequenceNumber) m_number = 0;
  AppendTrace(item.trace, m_number);
  ++m_buffered;
  if (m_used >= kBufferBytes) Push();
}

void FileSink::AppendTrace(Bytes trace, std::uint32_t number) {
  AppendNames(trace.data());
  std::uint8_t* const to = m_buffer.get() + m_used;
  m_used += 1 + trace.size();
  to[0] = kTagTrace;
  std::memcpy(to + 1, trace.data(), trace.size());
  StoreBe32(to + 1, number);
}

void FileSink::AppendNames(const std::uint8_t* trace) {
  const RawTrace raw(trace);
  for (const NameId id : {raw.MachineId(), raw.AppId(), raw.ComponentId(), raw.CategoryId(),
                          raw.PidId(), raw.TidId(), raw.SourceFileId()})
    if (!m_written.test(id)) AppendName(id);
}

void FileSink::AppendName(NameId id) {
  const std::string_view text = m_names.Text(id);
  std::uint8_t* const to = m_buffer.get() + m_used;
  to[0] = kTagName;
  m_used += 1 + StoreName(to + 1, id, text);
  m_written.set(id);
}

void FileSink::AppendLoss(std::uint64_t lost, const char* reason) {
  const Stamp now = TraceClock::ByKernel();
  TraceFields fields;
  fields.machine = m_lossNames.machine;
  fields.app = m_lossNames.app;
  fields.component = m_lossNames.component;
  fields.category = m_lossNames.category;
  fields.pid = m_lossNames.pid;
  fields.tid = m_lossNames.tid;
  fields.date = now.date;
  fields.time = now.time;
  fields.ticPs = now.ticPs;
  fields.attributes = kAttributeWarn;
  char text[96];
  const int length = std::snprintf(text, sizeof text, "%llu traces lost: %s",
                                   static_cast<unsigned long long>(lost), reason);
  std::uint8_t trace[RawTrace::kFixedBytes + sizeof text];
  StoreTrace(trace, fields, {text, static_cast<std::size_t>(length)}, {});
  AppendTrace({trace, RawTrace::kFixedBytes + static_cast<std::size_t>(length)}, kNoSequenceNumber);
}

void FileSink::BeginFile() {
  m_written.reset();
  std::memcpy(m_buffer.get(), kTrcHeader, kTrcHeaderBytes);
  m_used = kTrcHeaderBytes;
  m_buffered = 0;
}

void FileSink::Fail(std::uint64_t lost, const std::string& why) {
  if (!why.empty()) {
    m_why = why;
    m_retryNs = MonotonicNs() + kSecondNs;
  }
  m_missed += lost;
  m_unreported += lost;
  m_header->sinkLost.fetch_add(lost, std::memory_order_relaxed);
}
