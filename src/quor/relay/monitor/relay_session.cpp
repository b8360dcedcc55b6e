#include "quor/relay/monitor/relay_session.h"

#include <algorithm>
#include <asio/post.hpp>
#include <charconv>
#include <limits>
#include <random>

namespace {

using namespace quor::wire;
using namespace std::chrono_literals;
using State = EngineReader::State;

constexpr std::size_t kRequestBytesMax = 1u << 20;
// The clocks of the engine's servers are not the same, and neither are those of its readers.
constexpr std::chrono::seconds kMargin{30};

// It never drops: the feed waits before.
StreamLimits NoDrops() {
  StreamLimits limits;
  limits.queueBytes = std::size_t{1} << 40;
  limits.pausedTraces = std::numeric_limits<std::uint64_t>::max();
  return limits;
}

// The end of the monitor's process is seen at once. A monitor that was only stopped comes back.
ConnectionLimits Patient() {
  ConnectionLimits limits;
  limits.silenceDeadline = limits.writeDeadline = std::chrono::hours(24 * 365);
  return limits;
}

EngineTime Earlier(EngineTime time, std::chrono::nanoseconds by) {
  return time.time_since_epoch() < by ? EngineTime{} : time - by;
}

std::string PlaceText(EngineTime place) {
  return std::to_string(place.time_since_epoch().count());
}

std::optional<EngineTime> ReadPlace(const std::string& text) {
  std::int64_t count = 0;
  const char* const end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, count);
  if (error != std::errc() || stop != end || count < 0) return {};
  return EngineTime(std::chrono::nanoseconds(count));
}

std::string RandomInstance() {
  std::random_device random;
  std::string instance;
  while (instance.size() < 16) instance.push_back(static_cast<char>(random()));
  return instance;
}

void FailAnswer(Response* response, ErrorCode code, const std::string& text) {
  response->set_error(code);
  response->set_text(text);
}

}  // namespace

FeedPlan PlanFor(const RelayAddress& address, EngineTime now) {
  using From = RelayAddress::Since::From;
  FeedPlan plan;
  const std::string machine = address.machine.empty() ? "*" : SubjectToken(address.machine);
  plan.messages =
      "quor1." + machine + "." + (address.app.empty() ? ">" : SubjectToken(address.app));
  if (!address.app.empty()) plan.words = "quor1." + machine + "._";
  plan.app = address.app;
  plan.start.at = EngineStart::At::Time;
  switch (address.since.from) {
    case From::Now:
      plan.start.at = EngineStart::At::Next;
      break;
    case From::Start:
      plan.start.at = EngineStart::At::Oldest;
      break;
    case From::Ago:
      plan.start.time = Earlier(now, address.since.ago + kMargin);
      break;
    case From::Time:
      plan.start.time = Earlier(address.since.time, kMargin);
  }
  return plan;
}

RelaySession::RelaySession(const RelayAddress& address, RelayFeed::MakeEngine make,
                           std::function<void()> onEnd, const Times& times)
    : m_address(address),
      m_make(std::move(make)),
      m_onEnd(std::move(onEnd)),
      m_times(times),
      m_now(std::chrono::system_clock::now()),
      m_where(address.servers.front().host + "/" + address.stream),
      m_filters(m_hub.Names()),
      m_traces(m_hub, m_where),
      m_reader(m_traces, times.reader) {}

RelaySession::~RelaySession() {
  m_feed.reset();
  m_monitor.reset();
}

void RelaySession::Start(std::shared_ptr<ByteStream> stream) {
  m_deadline = std::make_unique<asio::steady_timer>(stream->Executor());
  m_connection = Connection::Start(std::move(stream), *this, Patient());
  m_connection->LimitFrames(kRequestBytesMax);
}

void RelaySession::OnClosed(const std::string&) {
  if (std::exchange(m_ended, true)) return;
  m_connection->Close();
  m_deadline->cancel();
  m_monitor.reset();
  m_feed.reset();
  m_onEnd();
}

void RelaySession::OnWritten() {
  if (!m_monitor) return;
  m_monitor->Pump();
  GoOn();
}

void RelaySession::OnFrame(const Frame& frame) {
  if (!m_greeted) return Greet(frame);
  Request request;
  if (frame.type != FrameType::Request || !ParseBody(frame, &request)) return End();
  Answer(request);
}

void RelaySession::Greet(const Frame& frame) {
  Hello hello;
  if (frame.type != FrameType::Hello || !ParseBody(frame, &hello)) return End();
  if (hello.version() != kProtocolVersion)
    return Refuse(ERROR_VERSION,
                  "quor-bridge speaks another version of the protocol: install it "
                  "together with this program");
  if (hello.role() != ROLE_MONITOR)
    return Refuse(ERROR_ACCESS,
                  "the traces in a cluster can be watched; settings are changed at "
                  "their machines");
  m_greeted = true;
  Begin();
}

void RelaySession::Begin() {
  const auto executor = m_deadline->get_executor();
  FeedPlan plan = PlanFor(m_address, m_now);
  m_begin = plan.start.at == EngineStart::At::Oldest ? EngineTime{}
            : plan.start.at == EngineStart::At::Next ? m_now
                                                     : plan.start.time;
  m_broken = "the engine does not answer";
  m_feed = std::make_unique<RelayFeed>(m_make, std::move(plan), [this, executor](FedPiece piece) {
    asio::post(executor, [this, piece = std::move(piece)]() mutable {
      if (!m_ended) OnPiece(std::move(piece));
    });
  });
  m_deadline->expires_after(m_times.answer);
  m_deadline->async_wait([this](const std::error_code& error) {
    if (!error && !m_welcomed && !m_ended) Refuse(ERROR_NONE, m_broken);
  });
}

void RelaySession::Welcome() {
  m_welcomed = true;
  m_deadline->cancel();
  quor::wire::Welcome welcome;
  welcome.set_version(kProtocolVersion);
  welcome.set_machine(m_where);
  welcome.set_instance(RandomInstance());
  welcome.set_filters(true);
  welcome.set_is_relay(true);
  m_connection->Send(FrameType::Welcome, welcome);
}

void RelaySession::Refuse(ErrorCode code, const std::string& text) {
  Refused refused;
  refused.set_code(code);
  refused.set_text(text);
  m_connection->Send(FrameType::Refused, refused);
  m_connection->CloseAfterWriting();
  m_ended = true;
  // The words are on their way meanwhile.
  m_deadline->expires_after(1s);
  m_deadline->async_wait([this](const std::error_code&) { m_onEnd(); });
}

void RelaySession::Answer(const Request& request) {
  Response response;
  response.set_id(request.id());
  Serve(request, &response);
  if (!m_connection->Send(FrameType::Response, response)) return End();
  if (request.has_subscribe() && response.error() == ERROR_NONE) Subscribe(request.subscribe());
}

void RelaySession::Serve(const Request& request, Response* response) {
  if (request.has_set_filter()) return SetFilter(request.set_filter().text(), response);
  if (request.has_subscribe()) {
    if (m_monitor) return FailAnswer(response, ERROR_BAD_REQUEST, "subscribed already");
    m_monitor = std::make_unique<MonitorStream>(m_hub, *m_connection, NoDrops());
    m_monitor->SetFilter(m_filter);
    return;
  }
  if (!request.has_pause() && !request.has_resume())
    return FailAnswer(response, ERROR_ACCESS, "the traces in a cluster can only be watched");
  if (!m_monitor) return FailAnswer(response, ERROR_BAD_REQUEST, "not subscribed");
  m_paused = request.has_pause();
  m_paused ? m_monitor->Pause() : m_monitor->Resume();
  GoOn();
}

void RelaySession::SetFilter(const std::string& text, Response* response) {
  m_filter.reset();
  if (m_monitor) m_monitor->SetFilter(nullptr);
  if (text.empty()) return;
  WhereError error;
  m_filter = m_filters.Open({}, text, error);
  if (m_monitor && m_filter) m_monitor->SetFilter(m_filter);
  if (m_filter) return;
  response->set_place(static_cast<std::uint32_t>(error.place));
  response->set_length(static_cast<std::uint32_t>(error.length));
  FailAnswer(response, ERROR_BAD_REQUEST, error.reason);
}

void RelaySession::Subscribe(const quor::wire::Subscribe& subscribe) {
  m_traces.SetKnown(subscribe);
  m_monitor->Start();
  const std::optional<EngineTime> place = ReadPlace(subscribe.place());
  if (!m_first) return;  // it has not welcomed
  FedPiece first = std::move(*m_first);
  m_first.reset();
  if (!subscribe.place().empty() && place) {
    m_begin = *place;
    m_feed->Restart({EngineStart::At::Time, *place, 0});
    return;
  }
  Take(std::move(first));
}

void RelaySession::OnPiece(FedPiece piece) {
  if (m_monitor) return Take(std::move(piece));
  if (piece.state != State::Broken) {
    m_first = std::move(piece);
    if (!m_welcomed) Welcome();
    return;
  }
  m_broken = piece.why;
  if (piece.isHopeless) return Refuse(ERROR_ACCESS, m_broken);
  // An engine that says why will hardly say something else soon.
  const bool isAnswer =
      m_broken.starts_with("the engine says") || m_broken.starts_with("the engine refuses");
  if (!isAnswer) m_brokenSince.reset();
  if (isAnswer && !m_brokenSince) m_brokenSince = Clock::now();
  if (isAnswer && Clock::now() - *m_brokenSince >= m_times.refusal)
    return Refuse(ERROR_ACCESS, m_broken);
  m_feed->GoOn();
}

void RelaySession::Take(FedPiece piece) {
  TellState(piece);
  for (FedItem& item : piece.items) {
    if (!item.message) {
      m_reader.TakeWord(item.machine, item.word, piece.now);
      continue;
    }
    const EngineTime arrived = item.message->arrived;
    if (!m_firstArrival) m_firstArrival = arrived;
    m_lastArrival = std::max(m_lastArrival.value_or(arrived), arrived);
    m_reader.Take(item.machine, item.app, std::move(*item.message), piece.now);
  }
  if (piece.malformed > 0) m_traces.NoteTrouble(piece.malformed, piece.whyMalformed);
  m_reader.Look(piece.now);
  m_traces.Look(piece.now);
  m_hub.Seal();
  m_hub.Deliver();
  m_wantsPlace = Clock::now() - m_placedAt >= m_times.place;
  m_feedWaits = true;
  GoOn();
}

// An engine that is away for an election is not worth a word.
void RelaySession::TellState(const FedPiece& piece) {
  const Clock::time_point now = Clock::now();
  if (piece.state == State::BegunAnew) m_traces.Note("The stream has begun anew: " + piece.why);
  const std::string& why = piece.state == State::Broken ? piece.why : piece.whyNoWords;
  if (why.empty()) {
    if (std::exchange(m_toldBroken, false)) m_traces.Note("The engine answers again");
    m_brokenSince.reset();
    return;
  }
  if (!m_brokenSince) m_brokenSince = now;
  if (m_toldBroken || now - *m_brokenSince < m_times.trouble) return;
  m_toldBroken = true;
  m_traces.Note((piece.state == State::Broken ? "No traces come from the cluster: "
                                              : "What is lost at the end does not show: ") +
                why);
}

void RelaySession::GoOn() {
  if (!m_feedWaits || !m_monitor || m_paused) return;
  const std::size_t waiting = m_monitor->WaitingBytes();
  if (m_wantsPlace ? waiting > 0 : waiting >= kWaitingBytes) return;
  if (std::exchange(m_wantsPlace, false)) SendPlace();
  m_feedWaits = false;
  m_feed->GoOn();
}

// What was stored before the oldest message that is still needed has been sent. A clock that is
// ahead of the engine's must not hide anything.
EngineTime RelaySession::Place() const {
  if (!m_lastArrival) return m_begin;
  const EngineTime oldest =
      std::min(m_reader.OldestHeld().value_or(*m_lastArrival), *m_lastArrival);
  return std::max(Earlier(oldest, kMargin), std::min(m_begin, *m_firstArrival));
}

void RelaySession::SendPlace() {
  m_placedAt = Clock::now();
  const SourceCounts counts = m_reader.Counts();
  Ledger ledger;
  ledger.mutable_relay()->set_place(PlaceText(Place()));
  ledger.mutable_relay()->set_twice(counts.twice);
  ledger.mutable_relay()->set_late(counts.late);
  m_connection->Send(FrameType::Ledger, ledger);
}
