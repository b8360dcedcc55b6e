// How the process gets its segment, and what its environment has set for the start.
#include <fcntl.h>
#include <sys/random.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "quor/ring/cut_length.h"
#include "quor/runtime/link_thread.h"
#include "quor/runtime/runtime.h"
#include "records/record_fields.h"

namespace {

std::uint64_t NowNs(clockid_t clock) {
  timespec time{};
  clock_gettime(clock, &time);
  return static_cast<std::uint64_t>(time.tv_sec) * 1'000'000'000u +
         static_cast<std::uint64_t>(time.tv_nsec);
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

// Where there is no socket no service answers, and no trace waits.
unsigned WaitMs(const ServiceEnvironment& environment) {
  if (access(ServiceSocketPath(environment).c_str(), F_OK) != 0) return 0;
  const char* const text = secure_getenv("QUOR_WAIT");
  if (!text || *text < '0' || *text > '9') return FirstAnswer::kWaitMs;
  return static_cast<unsigned>(
      std::min<unsigned long>(std::strtoul(text, nullptr, 10), FirstAnswer::kWaitMaxMs));
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

}  // namespace

void Runtime::StartSegment() {
  ServiceEnvironment environment = ReadServiceEnvironment();
  environment.chosen = ServiceSocketPath(environment);
  SegmentFolder folder;
  SegmentMap segment;
  if (!MakeSegment(segment, folder, environment)) return;
  FillSegment(segment);
  m_hot.ring = RingProducer(m_segment);
  HandOverLost();
  RegisterDeclared();
  const bool first = m_lastGeneration == 0;
  if (first) TellStart();
  LinkThread::Get().BeginSink(m_segment.Header()->startSink != 0 ? m_start.Sink() : std::nullopt);
  // Before the first trace: so the service finds it whatever happens to this process.
  folder.Show();
  m_hot.generation.store(++m_lastGeneration);
  HandOverLost();  // losses of traces that found no ring until now
  LinkThread::Get().Start(environment, first ? WaitMs(environment) : 0);
}

// In a file that the service finds; if that is impossible, in memory that is sent to it later.
bool Runtime::MakeSegment(SegmentMap& segment, SegmentFolder& folder,
                          const ServiceEnvironment& environment) {
  const std::uint64_t startedNs = NowNs(CLOCK_REALTIME), salt = HardToGuess();
  const SegmentSizes sizes = WantedSizes();
  const bool found = folder.OpenFor(environment);
  int file = found ? folder.NewFile(startedNs, HardToGuess()) : -1;
  // A service that just ended has removed the folder.
  if (found && file < 0 && errno == ENOENT && folder.OpenFor(environment))
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
  const bool sinkHolds = first || m_segment.Header()->startSink != 0;
  if (first) {
    m_start.Read();
    m_hot.clock.Begin();
    m_names.Begin(segment);
    m_points.Begin(segment, m_names, m_start.Settings(), m_kept);
  } else {
    m_names.Move(segment);
    m_points.Move(segment);
    m_segment.Abandon();
  }
  m_segment = std::move(segment);
  char machine[256], pid[16], path[4096];
  m_hot.machine = m_names.Enter(MachineName(machine));
  m_hot.unknownThread = m_names.Enter("?");
  m_hot.quor = m_names.Enter("Quor");
  m_hot.loss = m_names.Enter("Loss");  // for the file sink: there must be room for it later
  std::snprintf(pid, sizeof pid, "%d", static_cast<int>(getpid()));
  m_hot.pid = m_names.Enter(pid);
  m_hot.app.store(m_names.Enter(m_appName[0] ? std::string_view(m_appName) : ExecutableName(path)));
  SegmentHeader* const header = m_segment.Header();
  header->machineName = m_hot.machine;
  header->pidName = m_hot.pid;
  header->appName = m_hot.app.load();
  header->takesRules.store(1, std::memory_order_relaxed);
  EnterStart(*header, sinkHolds);
}

// A child has the sink of its parent's environment unless another was set in the parent.
void Runtime::EnterStart(SegmentHeader& header, bool sinkHolds) {
  if (m_start.Given().empty()) return;
  header.startNotes = m_names.Enter(m_start.Notes());
  if (sinkHolds && m_start.Sink()) header.startSink = IdNumber(m_names.Enter(m_start.SinkGiven()));
  m_primes.store((m_start.Settings().AnySettings() & QUOR_STACK) != 0);
}

// The first traces of the process say what its environment has set. A child does not repeat them.
void Runtime::TellStart() {
  for (const std::string& given : m_start.Given()) WriteOwn(QUOR_INFO, "started with " + given);
  for (const std::string& fault : m_start.Faults()) WriteOwn(QUOR_WARN, fault);
}

void Runtime::WriteOwn(unsigned severity, std::string_view text) {
  text = text.substr(0, CutLength(text.data(), text.size(), kLongestText));
  const Stamp now = m_hot.clock.Now();
  RingProducer::Slot slot;
  if (!m_hot.ring.Reserve(static_cast<std::uint32_t>(kTraceFixedBytes + text.size()), slot)) return;
  char number[16];
  std::snprintf(number, sizeof number, "%d", static_cast<int>(gettid()));
  StoreRecord<AppNameId>(slot.record,
                         {.count = 0,  // the taker of the trace numbers it
                          .machine = m_hot.machine,
                          .app = m_hot.app.load(),
                          .component = m_hot.quor,
                          .category = m_names.Enter(StartValues::kCategory),
                          .date = now.date,
                          .time = now.time,
                          .ticCount = now.ticPs,
                          .pid = m_hot.pid,
                          .tid = m_names.Enter(number),
                          .attributes = static_cast<std::uint16_t>(severity),
                          .sourceFile = {},
                          .sourceLine = 0,
                          .text = text,
                          .stack = {}});
  m_hot.ring.Commit(slot);
}
