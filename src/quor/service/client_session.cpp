#include "quor/service/client_session.h"

#include "quor/log/log.h"
#include "quor/protocol/tls.h"

namespace {

using namespace quor::wire;

constexpr std::size_t kHelloBytesMax = 4096;
constexpr std::size_t kRequestBytesMax = 1u << 20;  // a Submit of as many traces as are possible
constexpr std::size_t kAnswerBytesMax = kControlFrameBytesMax - 64;

constexpr const char* kOnlyAdministrators =
    "only root and the members of the group of this machine's service may do that";

bool IsOfAdministrators(const Request& request) {
  return request.has_forward() || request.has_take() || request.has_end_take() ||
         request.has_get_status() || request.has_reload();
}

Role Needed(const Request& request) {
  switch (request.what_case()) {
    case Request::kSubscribe:
    case Request::kSetFilter:
    case Request::kPause:
    case Request::kResume:
    case Request::kListApps:
    case Request::kTake:
    case Request::kEndTake:
      return ROLE_MONITOR;
    case Request::kForward:
      return ROLE_FORWARD;
    default:
      return ROLE_CONFIGURE;
  }
}

}  // namespace

ClientSession::ClientSession(Host& host, SessionContext& context, SessionPeer peer)
    : m_host(host),
      m_context(context),
      m_peer(std::move(peer)),
      m_apps(context.apps,
             AppView(context.accounts, context.apps.Known(), {m_peer.uid, m_peer.isRestricted}),
             m_peer.pid) {}

void ClientSession::Start(std::shared_ptr<ByteStream> stream) {
  m_connection = Connection::Start(std::move(stream), *this, m_context.connectionLimits);
  m_connection->LimitFrames(kHelloBytesMax);
}

std::weak_ptr<Connection> ClientSession::Stop() {
  if (m_monitor) m_monitor->Flush();
  EndMonitor();
  LeaveTaker();
  m_connection->CloseAfterWriting();
  return std::exchange(m_connection, nullptr);
}

void ClientSession::EndSilent() {
  if (!IsGreeted()) End("it has sent no hello");
}

void ClientSession::End(const std::string& why) {
  m_connection->Close();
  OnClosed(why);
}

void ClientSession::OnClosed(const std::string& reason) {
  const auto self = shared_from_this();
  Log(IsGreeted() ? LogLevel::Info : LogLevel::Warning,
      m_peer.label + " has disconnected: " + reason);
  EndMonitor();
  LeaveTaker();
  if (m_forwarded && m_forwarded->Turn() == m_forwardedTurn) m_forwarded->Break();
  m_apps.Close();
  m_host.OnEnded(*this);
}

void ClientSession::EndMonitor() {
  m_context.dropped += Dropped();
  m_context.withheld += Withheld();
  m_monitor.reset();
}

void ClientSession::LeaveTaker() {
  if (m_taker) m_context.takers.Leave(*m_taker, *m_connection);
  m_taker.reset();
}

void ClientSession::OnWritten() {
  if (m_monitor) m_monitor->Pump();
  if (m_taker) m_taker->Pump();
}

void ClientSession::OnFrame(const Frame& frame) {
  if (!IsGreeted()) return Greet(frame);
  if (m_forwarded && frame.type != FrameType::Request) return TakeForwarded(frame);
  if (m_taker && frame.type == FrameType::Taken) return TakeTaken(frame);
  Request request;
  if (frame.type != FrameType::Request) return End("an unexpected frame");
  if (!ParseBody(frame, &request)) return End("malformed: a request that cannot be read");
  Answer(request);
}

void ClientSession::Greet(const Frame& frame) {
  Hello hello;
  if (frame.type != FrameType::Hello || !ParseBody(frame, &hello))
    return End("malformed: it does not begin with a hello");
  if (hello.version() != kProtocolVersion)
    return Refuse(ERROR_VERSION, "version " + std::to_string(hello.version()) +
                                     " of the protocol is not known here, only " +
                                     std::to_string(kProtocolVersion));
  if (RoleName(hello.role()).empty()) return Refuse(ERROR_BAD_REQUEST, "a role must be asked for");
  if (!m_peer.local && !RoleAllows(m_peer.held, hello.role()))
    return Refuse(ERROR_ACCESS, "the certificate does not allow to " + RoleName(hello.role()));
  m_role = hello.role();
  m_connection->LimitFrames(kRequestBytesMax);
  Welcome welcome;
  welcome.set_version(kProtocolVersion);
  welcome.set_machine(m_context.machine);
  welcome.set_instance(m_context.instance);
  welcome.set_filters(true);
  if (!m_peer.isRestricted)
    for (const std::string& trouble : m_context.troubles) welcome.add_troubles(trouble);
  m_connection->Send(FrameType::Welcome, welcome);
  Log(LogLevel::Info, m_peer.label + " has connected to " + RoleName(m_role));
}

void ClientSession::Refuse(ErrorCode code, const std::string& text) {
  Refused refused;
  refused.set_code(code);
  refused.set_text(text);
  m_connection->Send(FrameType::Refused, refused);
  m_connection->CloseAfterWriting();
  OnClosed("refused: " + text);
}

Account ClientSession::OwnAccount() const {
  return m_peer.isRestricted && m_peer.uid ? m_context.accounts.Of(*m_peer.uid) : Account{};
}

// Many clients may hand over texts that take long to make, all at the same time.
bool ClientSession::PutsOff(const Request& request) {
  const std::string& text = request.set_filter().text();
  if (text.empty() || !RoleAllows(m_role, ROLE_MONITOR)) return false;
  const auto wait = m_context.filters.WaitFor(OwnAccount(), text);
  if (wait.count() == 0) return false;
  m_putOff = request;
  m_connection->Rest(wait);
  return true;
}

void ClientSession::Answer(const Request& request) {
  if (PutsOff(request)) return;
  Response response;
  response.set_id(request.id());
  if (request.what_case() == Request::WHAT_NOT_SET)
    FailRequest(&response, ERROR_BAD_REQUEST, "an empty or unknown request");
  else if (m_peer.isRestricted && IsOfAdministrators(request))
    FailRequest(&response, ERROR_ACCESS, kOnlyAdministrators);
  else if (!RoleAllows(m_role, Needed(request)))
    FailRequest(&response, ERROR_ACCESS, "the role does not allow it");
  else
    Serve(request, &response);
  if (response.ByteSizeLong() > kAnswerBytesMax) {
    response.Clear();
    response.set_id(request.id());
    FailRequest(&response, ERROR_LIMIT, "the answer is too long");
  }
  if (!m_connection->Send(FrameType::Response, response))
    return End("it asks and does not read the answers");
  if (response.error() == ERROR_NONE) StartStream(request);
}

// Data come behind the answer.
void ClientSession::StartStream(const Request& request) {
  if (!request.has_subscribe() && !request.has_take()) return;
  if (m_monitor) m_monitor->Start();
  if (m_taker)
    m_taker->Start(*m_connection, [this] { End("another connection goes on with its stream"); });
  m_context.apps.ReleaseHeld(Only());
}

bool ClientSession::Serve(const Request& request, Response* response) {
  switch (request.what_case()) {
    case Request::kSubscribe:
    case Request::kPause:
    case Request::kResume:
      return ServeStream(request, response);
    case Request::kSetFilter:
      return SetFilter(request.set_filter().text(), response);
    case Request::kForward:
      return Forward(request.forward(), response);
    case Request::kTake:
    case Request::kEndTake:
      return Take(request, response);
    case Request::kGetStatus:
      m_host.FillStatus(response->mutable_status());
      return true;
    case Request::kReload:
      return Reload(response);
    default:
      return m_apps.Serve(request, m_role, response);
  }
}

bool ClientSession::ServeStream(const Request& request, Response* response) {
  if (request.has_subscribe()) {
    if (m_monitor || m_taker) return FailRequest(response, ERROR_BAD_REQUEST, "subscribed already");
    m_monitor = std::make_unique<MonitorStream>(m_context.hub, *m_connection,
                                                m_context.streamLimits, Only());
    m_monitor->SetFilter(m_filter);
    return true;
  }
  if (!m_monitor) return FailRequest(response, ERROR_BAD_REQUEST, "not subscribed");
  request.has_pause() ? m_monitor->Pause() : m_monitor->Resume();
  return true;
}

bool ClientSession::SetFilter(const std::string& text, Response* response) {
  WhereError error;
  // In its place the new one may be within the bound of the account.
  m_filter.reset();
  if (m_monitor) m_monitor->SetFilter(nullptr);
  if (text.empty()) return true;
  m_filter = m_context.filters.Open(OwnAccount(), text, error);
  if (!m_filter) {
    response->set_place(static_cast<std::uint32_t>(error.place));
    response->set_length(static_cast<std::uint32_t>(error.length));
    return FailRequest(response, ERROR_BAD_REQUEST, error.reason);
  }
  if (m_monitor) m_monitor->SetFilter(m_filter);
  return true;
}

bool ClientSession::Reload(Response* response) {
  if (!m_peer.local) return FailRequest(response, ERROR_ACCESS, "only on the machine itself");
  std::vector<std::string> notes;
  std::string why;
  if (!m_host.Reload(&notes, &why)) return FailRequest(response, ERROR_BAD_REQUEST, why);
  for (const std::string& note : notes) response->add_notes(note);
  return true;
}

bool ClientSession::Forward(const quor::wire::Forward& forward, Response* response) {
  std::string why;
  const auto stream = m_context.inlet.Open(Forwarder(), forward.stream(), forward.machine(), &why);
  if (!stream) return FailRequest(response, ERROR_BAD_REQUEST, why);
  // A connection that begins another stream no longer continues the first one.
  if (m_forwarded && m_forwardedId != forward.stream())
    m_context.inlet.Forget(Forwarder(), m_forwardedId);
  m_forwarded = stream;
  m_forwardedId = forward.stream();
  m_forwardedTurn = stream->Turn();
  m_connection->LimitFrames(kDataFrameBytesMax);
  response->set_taken(m_forwarded->Taken());
  return true;
}

void ClientSession::TakeForwarded(const Frame& frame) {
  std::string why;
  if (m_forwarded->Turn() != m_forwardedTurn)
    return End("another connection goes on with its stream");
  if (frame.type == FrameType::Data) {
    if (!m_forwarded->TakeData(frame.body, &why)) End("malformed: " + why);
    return;
  }
  Ledger ledger;
  if (frame.type != FrameType::Ledger || !ParseBody(frame, &ledger))
    return End("malformed: neither data nor a ledger");
  if (!m_forwarded->TakeLedger(ledger, &why)) return End("malformed: " + why);
  Taken taken;
  taken.set_frames(m_forwarded->Taken());
  if (!m_connection->Send(FrameType::Taken, taken)) return End("it does not read what was taken");
  if (!m_forwarded->IsExhausted()) return;
  m_context.inlet.Forget(Forwarder(), m_forwardedId);
  // Send the confirmation of what was taken before the end.
  m_connection->CloseAfterWriting();
  OnClosed("its stream has had too many sources and is to begin anew");
}

bool ClientSession::Take(const Request& request, Response* response) {
  if (!m_peer.local) return FailRequest(response, ERROR_ACCESS, "only on the machine itself");
  if (request.has_end_take()) {
    if (!m_taker) return FailRequest(response, ERROR_BAD_REQUEST, "nothing is taken");
    const auto ended = m_taker;
    LeaveTaker();
    m_context.takers.End(*ended);
    return true;
  }
  if (m_monitor || m_taker || m_forwarded)
    return FailRequest(response, ERROR_BAD_REQUEST, "subscribed already");
  ErrorCode code = ERROR_NONE;
  std::string why;
  const std::string owner = m_peer.uid ? std::to_string(*m_peer.uid) : std::string();
  m_taker = m_context.takers.Open(owner, m_peer.label, request.take(), &code, &why);
  if (!m_taker) return FailRequest(response, code, why);
  response->set_taken(m_taker->Taken());
  return true;
}

void ClientSession::TakeTaken(const Frame& frame) {
  Taken taken;
  std::string why = "it cannot be read";
  if (!ParseBody(frame, &taken) || !m_taker->Take(taken.frames(), &why))
    return End("malformed: " + why);
  m_context.takers.RenewNames();
}
