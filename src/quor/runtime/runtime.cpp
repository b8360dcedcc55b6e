#include "quor/runtime/runtime.h"

#include <pthread.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <new>

#include "quor/ring/cut_length.h"
#include "quor/runtime/link_thread.h"
#include "quor/runtime/process/stack.h"

namespace {

// Never 0.
std::uint64_t CoarseMs() {
  timespec time{};
  clock_gettime(CLOCK_MONOTONIC_COARSE, &time);
  return static_cast<std::uint64_t>(time.tv_sec) * 1000 +
         static_cast<std::uint64_t>(time.tv_nsec) / 1'000'000 + 1;
}

// Raw storage: constructed before the first use, never destroyed.
alignas(Runtime) unsigned char g_storage[sizeof(Runtime)];
std::atomic<int> g_constructed{0};  // 0: no, 1: being done, 2: done

}  // namespace

Runtime& Runtime::Get() {
  auto* const runtime = reinterpret_cast<Runtime*>(g_storage);
  if (__builtin_expect(g_constructed.load(std::memory_order_acquire) == 2, 1)) return *runtime;
  int expected = 0;
  if (g_constructed.compare_exchange_strong(expected, 1, std::memory_order_acquire)) {
    // Default-initialised: the large tables stay untouched zero pages until they are used.
    new (g_storage) Runtime;
    pthread_atfork([] { Get().BeforeFork(); }, [] { Get().AfterForkInParent(); },
                   [] { Get().AfterForkInChild(); });
    g_constructed.store(2, std::memory_order_release);
  }
  while (g_constructed.load(std::memory_order_acquire) != 2) sched_yield();
  return *runtime;
}

bool Runtime::Start() {
  if (HasRing()) {
    LinkThread::Get().AwaitAnswer();
    return true;
  }
  if (!MayTry()) return false;
  {
    OwnerGuard guard(m_lock);
    if (!guard || !StartLocked()) return false;
  }
  PrimeForStart();
  LinkThread::Get().AwaitAnswer();
  return true;
}

// Without the lock: see TakeSettings.
void Runtime::PrimeForStart() {
  if (m_primes.load(std::memory_order_relaxed) && m_primes.exchange(false)) PrimeStack();
}

// What the start lacked, descriptors or memory, may be available later.
bool Runtime::StartLocked() {
  if (HasRing()) return true;
  if (!MayTry()) return false;
  try {
    StartSegment();
  } catch (...) {  // without memory
  }
  if (HasRing()) return true;
  m_pauseMs = std::min(2 * m_pauseMs, kTryPauseMaxMs);
  m_nextTryMs.store(CoarseMs() + m_pauseMs, std::memory_order_relaxed);
  return false;
}

bool Runtime::MayTry() const {
  const std::uint64_t next = m_nextTryMs.load(std::memory_order_relaxed);
  return next == 0 || CoarseMs() >= next;
}

void Runtime::NameApplication(const char* name) {
  bool renamed = false;
  {
    OwnerGuard guard(m_lock);
    if (!guard) return;
    if (name && *name) {
      const std::size_t length = CutLength(name, std::strlen(name), sizeof m_appName - 1);
      std::memcpy(m_appName, name, length);
      m_appName[length] = '\0';
    }
    if (!StartLocked()) return;
    RegisterDeclared();
    const AppNameId app = m_appName[0] ? m_names.Enter(m_appName) : m_hot.app.load();
    renamed = m_hot.app.exchange(app) != app;
    m_segment.Header()->appName = app;
  }
  PrimeForStart();
  LinkThread::Get().AwaitAnswer();
  // A name that comes after the first trace is sent with a new hello.
  if (renamed) LinkThread::Get().ReportName();
  LinkThread::Get().ReportPoints();
}

// Counts first, then checks for a ring. The start of a ring does the two in the other order, so
// that one of the two threads hands the count over.
void Runtime::CountLost() {
  m_lostOutside.fetch_add(1);
  if (m_hot.generation.load() != 0) HandOverLost();
}

void Runtime::HandOverLost() {
  const std::uint64_t lost = m_lostOutside.exchange(0);
  if (lost != 0) m_hot.ring.CountDrops(lost);
}

void Runtime::ReportLost() {
  if (HasRing() || m_lostOutside.load() == 0) return;
  m_nextTryMs.store(0, std::memory_order_relaxed);
  Start();
}

void Runtime::Declare(quor_point* point) {
  // The mark keeps a point that is declared twice from being linked to itself.
  if (__atomic_exchange_n(&point->reserved, 1u, __ATOMIC_RELAXED) != 0) return;
  // A module that is loaded later registers immediately, because the application has started.
  if (m_hot.generation.load(std::memory_order_acquire) != 0) {
    Register(point);
    return;
  }
  point->next = m_declared.load(std::memory_order_relaxed);
  while (!m_declared.compare_exchange_weak(point->next, point, std::memory_order_release)) {
  }
}

void Runtime::RegisterDeclared() {
  quor_point* point = m_declared.exchange(nullptr, std::memory_order_acquire);
  // They were pushed newest first; the trace map needs the order of the declarations.
  quor_point* inOrder = nullptr;
  while (point) {
    quor_point* const next = point->next;
    point->next = inOrder;
    inOrder = point;
    point = next;
  }
  while (inOrder) {
    quor_point* const next = inOrder->next;
    RegisterLocked(inOrder);
    inOrder = next;
  }
}

void Runtime::RegisterLocked(quor_point* point) {
  if (__atomic_load_n(&point->settings, __ATOMIC_RELAXED) != QUOR_UNREGISTERED) return;
  m_points.Register(point, m_names);
}

bool Runtime::Register(quor_point* point) {
  if (!Start()) return false;
  {
    OwnerGuard guard(m_lock);
    if (!guard) return false;
    if (!StartLocked()) return false;
    RegisterDeclared();
    RegisterLocked(point);
  }
  LinkThread::Get().ReportPoints();
  return true;
}

void Runtime::TakeSettings() {
  // Before the first trace with a stack, which may happen where nothing can be loaded. Without the
  // lock, because the loader may run code that registers points.
  if (m_segment && (m_points.AnySettings() & QUOR_STACK) != 0) PrimeStack();
  OwnerGuard guard(m_lock);
  if (guard && m_segment) m_points.TakeSettings();
}

void Runtime::TakeKept(const std::string& rules) {
  SettingsText kept = SettingsText::Read(rules);
  if ((kept.AnySettings() & QUOR_STACK) != 0) PrimeStack();  // as above
  OwnerGuard guard(m_lock);
  if (guard) std::swap(m_kept, kept);
}

AppNameId Runtime::EnterName(std::string_view text) {
  OwnerGuard guard(m_lock);
  return guard ? m_names.Enter(text) : m_hot.unknownThread;
}

void Runtime::Count(quor_counts* counts) {
  const std::uint64_t outside = m_lostOutside.load(std::memory_order_relaxed);
  *counts = {outside, outside};
  // Between a fork and the child's first trace the segment is still the parent's.
  if (!HasRing()) return;
  SegmentHeader* const header = m_segment.Header();
  const std::uint64_t mark = header->reserved.load(std::memory_order_acquire);
  const std::uint64_t consumed = header->consumed.load(std::memory_order_acquire);
  const std::uint64_t taken = ring_mark::Widen(
      header->consumedTraces.load(std::memory_order_relaxed), ring_mark::Count(consumed));
  const std::uint32_t inRing =
      (ring_mark::Count(mark) - ring_mark::Count(consumed)) & ring_mark::kCountMask;
  const std::uint64_t dropped = header->dropped.load(std::memory_order_relaxed);
  counts->traced += taken + inRing + dropped;
  counts->lost += dropped + header->sinkLost.load(std::memory_order_relaxed);
}

void Runtime::BeforeFork() {
  // In the order in which the link thread takes them.
  LinkThread::Get().BeforeFork();
  m_heldAtFork = !m_lock.Lock();
}

void Runtime::AfterForkInParent() {
  if (!m_heldAtFork) m_lock.Unlock();
  LinkThread::Get().AfterForkInParent();
}

void Runtime::AfterForkInChild() {
  m_lock.AfterFork(m_heldAtFork);
  m_hot.generation.store(0, std::memory_order_relaxed);
  m_hot.pushEach.store(false, std::memory_order_relaxed);
  m_lostOutside.store(0, std::memory_order_relaxed);
  m_nextTryMs.store(0, std::memory_order_relaxed);
  m_pauseMs = kTryPauseMinMs;
  m_hot.clock.AfterFork();
  LinkThread::Get().AfterForkInChild();
  m_segment.Detach(m_points.Count(), m_names.UsedBytes());
}
