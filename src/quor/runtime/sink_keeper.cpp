#include "quor/runtime/sink_keeper.h"

#include <time.h>

#include <algorithm>
#include <memory>
#include <utility>

#include "base/fail_with.h"
#include "quor/ring/ring_claim.h"
#include "quor/runtime/runtime.h"

namespace {

constexpr std::size_t kDrainTraces = 8192;
constexpr int kBusyPauseMs = 4;    // between drains of a busy ring
constexpr int kIdlePauseMs = 250;  // failures in another thread's push are reported by then
constexpr std::uint64_t kIdlePushMs = 100;  // buffered bytes are written to the file after that

std::uint64_t CoarseNowMs() {
  timespec time{};
  clock_gettime(CLOCK_MONOTONIC_COARSE, &time);
  return static_cast<std::uint64_t>(time.tv_sec) * 1000 +
         static_cast<std::uint64_t>(time.tv_nsec) / 1'000'000;
}

int AfterDrain(FileSink& sink, std::size_t taken) {
  if (taken == kDrainTraces) return 0;
  if (taken != 0) return kBusyPauseMs;
  switch (sink.BeginWait()) {
    case RingConsumer::Wait::Ready:
      return 0;
    case RingConsumer::Wait::Soon:
      return RingConsumer::kRecheckMs;
    default:
      return kIdlePauseMs;
  }
}

LinkReport AsReport(const std::string& path, const FileSink::Report& report) {
  const std::string why = report.error != 0 ? SystemReason(report.error) : "cannot be written";
  return {report.lost, path + ": " + why};
}

}  // namespace

std::unique_ptr<FileSink> SinkKeeper::Make(const LinkSink& sink, const SinkOptions& options) {
  Runtime& runtime = Runtime::Get();
  const HotState& hot = runtime.Hot();
  const FileSink::LossNames names = {hot.machine, hot.app.load(), hot.quor,
                                     hot.loss,    hot.pid,        hot.unknownThread};
  return std::make_unique<FileSink>(runtime.Segment(), runtime.Names(), names, sink.name, options);
}

void SinkKeeper::Begin(const std::optional<LinkSink>& sink) {
  if (!sink || sink->kind != SinkKind::File) return;
  const SinkOptions options = SinkOptions::Parse(sink->options);
  std::unique_ptr<FileSink> next = Make(*sink, options);
  LinkSink setting = *sink;
  if (!ClaimRing(*Runtime::Get().Segment().Header(), RingClaim::Application)) return;
  std::swap(m_setting, setting);
  next->Begin();
  delete m_sink.exchange(next.release());  // of a start that has failed
  Runtime::Get().Hot().pushEach.store(options.flush || m_ending.load());
}

void SinkKeeper::Set(const LinkSink& sink) {
  Runtime& runtime = Runtime::Get();
  HotState& hot = runtime.Hot();
  FileSink* const old = m_sink.load();
  const bool file = sink.kind == SinkKind::File;
  const bool same = sink.name == m_setting.name && sink.options == m_setting.options;
  if (file ? old && same : !old) return;
  LinkSink setting = sink;
  const SinkOptions options = file ? SinkOptions::Parse(sink.options) : SinkOptions();
  std::unique_ptr<FileSink> next;
  if (file) next = Make(sink, options);
  {
    OwnerGuard guard(m_lock);
    SegmentHeader& header = *runtime.Segment().Header();
    // A link that has ended sent this order: by now a service takes traces without a link.
    if (file && !ClaimRing(header, RingClaim::Application)) return;
    std::swap(m_setting, setting);
    if (old) old->End();
    if (next) next->Begin();
    m_sink.store(next.release());
    if (!file) LeaveRing(header, RingClaim::Application);
    hot.pushEach.store(file && (options.flush || m_ending.load()));
  }
  if (!old) return;
  FileSink::Report said;
  if (old->TakeReport(&said, true)) m_left = AsReport(old->Path(), said);
  delete old;
}

int SinkKeeper::Serve() {
  OwnerGuard guard(m_lock);
  FileSink* const sink = m_sink.load();
  if (!guard || !sink) return -1;
  const std::uint64_t now = CoarseNowMs();
  const int wait = AfterDrain(*sink, sink->Drain(kDrainTraces));
  if (!sink->HoldsBytes()) {
    m_pushDueMs = now + kIdlePushMs;
    return wait;
  }
  if (now >= m_pushDueMs) {
    sink->Push();
    m_pushDueMs = now + kIdlePushMs;
    return wait;
  }
  return std::min(wait, static_cast<int>(m_pushDueMs - now));
}

bool SinkKeeper::TakeReport(LinkReport* report, bool last) {
  *report = std::exchange(m_left, {});
  FileSink* const sink = m_sink.load();
  if (!report->text.empty() || !sink) return !report->text.empty();
  FileSink::Report said;
  const std::string* path = nullptr;
  {
    OwnerGuard guard(m_lock);
    if (!guard || !sink->TakeReport(&said, last)) return false;
    path = &sink->Path();
  }
  *report = AsReport(*path, said);
  return true;
}

void SinkKeeper::Push() {
  do {
    m_again.store(false);
    OwnerGuard guard(m_lock);
    if (!guard) {
      // A signal handler has interrupted a push of its own thread: that push will be repeated.
      m_again.store(true);
      return;
    }
    FileSink* const sink = m_sink.load();
    if (!sink) return;
    sink->DrainReserved();
    sink->Push();
  } while (m_again.load());
}

void SinkKeeper::End() {
  m_ending.store(true);
  if (!m_sink.load()) return;
  Runtime::Get().Hot().pushEach.store(true);
  Push();
}

void SinkKeeper::BeforeFork() {
  m_heldAtFork = !m_lock.Lock();
}

void SinkKeeper::AfterForkInParent() {
  if (!m_heldAtFork) m_lock.Unlock();
}

void SinkKeeper::AfterForkInChild() {
  m_lock.AfterFork(m_heldAtFork);
  // Abandoned, not destroyed: code that the fork interrupted may still be in it.
  if (FileSink* const sink = m_sink.exchange(nullptr)) sink->Abandon();
  // Constructed again, not assigned: the parent's thread may have been changing them.
  new (&m_setting) LinkSink;
  new (&m_left) LinkReport;
}
