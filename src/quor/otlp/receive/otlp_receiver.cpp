#include "quor/otlp/receive/otlp_receiver.h"

#include <algorithm>
#include <utility>

#include "quor/http/unpack.h"
#include "quor/log/log.h"
#include "quor/otlp/receive/otlp_answers.h"
#include "quor/protocol/machine.h"

namespace {

using OtlpClock = std::chrono::steady_clock;
constexpr std::chrono::milliseconds kHandshakeDeadline{5000};
constexpr std::chrono::seconds kReportRefusalsEvery{5};

}  // namespace

OtlpReceiver::OtlpReceiver(asio::io_context& io, OtlpSink& sink,
                           const HttpConnection::Patience& patience)
    : m_sink(sink),
      m_patience(patience),
      m_plain(io,
              [this](asio::ip::tcp::socket socket, const std::string& address) {
                Add(MakeStream(std::move(socket)), address, LocalHostName());
              }),
      m_tls(io, kHandshakeDeadline,
            [this](std::unique_ptr<TlsSocket> socket, const TlsPeer& peer,
                   const std::string& address) {
              if (RoleAllows(peer.role, quor::wire::ROLE_FORWARD))
                return Add(MakeStream(std::move(socket)), peer.name, address);
              Log(LogLevel::Warning, peer.name + " at " + address +
                                         " is refused: its certificate does not allow to forward");
            }) {}

OtlpReceiver::~OtlpReceiver() {
  for (const auto& [connection, peer] : std::exchange(m_peers, {})) peer.connection->Close();
}

bool OtlpReceiver::Open(const OtlpDoors& doors, std::string* why) {
  return std::all_of(doors.plain.begin(), doors.plain.end(),
                     [&](const std::string& text) { return m_plain.Open(text, why); }) &&
         m_tls.Open(doors.tls, doors.rules, why);
}

std::vector<std::string> OtlpReceiver::Addresses() const {
  std::vector<std::string> addresses = m_plain.Addresses();
  for (std::string& address : m_tls.Addresses()) addresses.push_back(std::move(address));
  return addresses;
}

void OtlpReceiver::Start() {
  m_plain.Start();
  m_tls.Start();
}

void OtlpReceiver::Stop() {
  m_plain.Close();
  m_tls.Close();
  std::vector<std::shared_ptr<HttpConnection>> idle;
  for (const auto& [connection, peer] : m_peers) {
    if (peer.connection->IdleSince())
      idle.push_back(peer.connection);
    else
      peer.connection->CloseAfterAnswer();
  }
  for (const auto& connection : idle) {
    m_peers.erase(connection.get());
    connection->Close();
  }
}

// Who asks nothing now gives way to a newcomer: clients connect again without a loss.
bool OtlpReceiver::MakeRoom() {
  if (m_peers.size() < kConnectionsMax) return true;
  auto oldest = m_peers.end();
  for (auto entry = m_peers.begin(); entry != m_peers.end(); ++entry) {
    const auto since = entry->second.connection->IdleSince();
    if (!since) continue;
    if (oldest == m_peers.end() || *since < *oldest->second.connection->IdleSince()) oldest = entry;
  }
  if (oldest == m_peers.end()) return false;
  const std::shared_ptr<HttpConnection> leaving = oldest->second.connection;
  m_peers.erase(oldest);
  leaving->Close();
  return true;
}

void OtlpReceiver::Add(std::shared_ptr<ByteStream> stream, std::string name, std::string machine) {
  if (!MakeRoom()) {
    Counted(OtlpRefusal(503, "too many connections"));
    return stream->Close();
  }
  HttpLimits limits;
  limits.bodyBytes = kBodyBytesMax;
  auto connection = HttpConnection::Start(std::move(stream), *this, m_memory, std::move(name),
                                          limits, m_patience);
  const HttpConnection* const key = connection.get();
  m_peers[key] = {std::move(connection), std::move(machine)};
}

void OtlpReceiver::OnGone(HttpConnection& connection) {
  m_peers.erase(&connection);
}

std::optional<HttpAnswer> OtlpReceiver::OnHead(const HttpRequest& request) {
  std::optional<HttpAnswer> refusal = OtlpRefusalByHead(request);
  if (refusal) return Counted(std::move(*refusal));
  return std::nullopt;
}

HttpAnswer OtlpReceiver::Refusal(int status, const std::string& why) {
  return Counted(OtlpRefusal(status, why, 2));
}

// A flood of requests must not become a flood in the log.
HttpAnswer OtlpReceiver::Counted(HttpAnswer answer) {
  if (answer.status == 200) return answer;
  ++m_counts.refused;
  const OtlpClock::time_point now = OtlpClock::now();
  if (now < m_nextReport) return answer;
  m_nextReport = now + kReportRefusalsEvery;
  Log(LogLevel::Warning, "a request is refused with " + std::to_string(answer.status) + " " +
                             std::string(HttpWordsOf(answer.status)) + "; " +
                             std::to_string(m_counts.refused) + " until now");
  return answer;
}

void OtlpReceiver::OnRequest(HttpConnection& connection, HttpRequest& request,
                             HttpConnection::Respond respond) {
  ++m_counts.requests;
  const OtlpSignal signal = OtlpSignalOf(request).value_or(OtlpSignal::Logs);
  const std::string kind = (signal == OtlpSignal::Logs ? "logs " : "traces ") +
                           std::string(request.headers.Value("content-encoding"));
  const SeenBodies::Key key = SeenBodies::KeyOf(connection.Peer(), kind, request.body);
  const auto look = m_seen.Enter(key, OtlpClock::now(), [this, respond](const OtlpVerdict& done) {
    respond(Counted(OtlpAnswerTo(done)));
  });
  if (look == SeenBodies::Look::TooMany)
    return respond(Refusal(503, "the same body is on its way too often"));
  if (look != SeenBodies::Look::New) ++m_counts.again;
  if (look == SeenBodies::Look::Taken) return respond(OtlpAnswerTo({}));
  if (look == SeenBodies::Look::Waits) return;
  const BodyCoding coding = BodyCodingOf(request.headers.Value("content-encoding"));
  std::vector<std::uint8_t> unpacked;
  std::string why;
  if (coding != BodyCoding::Plain) {
    const Unpacking result = Unpack(coding, request.body, kBodyBytesMax, unpacked, &why);
    if (result == Unpacking::TooLong) {
      m_seen.Settle(key, false, OtlpClock::now());
      return respond(Refusal(413, why));
    }
    if (result == Unpacking::Malformed) return Settle(key, {OtlpVerdict::Kind::Malformed, 0, why});
  }
  m_sink.Take(signal, coding == BodyCoding::Plain ? Bytes(request.body) : Bytes(unpacked),
              m_peers.at(&connection).machine,
              [this, key](const OtlpVerdict& verdict) { Settle(key, verdict); });
}

void OtlpReceiver::Settle(const SeenBodies::Key& key, const OtlpVerdict& verdict) {
  const bool taken = verdict.kind == OtlpVerdict::Kind::Taken;
  if (taken) ++m_counts.taken;
  for (const OtlpSink::Done& done : m_seen.Settle(key, taken, OtlpClock::now())) done(verdict);
}
