// The C interface: tracing, and the few functions around it.
#include <signal.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string_view>

#include "quor/ring/cut_length.h"
#include "quor/runtime/keep_loaded.h"
#include "quor/runtime/link_thread.h"
#include "quor/runtime/process/errno_keeper.h"
#include "quor/runtime/process/named_points.h"
#include "quor/runtime/process/stack.h"
#include "quor/runtime/runtime.h"
#include "quor/runtime/trace.h"
#include "records/record_fields.h"

namespace {

constexpr std::size_t kStackTextBytes = 8192;
constexpr std::size_t kStackForWalk = 32 * 1024;

// The state of a thread. Plain data in the initial thread-local block: nothing is allocated at its
// first use and nothing is destroyed at the thread's end.
struct ThreadState {
  std::uint32_t generation;
  AppNameId name;
  bool named;  // by the application: kept over a fork, while the number of the thread changes
};
__attribute__((tls_model("initial-exec"))) thread_local ThreadState t_thread;
// The name that the application gave to a thread when it could not be entered; empty: none. It is
// cut to what fits, because that block is small.
__attribute__((tls_model("initial-exec"))) thread_local char t_laterName[128];

struct Extras {
  AppNameId file{};
  std::uint32_t line = 0;
  std::string_view stack;
};

// False when the text cannot be entered now, because this is a signal handler that interrupted
// another such call. The thread's traces have "?" then, and the next trace tries again.
bool NameThread(Runtime& runtime, std::string_view text, bool named) {
  const AppNameId unknown = runtime.Hot().unknownThread;
  const AppNameId name = runtime.EnterName(text);
  const bool known = name != unknown || text == runtime.Names().Text(unknown);
  const std::uint32_t generation = runtime.Hot().generation.load(std::memory_order_acquire);
  t_thread = {known ? generation : 0, name, named && known};
  return known;
}

// False: there is no ring to write to.
__attribute__((noinline)) bool EnterThread(Runtime& runtime) {
  const ErrnoKeeper keeper;
  if (!runtime.Start()) return false;
  if (t_laterName[0] != '\0') {
    if (NameThread(runtime, t_laterName, true)) t_laterName[0] = '\0';
  } else if (t_thread.named) {
    t_thread.generation = runtime.Hot().generation.load(std::memory_order_acquire);
  } else {
    char number[16];
    const int length = std::snprintf(number, sizeof number, "%d", static_cast<int>(gettid()));
    NameThread(runtime, {number, static_cast<std::size_t>(length)}, false);
  }
  return true;
}

std::uint16_t OneSeverity(unsigned attributes) {
  const unsigned severity = attributes & kSeverityMask;
  if (__builtin_expect((severity & (severity - 1)) != 0 || severity == 0, 0)) {
    const unsigned gravest = (severity & 4) ? 4 : (severity & 2) ? 2 : 1;
    attributes = (attributes & ~static_cast<unsigned>(kSeverityMask)) | gravest;
  }
  return static_cast<std::uint16_t>(attributes & 0x1F);
}

void Write(HotState& hot, const quor_point& point, unsigned attributes, const char* text,
           std::size_t length, AppNameId tid, const Extras* extras) {
  const Stamp now = hot.clock.Now();
  const std::string_view stack = extras ? extras->stack : std::string_view();
  RingProducer::Slot slot;
  if (!hot.ring.Reserve(static_cast<std::uint32_t>(kTraceFixedBytes + length + stack.size()), slot))
    return;
  StoreRecord<AppNameId>(slot.record,
                         {.count = 0,  // the taker of the trace numbers it
                          .machine = hot.machine,
                          .app = hot.app.load(std::memory_order_relaxed),
                          .component = LoadId<AppNameId>(&point.names[0]),
                          .category = LoadId<AppNameId>(&point.names[1]),
                          .date = now.date,
                          .time = now.time,
                          .ticCount = now.ticPs,
                          .pid = hot.pid,
                          .tid = tid,
                          .attributes = OneSeverity(attributes),
                          .sourceFile = extras ? extras->file : AppNameId{},
                          .sourceLine = extras ? extras->line : 0,
                          .text = {text, length},
                          .stack = stack});
  hot.ring.Commit(slot);
}

// The stack of a signal handler may be too small for a walk of it. The handler's trace then says so
// instead of running over the end.
bool HasRoomForWalk() {
  stack_t stack{};
  return sigaltstack(nullptr, &stack) != 0 || (stack.ss_flags & SS_ONSTACK) == 0 ||
         stack.ss_size >= kStackForWalk;
}

// Where a text of a call stack is made. A thread may have a stack of 16 KiB, and half of that would
// be this text.
struct StackRoom {
  std::atomic_flag taken;
  char text[kStackTextBytes];
};
constinit StackRoom g_stackRooms[4]{};

void WriteWithWalk(HotState& hot, const quor_point& point, unsigned attributes, const char* text,
                   std::size_t length, AppNameId tid, Extras& extras, const void* caller,
                   char* room) {
  extras.stack = {room, StackText(room, kStackTextBytes, caller)};
  Write(hot, point, attributes, text, length, tid, &extras);
}

// All rooms are taken, by other threads or by those of the process from which this was forked.
__attribute__((noinline)) void WriteWithOwnRoom(HotState& hot, const quor_point& point,
                                                unsigned attributes, const char* text,
                                                std::size_t length, AppNameId tid, Extras& extras,
                                                const void* caller) {
  char room[kStackTextBytes];
  WriteWithWalk(hot, point, attributes, text, length, tid, extras, caller, room);
}

void WriteWithStack(HotState& hot, const quor_point& point, unsigned attributes, const char* text,
                    std::size_t length, AppNameId tid, Extras& extras, const void* caller) {
  if (HasRoomForWalk()) {
    for (StackRoom& room : g_stackRooms) {
      if (room.taken.test_and_set(std::memory_order_acquire)) continue;
      WriteWithWalk(hot, point, attributes, text, length, tid, extras, caller, room.text);
      return room.taken.clear(std::memory_order_release);
    }
    return WriteWithOwnRoom(hot, point, attributes, text, length, tid, extras, caller);
  }
  extras.stack = "(the signal stack is too small to walk the call stack)";
  Write(hot, point, attributes, text, length, tid, &extras);
}

__attribute__((noinline)) void WriteWithExtras(Runtime& runtime, const quor_point& point,
                                               unsigned attributes, std::uint32_t settings,
                                               const char* file, unsigned line, const char* text,
                                               std::size_t length, AppNameId tid,
                                               const void* caller) {
  const ErrnoKeeper keeper;
  Extras extras;
  if ((settings & QUOR_LOCATION) != 0 && file) {
    extras.file = runtime.EnterName(file);
    extras.line = line;
  }
  if ((settings & QUOR_STACK) != 0)
    WriteWithStack(runtime.Hot(), point, attributes, text, length, tid, extras, caller);
  else
    Write(runtime.Hot(), point, attributes, text, length, tid, &extras);
}

inline void Trace(quor_point* point, unsigned attributes, const char* file, unsigned line,
                  const char* text, std::size_t length, const void* caller) {
  // Acquire: the point's other fields were written before its settings.
  std::uint32_t settings = __atomic_load_n(&point->settings, __ATOMIC_ACQUIRE);
  if ((settings & attributes) != attributes) return;
  if (__builtin_expect(settings == QUOR_UNREGISTERED, 0)) {
    if (!quor_first_use(point, attributes)) return;
    settings = __atomic_load_n(&point->settings, __ATOMIC_ACQUIRE);
  }
  Runtime& runtime = Runtime::Get();
  HotState& hot = runtime.Hot();
  if (__builtin_expect(t_thread.generation != hot.generation.load(std::memory_order_acquire) ||
                           t_thread.generation == 0,
                       0)) {
    if (!EnterThread(runtime)) {
      runtime.CountLost();
      return;
    }
    // The thread may have waited for the service, which has other settings.
    settings = __atomic_load_n(&point->settings, __ATOMIC_ACQUIRE);
    if ((settings & attributes) != attributes) return;
  }
  const AppNameId tid =
      __builtin_expect(t_thread.generation != 0, 1) ? t_thread.name : hot.unknownThread;
  if (__builtin_expect(!text, 0)) text = "", length = 0;
  if (__builtin_expect(length > kLongestText, 0)) length = CutLength(text, length, kLongestText);
  if (__builtin_expect((settings & (QUOR_LOCATION | QUOR_STACK)) != 0, 0))
    WriteWithExtras(runtime, *point, attributes, settings, file, line, text, length, tid, caller);
  else
    Write(hot, *point, attributes, text, length, tid, nullptr);
  if (__builtin_expect(hot.pushEach.load(std::memory_order_relaxed), 0)) {
    const ErrnoKeeper keeper;
    LinkThread::Get().PushSink();
  }
}

__attribute__((destructor)) void AtExit() {
  Runtime& runtime = Runtime::Get();
  runtime.ReportLost();
  if (runtime.HasRing()) LinkThread::Get().AtExit();
}

}  // namespace

void quor_application(const char* name) {
  const ErrnoKeeper keeper;
  Runtime::Get().NameApplication(name);
  LinkThread::Get().StartIfRefused();
}

void quor_declare(quor_point* point) {
  const ErrnoKeeper keeper;
  KeepLoaded(point);
  Runtime::Get().Declare(point);
}

void quor_register(quor_point* point) {
  const ErrnoKeeper keeper;
  Runtime::Get().Register(point);
  LinkThread::Get().StartIfRefused();
}

quor_point* quor_named_point(const char* component, size_t component_length, const char* category,
                             size_t category_length) {
  static constinit NamedPoints points;
  const ErrnoKeeper keeper;
  return points.Find({component, component ? component_length : 0},
                     {category, category ? category_length : 0});
}

int quor_first_use(quor_point* point, unsigned attributes) {
  const ErrnoKeeper keeper;
  Runtime& runtime = Runtime::Get();
  if (!runtime.Register(point)) {
    // There is no ring, or tracing would deadlock in a signal handler: the trace is only counted.
    if ((kSupport & attributes) == attributes) runtime.CountLost();
    return 0;
  }
  const std::uint32_t settings = __atomic_load_n(&point->settings, __ATOMIC_RELAXED);
  return (settings & attributes) == attributes;
}

void quor_thread_name(const char* name) {
  const ErrnoKeeper keeper;
  Runtime& runtime = Runtime::Get();
  LinkThread::Get().StartIfRefused();
  if (!name) return;
  t_laterName[0] = '\0';
  if (runtime.Start() && NameThread(runtime, name, true)) return;
  const std::size_t length = CutLength(name, std::strlen(name), sizeof t_laterName - 1);
  std::memcpy(t_laterName, name, length);
  t_laterName[length] = '\0';
  t_thread.generation = 0;
}

void quor_trace(quor_point* point, unsigned attributes, const char* file, unsigned line,
                const char* text, size_t length) {
  Trace(point, attributes, file, line, text, length, __builtin_return_address(0));
}

void TraceFrom(const void* caller, quor_point* point, unsigned attributes, const char* file,
               unsigned line, std::string_view text) {
  Trace(point, attributes, file, line, text.data(), text.size(), caller);
}

int quor_flush(unsigned milliseconds) {
  const ErrnoKeeper keeper;
  LinkThread::Get().StartIfRefused();
  return LinkThread::Get().WaitUntilTaken(milliseconds) ? 1 : 0;
}

void quor_get_counts(quor_counts* counts) {
  if (counts) Runtime::Get().Count(counts);
}
