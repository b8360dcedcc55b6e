#include "quor/runtime/link_thread.h"

#include <pthread.h>
#include <signal.h>
#include <sys/prctl.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <new>
#include <utility>

#include "quor/link/link_socket.h"
#include "quor/ring/wake_event.h"
#include "quor/runtime/runtime.h"

namespace {

constexpr std::uint64_t kMsNs = 1'000'000;
constexpr unsigned kPauseMinMs = 50, kPauseMaxMs = 2000;
constexpr unsigned kStartPauseMs = 20;  // between tries while the service starts
constexpr unsigned kStartMs = 3000;     // how long the start may take
constexpr int kLookMs = 1000;
constexpr unsigned kPointsPauseMs = 10;  // registrations of that time are reported together

std::uint64_t NowMs() {
  timespec time{};
  clock_gettime(CLOCK_MONOTONIC, &time);
  return static_cast<std::uint64_t>(time.tv_sec) * 1000 +
         static_cast<std::uint64_t>(time.tv_nsec) / kMsNs;
}

void SleepMs(unsigned milliseconds) {
  const timespec time{static_cast<time_t>(milliseconds / 1000),
                      static_cast<long>(milliseconds % 1000 * kMsNs)};
  nanosleep(&time, nullptr);
}

}  // namespace

struct LinkThread::Session {
  LinkDecoder decoder;
  std::uint64_t nextTryMs = 0, startEndsMs = 0, pointsDueMs = 0;
  unsigned pauseMs = kPauseMinMs;
  bool mayStart = true;
  int sinkWaitMs = -1;
  LinkReport report;  // not sent yet
};

LinkThread& LinkThread::Get() {
  // Never destroyed: the thread outlives the static destructors.
  alignas(LinkThread) static unsigned char storage[sizeof(LinkThread)];
  static LinkThread* const link = new (storage) LinkThread;
  return *link;
}

void LinkThread::Start(const ServiceEnvironment& environment, unsigned waitMs) {
  m_environment = environment;
  if (waitMs != 0) m_answer.Expect(waitMs);
  StartThread();
}

void LinkThread::StartIfRefused() {
  State refused = State::Refused;
  if (m_state.load(std::memory_order_acquire) != refused || NowMs() < m_againMs.load()) return;
  // Of several threads one goes on.
  if (m_state.compare_exchange_strong(refused, State::Off)) StartThread();
}

void LinkThread::StartThread() {
  m_state.store(State::Trying);
  sigset_t all, before;
  sigfillset(&all);
  pthread_sigmask(SIG_SETMASK, &all, &before);
  pthread_t thread;
  if (pthread_create(&thread, nullptr, Enter, this) == 0) {
    pthread_detach(thread);
  } else {
    m_answer.HasCome();
    m_againMs.store(NowMs() + kPauseMinMs);
    m_state.store(State::Refused);
  }
  pthread_sigmask(SIG_SETMASK, &before, nullptr);
}

void LinkThread::ReportPoints() {
  if (!m_pointsChanged.exchange(true)) Wake();
}

void LinkThread::ReportName() {
  m_nameChanged.store(true);
  Wake();
}

void LinkThread::Wake() {
  if (Runtime::Get().HasRing()) Signal(Runtime::Get().Segment().Header()->wakeEvent);
}

void* LinkThread::Enter(void* self) {
  prctl(PR_SET_NAME, "quor");
  // No exception may leave the runtime. Without memory the link pauses and the traces stay in the
  // ring.
  for (;;) {
    try {
      static_cast<LinkThread*>(self)->Run();
    } catch (...) {
      SleepMs(kPauseMaxMs);
    }
  }
}

void LinkThread::Run() {
  Session session;
  for (;;) {
    const std::uint32_t seen = Runtime::Get().Segment().Header()->wakeEvent.load();
    if (m_nameChanged.exchange(false)) Disconnect(session);
    if (!m_linked.load() && NowMs() >= session.nextTryMs) Connect(session);
    if (m_linked.load()) Receive(session);
    ReportChanges(session);
    session.sinkWaitMs = m_sink.Serve();
    Report(session);
    Wait(session, seen);
  }
}

void LinkThread::Wait(Session& session, std::uint32_t seen) {
  const std::uint64_t now = NowMs();
  const auto until = [now](std::uint64_t due) {
    return due <= now ? 0 : static_cast<int>(std::min<std::uint64_t>(due - now, 60'000));
  };
  int timeout = -1;
  const auto atMost = [&timeout](int ms) { timeout = timeout < 0 ? ms : std::min(timeout, ms); };
  if (!m_linked.load()) atMost(until(session.nextTryMs));
  if (m_linked.load() && m_pointsChanged.load()) atMost(until(session.pointsDueMs));
  if (session.sinkWaitMs >= 0) atMost(session.sinkWaitMs);
  // A killed service signals nothing, and the next one may have another folder and not find us.
  if (m_linked.load()) atMost(kLookMs);
  AwaitWake(Runtime::Get().Segment().Header()->wakeEvent, seen, timeout);
}

int LinkThread::Dial() const {
  const std::string path = ServiceSocketPath(m_environment);
  return SocketFolderIsSafe(path, nullptr, m_environment)
             ? ConnectToService(path.c_str(), TrustedOwner(path, m_environment))
             : -1;
}

void LinkThread::Connect(Session& session) {
  m_socket = CheckedDescriptor(Dial());
  if (!m_socket.IsOpen()) {
    NoService(session);
    return;
  }
  Runtime& runtime = Runtime::Get();
  const SegmentMap& segment = runtime.Segment();
  LinkHello hello;
  hello.pid = static_cast<std::uint32_t>(getpid());
  hello.startedNs = segment.Layout().startedNs;
  hello.device = segment.Device();
  hello.inode = segment.Inode();
  hello.taker = m_sink.Taker();
  hello.app = std::string(runtime.AppName());
  const int descriptor = segment.Descriptor();
  session.decoder = LinkDecoder();
  m_linked.store(true);
  if (!SendOnLink(m_socket.Get(), EncodeHello(hello), &descriptor, descriptor >= 0 ? 1 : 0)) {
    Disconnect(session);
    NoService(session);
    return;
  }
  // From now on the kernel keeps the segment for the service, even if this process ends.
  m_state.store(State::Linked);
  session.mayStart = false;
}

// Starts a service only if none was ever reached. A service that was stopped on purpose stays
// stopped.
void LinkThread::NoService(Session& session) {
  m_answer.HasCome();
  const std::uint64_t now = NowMs();
  if (session.mayStart) {
    session.mayStart = false;
    const std::string program = ServiceProgram(m_environment);
    if (!program.empty() && StartService(program)) session.startEndsMs = now + kStartMs;
    if (program.empty()) session.report.text = WhyNotStarted(m_environment);
  }
  if (now < session.startEndsMs) {
    session.nextTryMs = now + kStartPauseMs;
    return;
  }
  if (m_state.load() == State::Trying) m_state.store(State::Alone);
  session.nextTryMs = now + session.pauseMs;
  session.pauseMs = std::min(2 * session.pauseMs, kPauseMaxMs);
}

void LinkThread::Disconnect(Session& session) {
  m_answer.HasCome();
  m_socket.Close();
  m_linked.store(false);
  session.nextTryMs = 0;
}

// Reads everything that has arrived.
void LinkThread::Receive(Session& session) {
  std::uint8_t bytes[4096];
  bool good = true;
  for (bool more = true; good && more;) {
    LinkReceived got = ReceiveOnLink(m_socket.Get(), bytes, sizeof bytes);
    for (int i = 0; i < got.descriptorCount; ++i) close(got.descriptors[i]);
    const std::uint8_t* from = bytes;
    good = !got.ended;
    more = got.bytes != 0;
    while (good) {
      LinkFrame frame;
      const LinkDecoder::Result result = session.decoder.Feed(from, bytes + got.bytes, frame);
      if (result == LinkDecoder::Result::More) break;
      good = result == LinkDecoder::Result::Frame && Handle(session, frame);
    }
  }
  if (good) return;
  // A socket that the application has closed is replaced immediately.
  const bool lost = m_socket.Get() < 0;
  Disconnect(session);
  if (lost) return;
  session.nextTryMs = NowMs() + session.pauseMs;
  session.pauseMs = std::min(2 * session.pauseMs, kPauseMaxMs);
}

bool LinkThread::Handle(Session& session, const LinkFrame& frame) {
  switch (frame.type) {
    case LinkType::Welcome:
      session.pauseMs = kPauseMinMs;
      return true;
    case LinkType::Poke:
      Runtime::Get().TakeSettings();
      m_answer.HasCome();
      return true;
    case LinkType::Rules:
      Runtime::Get().TakeKept(frame.rules);
      return true;
    case LinkType::Sink:
      m_sink.Set(frame.sink);
      return Send(EncodeTaker(m_sink.Taker()));
    case LinkType::Refused:
      session.pauseMs = kPauseMaxMs;
      return false;
    default:
      return false;
  }
}

bool LinkThread::Send(const std::vector<std::uint8_t>& frame) {
  return SendOnLink(m_socket.Get(), frame);
}

void LinkThread::Report(Session& session) {
  const bool now = m_reportNow.load();
  // A report that cannot be sent now is sent to the next service.
  LinkReport& report = session.report;
  while (m_linked.load() && (!report.text.empty() || m_sink.TakeReport(&report, now)))
    if (Send(EncodeReport(report)))
      report = LinkReport();
    else
      Disconnect(session);
  if (now) m_reportNow.store(false);
}

void LinkThread::ReportChanges(Session& session) {
  if (!m_linked.load()) return;
  SegmentHeader* const header = Runtime::Get().Segment().Header();
  if (m_sink.Taker() == RingTaker::Service && header->consumerCalled.exchange(0) != 0 &&
      !Send(EncodeCall()))
    return Disconnect(session);
  if (!m_pointsChanged.load() || NowMs() < session.pointsDueMs) return;
  m_pointsChanged.store(false);
  session.pointsDueMs = NowMs() + kPointsPauseMs;
  if (!Send(EncodePoints())) Disconnect(session);
}

bool LinkThread::WaitUntilTaken(unsigned milliseconds) {
  Runtime& runtime = Runtime::Get();
  if (!runtime.HasRing()) return true;
  const SegmentHeader* const header = runtime.Segment().Header();
  const std::uint64_t target = ring_mark::Units(header->reserved.load(std::memory_order_acquire));
  const std::uint64_t deadline = NowMs() + milliseconds;
  for (;;) {
    m_sink.Push();
    const std::uint64_t consumed =
        ring_mark::Units(header->consumed.load(std::memory_order_acquire));
    const std::uint64_t left = ring_mark::Distance(consumed, target);
    if (left == 0 || left > ring_mark::kUnitMask / 2) return true;
    if (NowMs() >= deadline) return false;
    SleepMs(1);
  }
}

void LinkThread::AtExit() {
  constexpr unsigned kExitWaitMs = 1500;
  m_sink.End();
  const std::uint64_t deadline = NowMs() + kExitWaitMs;
  while (m_state.load() == State::Trying && NowMs() < deadline) SleepMs(2);
  if (!m_linked.load() || m_sink.Taker() == RingTaker::Service) return;
  m_reportNow.store(true);
  Wake();
  while (m_reportNow.load() && NowMs() < deadline) SleepMs(1);
}

void LinkThread::BeforeFork() {
  m_sink.BeforeFork();
}

void LinkThread::AfterForkInParent() {
  m_sink.AfterForkInParent();
}

// The child has no link thread. What that thread had open belongs to the parent.
void LinkThread::AfterForkInChild() {
  m_answer.Forget();
  m_sink.AfterForkInChild();
  m_socket.Close();
  m_linked.store(false);
  m_state.store(State::Off);
  m_pointsChanged.store(false);
  m_nameChanged.store(false);
  m_reportNow.store(false);
}
