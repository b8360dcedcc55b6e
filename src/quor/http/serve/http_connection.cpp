#include "quor/http/serve/http_connection.h"

#include <utility>

std::shared_ptr<HttpConnection> HttpConnection::Start(std::shared_ptr<ByteStream> stream,
                                                      Handler& handler,
                                                      std::shared_ptr<HttpMemory> memory,
                                                      std::string peer, const HttpLimits& limits,
                                                      const Patience& patience) {
  std::shared_ptr<HttpConnection> started(new HttpConnection(
      std::move(stream), handler, std::move(memory), std::move(peer), limits, patience));
  started->Enter(Phase::Idle);
  started->Read();
  return started;
}

HttpConnection::HttpConnection(std::shared_ptr<ByteStream> stream, Handler& handler,
                               std::shared_ptr<HttpMemory> memory, std::string peer,
                               const HttpLimits& limits, const Patience& patience)
    : m_stream(std::move(stream)),
      m_handler(&handler),
      m_memory(std::move(memory)),
      m_peer(std::move(peer)),
      m_patience(patience),
      m_reader(limits),
      m_timer(m_stream->Executor()) {}

std::optional<HttpConnection::Clock::time_point> HttpConnection::IdleSince() const {
  return m_phase == Phase::Idle ? std::optional(m_since) : std::nullopt;
}

std::chrono::milliseconds HttpConnection::PatienceIn(Phase phase) const {
  switch (phase) {
    case Phase::Idle:
      return m_patience.idle;
    case Phase::Head:
      return m_patience.head;
    case Phase::Body:
      return m_patience.body;
    case Phase::Answer:
      return m_patience.answer;
    case Phase::Write:
      return m_patience.write;
    case Phase::Last:
    case Phase::Gone:
      break;
  }
  return m_patience.last;
}

// The deadline is that of the whole phase: bytes that trickle do not put it off.
void HttpConnection::Enter(Phase phase) {
  if (phase == m_phase) return;
  m_phase = phase;
  m_since = Clock::now();
  m_timer.expires_at(m_since + PatienceIn(phase));
  m_timer.async_wait(
      [weak = weak_from_this(), phase, since = m_since](const std::error_code& error) {
        const auto self = weak.lock();
        if (!error && self && self->m_phase == phase && self->m_since == since) self->OnLate();
      });
}

void HttpConnection::OnLate() {
  if (m_continues) return End();
  if (m_phase == Phase::Head || m_phase == Phase::Body)
    return Refuse(408, "the request comes too slowly");
  if (m_phase != Phase::Answer) return End();
  HttpAnswer answer = m_handler->Refusal(503, "the answer takes too long");
  ++m_requests;  // the one that is late is not wanted any more
  Send(std::move(answer));
}

void HttpConnection::Read() {
  if (std::exchange(m_reads, true)) return;
  m_stream->ReadSome(m_buffer,
                     [self = shared_from_this()](const std::error_code& error, std::size_t bytes) {
                       self->OnRead(error, bytes);
                     });
}

void HttpConnection::OnRead(const std::error_code& error, std::size_t bytes) {
  m_reads = false;
  // While a refusal for being late is on its way, what comes is dropped.
  if (m_phase == Phase::Gone || m_phase == Phase::Write) return;
  if (error) return End();
  if (m_phase == Phase::Last) return Read();
  m_rest = Bytes(m_buffer.data(), bytes);
  TakeBytes();
}

void HttpConnection::TakeBytes() {
  using State = HttpRequestReader::State;
  while (!m_rest.empty()) {
    m_rest = m_rest.subspan(m_reader.Feed(m_rest));
    if (m_reader.Now() == State::Failed) return Refuse(m_reader.Status(), m_reader.Why());
    if (!CountMemory()) return Refuse(503, "too much is on its way to here");
    const bool hasHead = m_reader.Now() != State::Head;
    if (hasHead && !std::exchange(m_sawHead, true) && !TakeHead()) return;
    if (m_reader.Now() == State::Complete) return Ask();
  }
  if (m_reader.Now() == State::Head) Enter(m_reader.IsIdle() ? Phase::Idle : Phase::Head);
  Read();
}

// False: it goes on in another way.
bool HttpConnection::TakeHead() {
  if (std::optional<HttpAnswer> refusal = m_handler->OnHead(m_reader.Request())) {
    refusal->closes = true;
    Send(std::move(*refusal));
    return false;
  }
  if (m_reader.Now() == HttpRequestReader::State::Complete) return true;
  Enter(Phase::Body);
  // A peer that has not waited for it needs none.
  if (!m_reader.Request().awaitsContinue || !m_rest.empty()) return true;
  SendContinue();
  return false;
}

void HttpConnection::SendContinue() {
  m_continues = true;
  m_answer = kHttpContinue;
  m_stream->WriteAll({asio::buffer(m_answer)},
                     [self = shared_from_this()](const std::error_code& error, std::size_t) {
                       self->m_continues = false;
                       if (self->m_phase != Phase::Body) return;
                       error ? self->End() : self->Read();
                     });
}

bool HttpConnection::CountMemory() {
  const std::size_t now = m_reader.Request().body.size();
  m_memory->used += now;
  m_memory->used -= std::exchange(m_held, now);
  return m_memory->used <= m_memory->most;
}

void HttpConnection::Ask() {
  Enter(Phase::Answer);
  const std::uint64_t number = ++m_requests;
  const auto respond = [weak = weak_from_this(), number](HttpAnswer answer) {
    const auto self = weak.lock();
    if (!self || self->m_phase != Phase::Answer || self->m_requests != number) return;
    self->Send(std::move(answer));
  };
  m_handler->OnRequest(*this, m_reader.Request(), respond);
}

void HttpConnection::Refuse(int status, const std::string& why) {
  HttpAnswer answer = m_handler->Refusal(status, why);
  answer.closes = true;
  Send(std::move(answer));
}

void HttpConnection::Send(HttpAnswer answer) {
  const bool wasRead = m_reader.Now() == HttpRequestReader::State::Complete;
  const HttpRequest& request = m_reader.Request();
  m_closes = m_closes || answer.closes || !wasRead || !request.keepsAlive;
  answer.closes = m_closes;
  answer.hidesBody = request.method == "HEAD";
  m_answer = WriteAnswer(answer, std::time(nullptr));
  Enter(Phase::Write);
  m_stream->WriteAll({asio::buffer(m_answer)},
                     [self = shared_from_this()](const std::error_code& error, std::size_t) {
                       self->OnSent(error);
                     });
}

void HttpConnection::OnSent(const std::error_code& error) {
  if (m_phase != Phase::Write) return;
  if (error) return End();
  m_memory->used -= std::exchange(m_held, 0);
  if (m_closes) {
    Enter(Phase::Last);
    m_stream->EndSending();
    return Read();
  }
  m_reader.Next();
  m_sawHead = false;
  Enter(m_rest.empty() ? Phase::Idle : Phase::Head);
  TakeBytes();
}

void HttpConnection::CloseAfterAnswer() {
  if (m_phase == Phase::Idle) return Close();
  m_closes = true;
}

void HttpConnection::Close() {
  m_handler = nullptr;
  End();
}

void HttpConnection::End() {
  if (m_phase == Phase::Gone) return;
  m_phase = Phase::Gone;
  m_timer.cancel();
  m_memory->used -= std::exchange(m_held, 0);
  m_stream->Close();
  if (Handler* const handler = std::exchange(m_handler, nullptr)) handler->OnGone(*this);
}
