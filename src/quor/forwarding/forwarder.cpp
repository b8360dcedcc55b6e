#include "quor/forwarding/forwarder.h"

#include <openssl/rand.h>

#include <algorithm>
#include <utility>

#include "quor/log/log.h"
#include "quor/protocol/tls.h"

namespace {

using std::chrono::milliseconds;
constexpr milliseconds kPauseMin{100}, kPauseMax{5000}, kDialDeadline{5000};
constexpr std::size_t kWindowBytes = 2u << 20;
constexpr std::uint32_t kForwardRequest = 1;
constexpr std::size_t kEarlierAtOnce = 1024;

void PutLine(const Source& source, std::uint64_t serial, quor::wire::Ledger* ledger) {
  quor::wire::Ledger::Source* const line = ledger->add_sources();
  line->set_instance(source.instance.data(), source.instance.size());
  line->set_serial(serial);
}

void CountForwarded(Source& source, std::uint64_t traces) {
  source.forwarded += traces;
  if (source.noteForwarded) source.noteForwarded(source.forwarded);
}

}  // namespace

Forwarder::Forwarder(asio::io_context& io, Machine machine, std::string keysFolder,
                     std::string ownMachine, std::size_t storeBytes)
    : m_io(io),
      m_machine(std::move(machine)),
      m_keysFolder(std::move(keysFolder)),
      m_ownMachine(std::move(ownMachine)),
      m_name(AddressOf(m_machine.host, m_machine.port)),
      m_queue(m_hub.Names(),
              {storeBytes, 0, "the link to the other machine is broken or too slow", true}),
      m_timer(io),
      m_pause(kPauseMin) {
  NewStreamId();
}

Forwarder::Forwarder(asio::io_context& io, ForwardWay way, std::string ownMachine,
                     std::size_t storeBytes)
    : m_io(io),
      m_ownMachine(std::move(ownMachine)),
      m_name(std::move(way.name)),
      m_dial(std::move(way.dial)),
      m_queue(m_hub.Names(), {storeBytes, 0, way.tooSlow, true}),
      m_timer(io),
      m_pause(kPauseMin) {
  NewStreamId();
}

void Forwarder::NewStreamId() {
  m_streamId.resize(16);
  RAND_bytes(reinterpret_cast<unsigned char*>(m_streamId.data()), 16);
  m_kept.BeginAnew();
  m_keptSent = false;
}

void Forwarder::Start() {
  m_hub.Add(*this);
  Dial();
}

std::weak_ptr<Connection> Forwarder::Stop() {
  m_stopped = true;
  m_timer.cancel();
  m_hub.Seal();
  m_hub.Deliver();
  Pump();
  LogUnconfirmed();
  if (m_connection) m_connection->CloseAfterWriting();
  m_state = State::Down;
  return std::exchange(m_connection, nullptr);
}

// What is not confirmed is sent again over the next link.
void Forwarder::UseRevoked(const std::string& lists, const std::string& serviceKeys) {
  m_revoked = lists;
  m_serviceKeys = serviceKeys;
  ++m_listsRead;
  if (!m_connection) return;
  m_connection->Close();
  m_connection.reset();
  m_state = State::Down;
  Dial();
}

void Forwarder::OnBatch(const SharedBatch& batch) {
  m_queue.Push(batch);
  Pump();
}

void Forwarder::LogUnconfirmed() const {
  const std::uint64_t traces = m_queue.WaitingTraces() + m_kept.Traces();
  if (traces == 0) return;
  Log(LogLevel::Warning, "ending with " + std::to_string(traces) + " traces that " + m_name +
                             " is not known to have: it counts those that do not arrive as lost" +
                             " when the next service is here");
}

void Forwarder::OnSource(const std::shared_ptr<Source>& source) {
  if (source->forwarded >= source->serial) return;
  m_earlier.push_back({source, source->forwarded, source->serial, source->way});
  if (m_state == State::Up) ReportEarlier();
}

void Forwarder::Dial() {
  if (m_dial)
    return m_dial(
        [self = shared_from_this()](std::shared_ptr<ByteStream> stream, const std::string& reason) {
          self->OnConnected(std::move(stream), reason);
        });
  std::string why;
  const bool same = !m_revoked.empty() && IsSameAuthority(m_keysFolder, m_serviceKeys);
  auto tls = MakeClientTls(m_keysFolder, &why, same ? m_revoked : std::string());
  if (!tls) return TryLater(why);
  ConnectTls(m_io.get_executor(), std::move(tls), m_machine.host, m_machine.port, kDialDeadline,
             [self = shared_from_this(), lists = m_listsRead](std::shared_ptr<ByteStream> stream,
                                                              const std::string& reason) {
               // They may have changed while it was dialled.
               if (lists != self->m_listsRead && !self->m_stopped) return self->Dial();
               self->OnConnected(std::move(stream), reason);
             });
}

void Forwarder::OnConnected(std::shared_ptr<ByteStream> stream, const std::string& why) {
  if (m_stopped) return;
  if (!stream) return TryLater(why);
  m_connection = Connection::Start(std::move(stream), *this);
  m_state = State::Greeting;
  m_keptSent = false;
  m_earlierReported = 0;
  quor::wire::Hello hello;
  hello.set_version(kProtocolVersion);
  hello.set_role(quor::wire::ROLE_FORWARD);
  m_connection->Send(FrameType::Hello, hello);
}

void Forwarder::TryLater(const std::string& why) {
  m_state = State::Down;
  if (m_stopped) return;
  if (why != m_loggedReason) Log(LogLevel::Warning, "cannot forward to " + m_name + ": " + why);
  m_loggedReason = why;
  m_timer.expires_after(m_pause);
  m_pause = std::min(m_pause * 2, kPauseMax);
  m_timer.async_wait([self = shared_from_this()](const std::error_code& error) {
    if (!error && !self->m_stopped) self->Dial();
  });
}

void Forwarder::OnClosed(const std::string& reason) {
  m_connection.reset();
  TryLater(reason);
}

void Forwarder::OnFrame(const Frame& frame) {
  if (Handle(frame)) return;
  m_connection->Close();
  OnClosed("it has sent an unexpected frame");
}

bool Forwarder::Handle(const Frame& frame) {
  quor::wire::Refused refused;
  quor::wire::Welcome welcome;
  quor::wire::Response response;
  quor::wire::Taken taken;
  switch (m_state) {
    case State::Greeting:
      if (frame.type == FrameType::Refused && ParseBody(frame, &refused))
        return Refused(refused.text());
      if (frame.type != FrameType::Welcome || !ParseBody(frame, &welcome)) return false;
      m_state = State::Asking;
      AskToForward();
      return true;
    case State::Asking:
      // A confirmation for an ended stream may still come.
      if (frame.type == FrameType::Taken) return true;
      if (frame.type != FrameType::Response || !ParseBody(frame, &response)) return false;
      if (response.error() == quor::wire::ERROR_NONE) return BeginStream(response.taken());
      return Refused(response.text());
    case State::Up:
      return frame.type == FrameType::Taken && ParseBody(frame, &taken) &&
             DropTaken(taken.frames());
    case State::Down:
      break;
  }
  return false;
}

bool Forwarder::Refused(const std::string& why) {
  m_connection->Close();
  OnClosed("it refuses: " + why);
  return true;
}

void Forwarder::AskToForward() {
  quor::wire::Request request;
  request.set_id(kForwardRequest);
  request.mutable_forward()->set_stream(m_streamId);
  request.mutable_forward()->set_machine(m_ownMachine);
  m_connection->Send(FrameType::Request, request);
}

bool Forwarder::BeginStream(std::uint64_t taken) {
  if (taken < m_kept.Taken()) {
    // The other side was restarted and does not know this stream: begin a new one with the frames
    // that never arrived.
    m_queue.Restart(m_kept.Withdraw());
    NewStreamId();
    m_earlierReported = 0;
    AskToForward();
    return true;
  }
  if (!DropTaken(taken)) return false;
  ConfirmEarlier();
  if (!m_earlier.empty()) {
    ReportEarlier();
    return true;
  }
  m_state = State::Up;
  if (!std::exchange(m_keptSent, true)) {
    m_pause = kPauseMin;
    m_loggedReason.clear();
    Log(LogLevel::Info, "forwarding to " + m_name);
    SendKept();
  }
  Pump();
  return true;
}

bool Forwarder::DropTaken(std::uint64_t taken) {
  const std::uint64_t before = m_settled;
  const auto note = [this](const Batch& batch) {
    for (const SourceDelta& delta : batch.sources) {
      CountForwarded(*delta.source, delta.traces + delta.lost);
      m_settled += delta.traces + delta.lost;
    }
  };
  if (!m_kept.Take(taken, note)) return false;
  Pump();
  RenewNames();
  if (m_settled != before && m_onSettled) m_onSettled();
  return true;
}

bool Forwarder::IsIdle() const {
  return !m_hub.HasSources() && !m_hub.HasOpenBatch() && m_kept.IsEmpty() && m_queue.IsEmpty() &&
         m_earlier.empty();
}

// Processes that come and go use the names up in days, and the stream of this hub never ends.
void Forwarder::RenewNames() {
  if (m_state != State::Up || !NamesAreUsed()) return;
  if (m_hub.HasOpenBatch() || !m_kept.IsEmpty() || !m_queue.IsEmpty()) return;
  m_hub.Remove(*this);
  m_hub.Add(*this);
  NewStreamId();
  m_queue.Restart({});
  m_state = State::Asking;
  AskToForward();
}

// Sent before all traces that are taken here. The answer to another request to forward confirms
// that these lines have been read.
void Forwarder::ReportEarlier() {
  quor::wire::Ledger ledger;
  m_earlierReported = std::min(m_earlier.size(), kEarlierAtOnce);
  for (std::size_t i = 0; i < m_earlierReported; ++i) {
    PutLine(*m_earlier[i].source, m_earlier[i].arrived, &ledger);
    PutLine(*m_earlier[i].source, m_earlier[i].serial, &ledger);
  }
  m_connection->Send(FrameType::Ledger, ledger);
  m_state = State::Asking;
  AskToForward();
}

void Forwarder::ConfirmEarlier() {
  for (; m_earlierReported > 0; --m_earlierReported) {
    const EarlierSource& reported = m_earlier.front();
    CountForwarded(*reported.source, reported.serial - reported.arrived);
    m_earlier.pop_front();
  }
}

void Forwarder::SendKept() {
  for (const Outgoing& kept : m_kept.Frames()) {
    m_connection->SendData(kept.names, kept.records);
    m_connection->Send(FrameType::Ledger, kept.ledger);
  }
}

void Forwarder::Pump() {
  Outgoing out;
  while (m_state == State::Up && m_kept.Bytes() < kWindowBytes && m_queue.Next(out)) {
    if (!out.records->empty()) {
      m_kept.Keep(out);
      m_connection->SendData(out.names, out.records);
    }
    m_connection->Send(FrameType::Ledger, out.ledger);
  }
}
