#include "question.h"

#include <chrono>

#include "quor/link/link_socket.h"
#include "quor/link/named_service.h"
#include "quor/link/paths.h"

namespace {

constexpr std::chrono::milliseconds kPatience{3000};

// Of this user, whatever the environment names.
std::string OwnSocketPath() {
  ServiceEnvironment environment = ReadServiceEnvironment();
  environment.socket.clear();
  return OwnServiceSocketPath(environment);
}

}  // namespace

Question::~Question() {
  if (m_connection) m_connection->Close();
  m_connection.reset();
  m_io.restart();
  m_io.poll();
}

bool Question::Reach(const std::string& path) {
  const bool isKnown = path == OwnSocketPath() || IsMachineSocket(path);
  const int descriptor = isKnown ? ConnectToService(path.c_str(), TrustedOwner(path))
                                 : ConnectToNamedService(path.c_str());
  if (descriptor < 0) return false;
  LocalSocket socket(m_io);
  socket.assign(asio::local::stream_protocol(), descriptor);
  m_connection = Connection::Start(MakeStream(std::move(socket)), *this);
  quor::wire::Hello hello;
  hello.set_version(kProtocolVersion);
  hello.set_role(quor::wire::ROLE_CONFIGURE);
  m_connection->Send(FrameType::Hello, hello);
  return Await();
}

bool Question::Ask(quor::wire::Request request, quor::wire::Response* response) {
  request.set_id(++m_id);
  if (m_ended || !m_connection->Send(FrameType::Request, request) || !Await()) return false;
  *response = m_response;
  return true;
}

bool Question::Await() {
  m_answered = false;
  m_io.restart();
  m_io.run_for(kPatience);
  return m_answered;
}

void Question::OnFrame(const Frame& frame) {
  const auto size = static_cast<int>(frame.body.size());
  m_answered =
      frame.type == FrameType::Welcome
          ? m_welcome.ParseFromArray(frame.body.data(), size)
          : frame.type == FrameType::Response && m_response.ParseFromArray(frame.body.data(), size);
  m_io.stop();
}

void Question::OnClosed(const std::string&) {
  m_ended = true;
  m_io.stop();
}
