#include "quor/traced/running_app.h"

#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <asio/post.hpp>
#include <cerrno>

#include "quor/link/link_socket.h"
#include "quor/log/log.h"
#include "quor/received/received.h"

namespace {

using std::chrono::milliseconds;
constexpr milliseconds kBusyPause{5};
constexpr std::size_t kTracesAtOnce = 1024;
constexpr std::size_t kUnansweredMax = 1000;
constexpr int kTurnsAtStop = 200;
constexpr milliseconds kPauseWithoutLink{50};  // without a link the application cannot wake us

}  // namespace

RunningApp::RunningApp(asio::io_context& io, Host& host, CatalogueApp& entry, std::string machine,
                       AppArrival& arrival)
    : m_io(io),
      m_host(host),
      m_entry(&entry),
      m_app(std::move(arrival.segment), arrival.hello.app, std::move(machine), arrival.pid,
            arrival.account),
      m_socket(io),
      m_process(io),
      m_timer(io),
      m_look(io),
      m_start(m_app.ReadStart()) {}

void RunningApp::Start(AppArrival arrival) {
  m_app.Enter(m_host.HubFor(Owner(), Sink()));
  WatchProcess();
  TakeLink(std::move(arrival));
}

void RunningApp::StartWithoutLink(bool held) {
  m_isHeldBack = held;
  m_taker = RingTaker::Application;  // until it says otherwise, or has died
  m_app.Enter(m_host.HubFor(Owner(), Sink()));
  WatchProcess();
  if (!ReadPoints()) return;
  // Its link may go to an earlier service, whose end it has not noticed.
  if (!m_dead) {
    m_app.WakeLinkThread();
    return CheckLockWithoutLink(false);
  }
  if (!held) Pump();
}

void RunningApp::ReleaseHeld() {
  if (std::exchange(m_isHeldBack, false) && m_dead) Pump();
}

void RunningApp::Relink(AppArrival arrival) {
  m_isHeldBack = false;
  CloseLink();
  m_app.EndWait();
  m_timer.cancel();
  if (arrival.hello.app != m_app.Name()) {
    if (CatalogueApp* const entry = m_host.EntryFor(Owner(), arrival.hello.app)) {
      CatalogueApp& from = *m_entry;
      m_entry = entry;
      m_host.OnRenamed(*this, from, *entry);
    }
    m_app.Rename(arrival.hello.app);
    // Another entry has another trace map, with places of its own for the points.
    m_pointIds.clear();
    m_start.settings.clear();
    m_app.Points().Rewind();
  }
  TakeLink(std::move(arrival));
}

void RunningApp::TakeLink(AppArrival arrival) {
  EndWithoutLink();
  SetBegun();
  m_socket = std::move(arrival.socket);
  m_decoder = LinkDecoder();
  m_taker = arrival.hello.taker;
  m_unanswered.clear();
  m_fileSink = false;
  Send(EncodeWelcome());
  SendKept();
  if (!ReadPoints()) return;
  ApplySink();
  if (TakeBytes(arrival.rest.data(), arrival.rest.data() + arrival.rest.size())) AwaitLink();
  // Relink has ended every wait for the ring.
  if (m_app.IsTaking()) Pump();
}

void RunningApp::AwaitLink() {
  m_socket.async_wait(
      OwnedDescriptor::wait_read,
      [self = shared_from_this(), socket = m_socket.native_handle()](const std::error_code& error) {
        // Another link has replaced it, or there is none.
        if (error || self->m_ended || self->m_socket.native_handle() != socket) return;
        self->ReadLink();
      });
}

void RunningApp::ReadLink() {
  std::uint8_t bytes[4096];
  const ssize_t got = ReceiveAll(m_socket.native_handle(), bytes, sizeof bytes, nullptr);
  const bool ended = got == 0 || (got < 0 && errno != EAGAIN);
  if (!TakeBytes(bytes, bytes + std::max<ssize_t>(got, 0))) return;
  if (ended) return LoseLink("");
  if (m_socket.is_open()) AwaitLink();
}

bool RunningApp::TakeBytes(const std::uint8_t* from, const std::uint8_t* end) {
  while (m_socket.is_open()) {
    LinkFrame frame;
    const LinkDecoder::Result result = m_decoder.Feed(from, end, frame);
    if (result == LinkDecoder::Result::More) return true;
    if (result == LinkDecoder::Result::Error) {
      LoseLink(std::string("malformed: ") + m_decoder.Why());
    } else if (!Handle(frame)) {
      LoseLink("an unexpected message");
    }
  }
  return false;
}

bool RunningApp::Handle(const LinkFrame& frame) {
  switch (frame.type) {
    case LinkType::Taker:
      m_taker = frame.taker;
      if (!m_unanswered.empty()) m_unanswered.pop_front();
      UpdateTaking();
      return true;
    case LinkType::Points:
      return ReadPoints();
    case LinkType::Call:
      Pump();
      return true;
    case LinkType::Report:
      return m_app.Report(frame.report.text);
    default:
      return false;
  }
}

void RunningApp::CloseLink() {
  std::error_code ignored;
  if (m_socket.is_open()) EndPeer(m_socket.native_handle());
  m_socket.close(ignored);
}

void RunningApp::LoseLink(const std::string& why) {
  if (!why.empty())
    Log(LogLevel::Warning,
        "application " + m_app.Name() + " (" + std::to_string(Pid()) + "): link ended: " + why);
  CloseLink();
  m_timer.cancel();
  Pump();
  if (m_ended) return;
  // It may have closed the socket unknowingly; it may have ended, or become another program.
  m_app.WakeLinkThread();
  CheckLockWithoutLink(true);
}

void RunningApp::Send(const std::vector<std::uint8_t>& frame) {
  // Never waits: an application that does not read its few messages has lost its link.
  if (!m_socket.is_open()) return;
  if (!SendOnLink(m_socket.native_handle(), frame, nullptr, 0, 0))
    shutdown(m_socket.native_handle(), SHUT_RDWR);
  m_app.WakeLinkThread();
}

bool RunningApp::ReadPoints() {
  std::vector<TracedPoint> fresh;
  if (!m_app.ReadPoints(fresh)) {
    Pump();
    return false;
  }
  const std::vector<std::uint32_t> ids = m_host.EnterTraces(*m_entry, fresh);
  for (std::size_t i = 0; i < fresh.size(); ++i) {
    const std::uint32_t point = fresh[i].point;
    if (m_pointIds.size() <= point) {
      m_pointIds.resize(point + 1, kNoTraceId);
      m_start.settings.resize(point + 1);
    }
    m_pointIds[point] = ids[i];
    m_start.settings[point] = fresh[i].start;
  }
  ApplySettings();
  // No library registers that many: the rest waits until others have had their turn.
  if (fresh.size() >= SegmentPointsReader::kAtOnce)
    asio::post(m_io, [self = shared_from_this()] {
      if (!self->m_ended) self->ReadPoints();
    });
  return true;
}

void RunningApp::ApplySettings() {
  SegmentPointsReader& points = m_app.Points();
  for (std::uint32_t point = 0; point < m_pointIds.size() && point < points.Count(); ++point)
    if (!m_start.settings[point] && m_pointIds[point] < m_entry->traces.size())
      points.SetSettings(point, m_entry->traces[m_pointIds[point]].settings);
  points.SetDefault(m_host.DefaultSettings());
  Send(EncodePoke());
}

void RunningApp::SendKept() {
  if (m_app.TakesRules()) Send(EncodeRules(m_entry->kept.Written()));
}

void RunningApp::DropStart(const std::vector<bool>& traces, bool sink) {
  for (std::size_t point = 0; point < m_pointIds.size(); ++point)
    if (m_start.settings[point] && m_pointIds[point] < traces.size() && traces[m_pointIds[point]])
      m_start.settings[point].reset();
  if (!sink || !m_start.sink) return;
  m_start.sink.reset();
  m_app.DropStartSink();
}

std::map<std::uint32_t, std::uint32_t> RunningApp::StartSettings() const {
  std::map<std::uint32_t, std::uint32_t> settings;
  for (std::size_t point = 0; point < m_pointIds.size(); ++point)
    if (m_start.settings[point] && m_pointIds[point] != kNoTraceId)
      settings[m_pointIds[point]] = *m_start.settings[point];
  return settings;
}

void RunningApp::ApplySink() {
  const LinkSink& sink = Sink();
  m_fileSink = sink.kind == SinkKind::File;
  // The next link will order a file sink.
  if (!m_socket.is_open()) return m_fileSink ? void() : m_app.Enter(m_host.HubFor(Owner(), sink));
  if (m_unanswered.size() >= kUnansweredMax) return LoseLink("it answers nothing");
  m_unanswered.push_back(sink.kind);
  if (!m_fileSink) m_app.Enter(m_host.HubFor(Owner(), sink));
  UpdateTaking();
  Send(EncodeSink(sink));
}

// A late answer to an older sink must not make us a second taker of the ring.
bool RunningApp::MayTake() const {
  if (m_dead) return true;
  if (m_taker != RingTaker::Service || m_fileSink) return false;
  for (const SinkKind kind : m_unanswered)
    if (kind == SinkKind::File) return false;
  return true;
}

void RunningApp::UpdateTaking() {
  if (!MayTake()) return m_app.Pause();
  if (m_app.IsTaking()) return;
  m_app.Begin();
  m_timer.cancel();
  Pump();
}

void RunningApp::Pump() {
  if (m_ended) return;
  // What the file sink of a killed application left in the ring is shown here rather than lost.
  if (m_dead) m_app.Begin();
  const std::uint64_t before = m_app.CurrentSource()->serial;
  const TracedApp::Step step = m_app.Drain(kTracesAtOnce, m_dead);
  if (step == TracedApp::Step::Broken) {
    Log(LogLevel::Warning, "application " + m_app.Name() + " (" + std::to_string(Pid()) +
                               ") is read no further: " + m_app.Why());
    m_app.GiveUp(MayTake());
    return End();
  }
  if (step == TracedApp::Step::More) {
    if (std::exchange(m_pumping, true)) return;
    asio::post(m_io, [self = shared_from_this()] {
      self->m_pumping = false;
      self->Pump();
    });
    return;
  }
  if (m_dead) {
    m_finishedSource = m_app.CurrentSource();
    m_app.MarkFinished();
    return End();
  }
  if (!m_app.IsTaking()) return;
  if (m_app.CurrentSource()->serial != before) return PumpIn(kBusyPause);
  m_readsWithoutLink ? PumpIn(kPauseWithoutLink) : Sleep();
}

void RunningApp::PumpIn(milliseconds time) {
  m_timer.expires_after(time);
  m_timer.async_wait([self = shared_from_this()](const std::error_code& error) {
    if (!error) self->Pump();
  });
}

void RunningApp::Sleep() {
  const RingConsumer::Wait wait = m_app.BeginWait();
  if (wait == RingConsumer::Wait::Ready) return PumpIn(milliseconds(0));
  if (wait == RingConsumer::Wait::Soon) PumpIn(milliseconds(RingConsumer::kRecheckMs));
  // Asleep: the application will call.
}

void RunningApp::Stop() {
  if (std::exchange(m_closed, true)) return;
  m_ended = true;
  // At most one lap: an application that goes on tracing must not hold us up.
  for (int turns = kTurnsAtStop;
       m_app.IsTaking() && turns > 0 && m_app.Drain(kTracesAtOnce, false) == TracedApp::Step::More;)
    --turns;
  CloseAll();
}

void RunningApp::CloseAll() {
  m_app.Leave();
  if (m_readsWithoutLink) m_app.LeaveClaim();
  CloseLink();
  std::error_code ignored;
  m_process.close(ignored);
  m_timer.cancel();
  m_look.cancel();
  // A live application looks for the next service.
  if (!m_dead) m_app.WakeLinkThread();
}

// Posted: the caller still uses the catalogue's entry, which may be removed with us.
void RunningApp::End() {
  if (std::exchange(m_ended, true)) return;
  asio::post(m_io, [self = shared_from_this()] {
    if (std::exchange(self->m_closed, true)) return;
    self->CloseAll();
    self->m_host.OnEnded(*self);
  });
}
