#include "quor/runtime/runtime.h"

#include <fcntl.h>
#include <pthread.h>
#include <sys/random.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <new>

#include "quor/ring/cut_length.h"
#include "quor/runtime/link_thread.h"
#include "quor/runtime/process/stack.h"

namespace {

std::uint64_t NowNs(clockid_t clock) {
  timespec time{};
  clock_gettime(clock, &time);
  return static_cast<std::uint64_t>(time.tv_sec) * 1'000'000'000u +
         static_cast<std::uint64_t>(time.tv_nsec);
}

// Never 0.
std::uint64_t CoarseMs() {
  return NowNs(CLOCK_MONOTONIC_COARSE) / 1'000'000u + 1;
}

std::uint64_t HardToGuess() {
  std::uint64_t number = 0;
  if (getrandom(&number, sizeof number, GRND_NONBLOCK) != sizeof number)
    number =
        NowNs(CLOCK_MONOTONIC) * 0x9E3779B97F4A7C15u ^ reinterpret_cast<std::uintptr_t>(&number);
  return number;
}

SegmentSizes WantedSizes() {
  SegmentSizes sizes;
  const char* const megabytes = secure_getenv("QUOR_RING_MIB");
  const unsigned long wanted = megabytes ? std::strtoul(megabytes, nullptr, 10) : 0;
  if (wanted >= 1 && wanted <= SegmentMap::kRingBytesMax >> 20) {
    sizes.ringBytes = 1u << 20;
    while (sizes.ringBytes < wanted << 20) sizes.ringBytes <<= 1;
  }
  return sizes;
}

std::string_view MachineName(char (&buffer)[256]) {
  if (gethostname(buffer, sizeof buffer) != 0) return "localhost";
  buffer[sizeof buffer - 1] = '\0';
  return {buffer, std::strcspn(buffer, ".")};
}

std::string_view ExecutableName(char (&buffer)[4096]) {
  const ssize_t length = readlink("/proc/self/exe", buffer, sizeof buffer);
  if (length <= 0) return "application";
  const std::string_view path(buffer, static_cast<std::size_t>(length));
  return path.substr(path.rfind('/') + 1);
}

// Memory that the service cannot find is sent over the link, which needs a descriptor too.
bool HasDescriptorLeft() {
  const int another = open("/", O_PATH | O_CLOEXEC);
  if (another >= 0) close(another);
  return another >= 0;
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
  if (HasRing()) return true;
  if (!MayTry()) return false;
  OwnerGuard guard(m_lock);
  return guard && StartLocked();
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

void Runtime::StartSegment() {
  const ServiceEnvironment environment = ReadServiceEnvironment();
  SegmentFolder folder;
  SegmentMap segment;
  if (!MakeSegment(segment, folder, environment)) return;
  FillSegment(segment);
  m_hot.ring = RingProducer(m_segment);
  HandOverLost();
  RegisterDeclared();
  // Before the first trace: so the service finds it whatever happens to this process.
  folder.Show();
  m_hot.generation.store(++m_lastGeneration);
  HandOverLost();  // losses of traces that found no ring until now
  LinkThread::Get().Start(environment);
}

// In a file that the service finds; if that is impossible, in memory that is sent to it later.
bool Runtime::MakeSegment(SegmentMap& segment, SegmentFolder& folder,
                          const ServiceEnvironment& environment) {
  const std::uint64_t startedNs = NowNs(CLOCK_REALTIME), salt = HardToGuess();
  const SegmentSizes sizes = WantedSizes();
  const std::string path = ServiceSocketPath(environment);
  const bool found =
      folder.Open(path) || (PrepareSocketFolder(path, nullptr, environment) && folder.Open(path));
  int file = found ? folder.NewFile(startedNs, HardToGuess()) : -1;
  // A service that just ended has removed the folder.
  if (found && file < 0 && errno == ENOENT && folder.Open(path))
    file = folder.NewFile(startedNs, HardToGuess());
  if (file >= 0 && segment.Create(sizes, startedNs, salt, file) && HasRoomForAll(segment))
    return true;
  folder.Discard();
  return segment.Create(sizes, startedNs, salt) && HasRoomForAll(segment) && HasDescriptorLeft();
}

// For the names and points that a fork's child copies.
bool Runtime::HasRoomForAll(const SegmentMap& segment) const {
  return !m_segment || (segment.NamesMemory().Reach(m_names.UsedBytes()) &&
                        segment.PointsMemory().Reach(m_points.Count() * sizeof(SegmentPoint)));
}

// Fills the first segment, or in a fork's child one with all names and points of the parent.
void Runtime::FillSegment(SegmentMap& segment) {
  const bool first = !m_segment;
  if (first) {
    m_hot.clock.Begin();
    m_names.Begin(segment);
    m_points.Begin(segment, m_names);
  } else {
    m_names.Move(segment);
    m_points.Move(segment);
    m_segment.Abandon();
  }
  m_segment = std::move(segment);
  char machine[256], pid[16], path[4096];
  m_hot.machine = m_names.Enter(MachineName(machine));
  m_hot.unknownThread = m_names.Enter("?");
  m_names.Enter("Loss");  // for the file sink: there must be room for it later
  std::snprintf(pid, sizeof pid, "%d", static_cast<int>(getpid()));
  m_hot.pid = m_names.Enter(pid);
  m_hot.app.store(m_names.Enter(m_appName[0] ? std::string_view(m_appName) : ExecutableName(path)));
  SegmentHeader* const header = m_segment.Header();
  header->machineName = m_hot.machine;
  header->pidName = m_hot.pid;
  header->appName = m_hot.app.load();
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
