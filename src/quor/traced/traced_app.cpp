#include "quor/traced/traced_app.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <utility>

#include "quor/ring/ring_claim.h"
#include "quor/ring/wake_event.h"
#include "quor/traced/forwarded_note.h"

namespace {

using std::chrono::nanoseconds;
constexpr std::size_t kNameBytesMax = 16u << 20;
constexpr std::size_t kItemRoom = 4096;
// No processor makes or drops a trace in less time; the clock of a file's age has this step.
constexpr nanoseconds kFastestTrace{10}, kAgeStep{std::chrono::milliseconds(20)};
constexpr const char* kUnnamed = "application";

nanoseconds SinceZero(const timespec& time) {
  return std::chrono::seconds(time.tv_sec) + nanoseconds(time.tv_nsec);
}

nanoseconds NowOn(clockid_t clock) {
  timespec now{};
  clock_gettime(clock, &now);
  return SinceZero(now);
}

// The age of the file since its last change, by the kernel's account.
nanoseconds AgeOf(const SegmentMap& segment) {
  struct stat status {};
  if (fstat(segment.Descriptor(), &status) != 0) return {};
  return AgeOfChange(SinceZero(status.st_ctim), NowOn(CLOCK_REALTIME), NowOn(CLOCK_BOOTTIME));
}

// The most traces that this machine can have made in that time. A larger number is a lie, and one
// lie would spoil the sums for everybody.
std::uint64_t MostIn(nanoseconds age) {
  static const auto processors = std::max(1l, sysconf(_SC_NPROCESSORS_ONLN));
  return static_cast<std::uint64_t>((age + kAgeStep) / kFastestTrace * processors);
}

// Finish was the last change of a finished file. So its time of birth gives its age, or the uptime
// if the file system has no time of birth.
nanoseconds AgeSinceBirth(int file) {
  struct statx status {};
  const nanoseconds uptime = NowOn(CLOCK_BOOTTIME);
  if (statx(file, "", AT_EMPTY_PATH, STATX_BTIME, &status) != 0 ||
      (status.stx_mask & STATX_BTIME) == 0)
    return uptime;
  const timespec born{static_cast<time_t>(status.stx_btime.tv_sec),
                      static_cast<long>(status.stx_btime.tv_nsec)};
  return AgeOfChange(SinceZero(born), NowOn(CLOCK_REALTIME), uptime);
}

FaultGuard GuardOf(const SegmentMap& segment) {
  return {segment.Header(), segment.Bytes(), FaultGuard::Access::Write};
}

}  // namespace

nanoseconds AgeOfChange(nanoseconds changed, nanoseconds now, nanoseconds uptime) {
  return changed <= now ? now - changed : uptime;
}

std::string AppNameIn(const SegmentMap& segment) {
  const FaultGuard guard = GuardOf(segment);
  SegmentNames reader(segment);
  std::vector<SegmentName> names;
  reader.ReadNew(names);
  for (const SegmentName& name : names)
    if (name.id == segment.Layout().appName && !name.text.empty())
      return name.text.substr(0, name.text.find('\0'));
  return kUnnamed;
}

TracedApp::TracedApp(SegmentMap segment, std::string app, std::string machine, std::uint32_t pid,
                     const Account& account)
    : m_segment(std::move(segment)),
      m_guard(GuardOf(m_segment)),
      m_segmentNames(m_segment),
      m_points(m_segment),
      m_name(std::move(app)),
      m_machine(std::move(machine)),
      m_pid(pid),
      m_account(account),
      m_ageAtStart(AgeOf(m_segment)) {
  m_names.SetAccount(m_account.name, m_pid);
  ReadNames();
}

void TracedApp::Rename(std::string app) {
  m_name = std::move(app);
  if (m_source) m_source->app = m_name;
}

void TracedApp::Enter(Hub& hub) {
  if (m_hub == &hub) return;
  const bool leaves = m_hub != nullptr;
  // From now on the note is about the next machine.
  if (leaves) m_source->noteForwarded = nullptr;
  Leave();
  SegmentHeader& header = *m_segment.Header();
  const std::uint64_t served = header.served.load(std::memory_order_relaxed);
  // An earlier service may have sent it elsewhere.
  if (leaves || (served != 0 && ForwardTarget(header) != hub.Machine())) {
    header.servedElsewhere.store(served, std::memory_order_relaxed);
    header.forwarded.store(served, std::memory_order_relaxed);
    header.moves.fetch_add(1, std::memory_order_relaxed);
  }
  SetForwardTarget(header, hub.Machine());
  Source source;
  source.instance = InstanceOf(m_machine, m_pid, m_segment.Layout().startedNs,
                               header.moves.load(std::memory_order_relaxed));
  source.machine = m_machine;
  source.app = m_name;
  const std::string pid = m_names.TextOf(m_segment.Layout().pidName);
  source.pid = pid.empty() ? std::to_string(m_pid) : pid;
  PutAccount(m_account, m_pid, source);
  m_servedElsewhere = header.servedElsewhere.load(std::memory_order_relaxed);
  if (served > MaxPossible() || m_servedElsewhere > served) {
    Break("its count of traces is impossible");
    m_servedElsewhere = 0;
  } else {
    source.serial = served - m_servedElsewhere;
  }
  PrepareForwarding(hub, source);
  if (source.account) m_names.SetShare(hub.Names().ShareOf(*source.account));
  m_hub = &hub;
  m_source = hub.AddSource(std::move(source));
}

void TracedApp::PrepareForwarding(const Hub& hub, Source& source) const {
  if (hub.Machine().empty()) return;
  const std::uint64_t forwarded = m_segment.Header()->forwarded.load(std::memory_order_relaxed);
  source.forwarded = ForwardedOf(forwarded, m_servedElsewhere + source.serial, m_servedElsewhere);
  source.noteForwarded = ForwardedNote(m_segment.Descriptor(), m_servedElsewhere);
}

void TracedApp::Leave() {
  if (!m_hub) return;
  Publish();
  m_hub->Seal();
  m_hub->Deliver();
  m_hub->EndSource(m_source);
  m_source = nullptr;
  m_hub = nullptr;
}

void TracedApp::Begin() {
  if (!m_consumer && !m_broken) m_consumer.emplace(m_segment, kItemRoom);
}

void TracedApp::Pause() {
  if (!m_consumer) return;
  EndWait();
  Publish();
  m_consumer.reset();
}

bool TracedApp::Claim() {
  return ClaimRing(*m_segment.Header(), RingClaim::Service);
}

void TracedApp::LeaveClaim() {
  LeaveRing(*m_segment.Header(), RingClaim::Service);
}

void TracedApp::Publish() {
  if (!m_source) return;
  // In this order: a kill between the two counts a loss too many, never one too few.
  m_segment.Header()->served.store(m_servedElsewhere + m_source->serial, std::memory_order_release);
  if (m_consumer) m_consumer->Publish();
}

TracedApp::Step TracedApp::Break(const char* why) {
  m_broken = true;
  m_why = why;
  return Step::Broken;
}

std::uint64_t TracedApp::MaxPossible() const {
  return MostIn(m_ageAtStart + (std::chrono::steady_clock::now() - m_start));
}

bool TracedApp::Lose(std::uint64_t lost, std::string_view reason) {
  if (lost == 0) return true;
  const std::uint64_t most = MaxPossible();
  if (lost > most || m_source->serial > most - lost) return false;
  m_hub->Lose(m_source, lost, std::string(reason));
  return true;
}

bool TracedApp::TakeItem(const RingItem& item) {
  if (!Lose(item.dropsBefore, "the ring of the application was full") ||
      !Lose(item.damagedBefore, "they were damaged")) {
    m_unread = item.damagedBefore + (item.trace.empty() ? 0 : 1);
    return false;
  }
  if (item.trace.empty()) return true;
  m_hub->Take(m_source, m_names, item.trace, [this] { ReadNames(); });
  return true;
}

bool TracedApp::Finish() {
  if (std::exchange(m_finished, true)) return true;
  const bool sane = Lose(m_consumer->Uncommitted(), "the application died while it wrote them") &&
                    Lose(m_consumer->UnreportedDrops(), "the ring of the application was full") &&
                    TakeSinkLosses("the application's file could not be written", false);
  m_consumer->MarkDropsReported();
  return sane;
}

bool TracedApp::Report(const std::string& text) {
  if (!m_hub) return true;
  return TakeSinkLosses(text, true);
}

bool TracedApp::TakeSinkLosses(const std::string& text, bool always) {
  std::atomic<std::uint64_t>& unreported = m_segment.Header()->sinkUnreported;
  const std::uint64_t lost = unreported.load(std::memory_order_acquire);
  if (lost == 0 && !always) return true;
  if (lost == 0)
    m_hub->Lose(m_source, 0, text);
  else if (!Lose(lost, text))
    return false;
  // In this order, as in Publish.
  Publish();
  unreported.fetch_sub(lost, std::memory_order_relaxed);
  return true;
}

TracedApp::Step TracedApp::Drain(std::size_t traces, bool dead) {
  if (m_broken) return Step::Broken;
  if (!m_consumer || !m_hub) return Step::Empty;
  EndWait();
  RingItem item;
  RingStep step = RingStep::Item;
  bool sane = true;
  for (std::size_t i = 0; i < traces && step == RingStep::Item && sane; ++i) {
    step = dead ? m_consumer->NextOfDead(item) : m_consumer->Next(item);
    if (step == RingStep::Item) sane = TakeItem(item);
  }
  if (dead && step == RingStep::Empty) sane = Finish() && sane;
  Publish();
  m_hub->Deliver();
  if (step == RingStep::Broken || !sane) return Break("its ring contradicts itself");
  return step == RingStep::Empty ? Step::Empty : Step::More;
}

void TracedApp::GiveUp(bool isOurs) {
  if (!m_source || (!isOurs && !m_consumer)) return;
  if (!m_consumer) m_consumer.emplace(m_segment, kItemRoom);
  const std::uint64_t most = m_segment.Layout().ringBytes / (sizeof(RingRecord) + kTraceFixedBytes);
  const std::uint64_t waiting = m_consumer->Uncommitted(), drops = m_consumer->UnreportedDrops();
  std::uint64_t lost = m_unread + (waiting <= most ? waiting : 0);
  if (drops <= MaxPossible()) lost += drops;
  m_consumer->MarkDropsReported();
  const std::string text = std::string("what it traces is not read any more: ") + m_why;
  if (lost == 0 || !Lose(lost, text)) m_hub->Lose(m_source, 0, text);
}

RingConsumer::Wait TracedApp::BeginWait() {
  if (!m_consumer || m_broken) return RingConsumer::Wait::Asleep;
  const RingConsumer::Wait wait = m_consumer->BeginWait();
  m_waits = wait != RingConsumer::Wait::Ready;
  return wait;
}

void TracedApp::EndWait() {
  if (m_waits && m_consumer) m_consumer->EndWait();
  m_waits = false;
}

void TracedApp::MarkFinished() {
  m_segment.Finish(m_hub->Machine().empty() ? SegmentEnd::Here : SegmentEnd::Elsewhere);
}

bool IsPossible(const FinishedSegment& rest, int file) {
  return rest.servedElsewhere <= rest.served && rest.served <= MostIn(AgeSinceBirth(file));
}

std::shared_ptr<Source> Remember(const FinishedSegment& rest, const std::string& machine, int file,
                                 const Account& account, Hub& hub) {
  Source source;
  source.instance = InstanceOf(machine, rest.pid, rest.startedNs, rest.moves);
  source.machine = machine;
  source.pid = std::to_string(rest.pid);
  PutAccount(account, rest.pid, source);
  source.serial = rest.served - rest.servedElsewhere;
  if (!hub.Machine().empty()) {
    source.forwarded = ForwardedOf(rest.forwarded, rest.served, rest.servedElsewhere);
    source.noteForwarded = ForwardedNote(file, rest.servedElsewhere);
  }
  std::shared_ptr<Source> added = hub.AddSource(std::move(source));
  hub.EndSource(added);
  return added;
}

void TracedApp::WakeLinkThread() {
  Signal(m_segment.Header()->wakeEvent);
}

void TracedApp::ReadNames() {
  if (m_namesBroken) return;
  std::vector<SegmentName> fresh;
  m_namesBroken = !m_segmentNames.ReadNew(fresh);
  m_segment.RefreshNames();
  for (const SegmentName& name : fresh) {
    // A text ends at its first NUL, as in a file. Names beyond the limit stay unknown.
    const std::string_view text(name.text.c_str());
    if (m_names.TextBytes() + text.size() <= kNameBytesMax) m_names.Enter(name.id, text);
  }
}

bool TracedApp::ReadPoints(std::vector<TracedPoint>& points) {
  std::vector<SegmentPointNames> fresh;
  if (!m_points.ReadNew(fresh)) {
    Break("its trace points contradict themselves");
    return false;
  }
  // After the points: the names of a point are entered before the point.
  ReadNames();
  for (const SegmentPointNames& point : fresh)
    points.push_back({point.point, m_names.TextOf(point.component), m_names.TextOf(point.category),
                      (point.settings & kStartSettings) != 0
                          ? std::optional(point.settings & kSettingsBits)
                          : std::nullopt});
  return true;
}
