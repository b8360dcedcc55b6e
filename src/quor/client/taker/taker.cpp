#include "quor/client/taker/taker.h"

#include <algorithm>
#include <random>

namespace {

std::string NewId() {
  std::random_device random;
  std::string id(16, '\0');
  for (char& byte : id) byte = static_cast<char>(random());
  return id;
}

}  // namespace

Taker::Taker(const std::string& machine, User& user, std::string id)
    : m_user(user),
      m_reader([this](const TakenFrame& frame) { m_user.OnFrame(frame); },
               [this](std::uint64_t gap) { m_user.OnGap(gap); }),
      m_link(machine, quor::wire::ROLE_MONITOR, *this),
      m_begins(id.empty()),
      m_id(id.empty() ? NewId() : std::move(id)) {}

bool Taker::Start(std::chrono::milliseconds deadline, std::string* why) {
  return m_link.Start(deadline, why);
}

void Taker::Taken(const std::string& stream, std::uint64_t frames) {
  {
    const std::lock_guard lock(m_mutex);
    if (stream != m_id || frames <= m_safe) return;
    m_safe = frames;
  }
  m_link.Post([this](Connection* connection) {
    if (connection) SendTaken();
  });
}

Taker::Counts Taker::GetCounts() const {
  const std::lock_guard lock(m_mutex);
  return m_counts;
}

void Taker::Publish() {
  const std::lock_guard lock(m_mutex);
  m_counts = {m_reader.Delivered(), m_reader.Lost()};
}

void Taker::OnUp(Connection& connection, const quor::wire::Welcome& welcome) {
  m_connection = &connection;
  m_service = welcome.instance();
  m_agreed = false;
  Ask(connection);
}

void Taker::Ask(Connection& connection) {
  quor::wire::Request request;
  request.set_id(++m_asked);
  request.mutable_take()->set_begins(m_begins);
  {
    const std::lock_guard lock(m_mutex);
    request.mutable_take()->set_stream(m_id);
    // What has not come over any connection cannot be safe.
    request.mutable_take()->set_taken(m_begins ? 0 : std::min(m_safe, m_reader.Given()));
  }
  connection.Send(FrameType::Request, request);
}

void Taker::NewStream() {
  {
    const std::lock_guard lock(m_mutex);
    m_id = NewId();
    m_safe = 0;
  }
  m_begins = true;
  m_told = false;
}

void Taker::TakeResponse(const Frame& frame) {
  quor::wire::Response response;
  if (!ParseBody(frame, &response) || response.id() != m_asked || m_agreed)
    return m_link.Break("it answers what was not asked");
  if (response.error() == quor::wire::ERROR_UNKNOWN_STREAM && !m_begins) {
    NewStream();
    return Ask(*m_connection);
  }
  if (response.error() != quor::wire::ERROR_NONE)
    return m_link.Break("it refuses the stream: " + response.text());
  m_agreed = true;
  m_begins = false;
  m_said = response.taken();
  if (!m_told) m_reader.BeginStream(m_service);
  m_reader.BeginConnection(response.taken());
  if (!std::exchange(m_told, true)) m_user.OnStream(m_id);
}

// The service takes no number of frames that it has not sent over this connection.
void Taker::SendTaken() {
  if (!m_agreed || !m_connection) return;
  quor::wire::Taken taken;
  {
    const std::lock_guard lock(m_mutex);
    taken.set_frames(std::min(m_safe, m_reader.Received()));
  }
  if (taken.frames() <= m_said) return;
  m_said = taken.frames();
  m_connection->Send(FrameType::Taken, taken);
}

void Taker::OnFrame(const Frame& frame) {
  if (frame.type == FrameType::Response) return TakeResponse(frame);
  quor::wire::Ledger ledger;
  std::string why = "an unexpected frame";
  bool good = false;
  if (m_agreed && frame.type == FrameType::Data)
    good = m_reader.TakeData(frame.body, &why);
  else if (m_agreed && frame.type == FrameType::Ledger && ParseBody(frame, &ledger))
    good = m_reader.TakeLedger(ledger, &why);
  if (!good) return m_link.Break("malformed: " + why);
  Publish();
  SendTaken();
}

void Taker::OnDown(const std::string& reason) {
  m_connection = nullptr;
  m_agreed = false;
  m_user.OnBroken(reason);
}
