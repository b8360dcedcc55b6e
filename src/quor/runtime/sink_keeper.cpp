#include "quor/runtime/sink_keeper.h"

#include <time.h>

#include <algorithm>

#include "quor/runtime/runtime.h"

namespace {

constexpr std::size_t kDrainTraces = 8192;
constexpr int kBusyPauseMs = 4;             // between drains of a busy ring
constexpr int kIdlePauseMs = 250;           // what a push of another thread met is reported by then
constexpr std::uint64_t kIdlePushMs = 100;  // what is buffered reaches the file after that

std::uint64_t NowMs() {
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

}  // namespace

void SinkKeeper::Set(const LinkSink& sink) {
  Runtime& runtime = Runtime::Get();
  HotState& hot = runtime.Hot();
  OwnerGuard guard(m_lock);
  FileSink* const old = m_sink.load();
  const bool file = sink.kind == SinkKind::File;
  const bool same = sink.name == m_setting.name && sink.options == m_setting.options;
  if (!guard || (file ? old && same : !old)) return;
  m_setting = sink;
  hot.pushEach.store(false);
  if (old) {
    while (old->Drain(kDrainTraces) != 0) {
    }
    old->EndWait();
    m_sink.store(nullptr);
    delete old;
  }
  if (!file) return;
  const SinkOptions options = SinkOptions::Parse(sink.options);
  const FileSink::LossNames names = {
      hot.machine, hot.app.load(),   runtime.EnterName("Quor"), runtime.EnterName("Loss"),
      hot.pid,     hot.unknownThread};
  m_sink.store(new FileSink(runtime.Segment(), runtime.Names(), names, sink.name, options));
  hot.pushEach.store(options.flush || m_ending.load());
}

int SinkKeeper::Serve() {
  OwnerGuard guard(m_lock);
  FileSink* const sink = m_sink.load();
  if (!guard || !sink) return -1;
  const std::uint64_t now = NowMs();
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

bool SinkKeeper::TakeReport(LinkReport* report) {
  OwnerGuard guard(m_lock);
  FileSink* const sink = m_sink.load();
  return guard && sink && sink->TakeReport(&report->lost, &report->text);
}

void SinkKeeper::Push() {
  do {
    m_again.store(false);
    OwnerGuard guard(m_lock);
    if (!guard) {
      // A signal handler that interrupted a push of its own thread: that one does it once more.
      m_again.store(true);
      return;
    }
    FileSink* const sink = m_sink.load();
    if (!sink) return;
    while (sink->Drain(kDrainTraces) == kDrainTraces) {
    }
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
  // Left behind, not destroyed: destruction would write the parent's traces a second time.
  if (FileSink* const sink = m_sink.exchange(nullptr)) sink->Abandon();
  m_setting = LinkSink();
}
