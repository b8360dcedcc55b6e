// quord status: asks the local service for its applications and problems.
#include <unistd.h>

#include <asio/io_context.hpp>
#include <cstdio>
#include <nlohmann/json.hpp>

#include "commands.h"
#include "quor/link/link_socket.h"
#include "quor/protocol/connection.h"
#include "quor/protocol/quor.pb.h"
#include "quor/service/local_listener.h"

namespace {

constexpr std::chrono::milliseconds kPatience{3000};

// Sends a hello and one request.
class Question final : public Connection::Handler {
 public:
  explicit Question(asio::io_context& io) : m_io(io) {}

  bool Ask(const std::string& path) {
    const int descriptor = ConnectToService(path.c_str());
    if (descriptor < 0) return false;
    LocalSocket socket(m_io);
    socket.assign(asio::local::stream_protocol(), descriptor);
    m_connection = Connection::Start(MakeStream(std::move(socket)), *this);
    quor::wire::Hello hello;
    hello.set_version(kProtocolVersion);
    hello.set_role(quor::wire::ROLE_CONFIGURE);
    m_connection->Send(FrameType::Hello, hello);
    m_io.run_for(kPatience);
    if (m_connection) m_connection->Close();
    m_connection.reset();
    m_io.restart();
    m_io.poll();
    return m_answered;
  }

  std::string machine;
  std::vector<std::string> apps, troubles;

 private:
  void OnFrame(const Frame& frame) override {
    const auto size = static_cast<int>(frame.body.size());
    if (frame.type == FrameType::Welcome) {
      quor::wire::Welcome welcome;
      if (!welcome.ParseFromArray(frame.body.data(), size)) return m_io.stop();
      machine = welcome.machine();
      troubles.assign(welcome.troubles().begin(), welcome.troubles().end());
      quor::wire::Request request;
      request.set_id(1);
      request.mutable_list_apps();
      m_connection->Send(FrameType::Request, request);
      return;
    }
    quor::wire::Response response;
    m_answered =
        frame.type == FrameType::Response && response.ParseFromArray(frame.body.data(), size);
    for (const std::string& name : response.app_names()) apps.push_back(name);
    m_io.stop();
  }
  void OnClosed(const std::string&) override { m_io.stop(); }

  asio::io_context& m_io;
  std::shared_ptr<Connection> m_connection;
  bool m_answered = false;
};

}  // namespace

int Status(const StatusCommand& command) {
  const std::string path = SocketPathIn(command.socketFolder);
  asio::io_context io(1);
  Question question(io);
  const bool runs = question.Ask(path);
  const pid_t pid = ServicePid(path);
  if (command.json) {
    nlohmann::json answer = {{"running", runs}, {"socket", path}};
    if (runs)
      answer.update({{"machine", question.machine},
                     {"pid", pid},
                     {"apps", question.apps},
                     {"troubles", question.troubles}});
    const std::string text = answer.dump(2, ' ', false, nlohmann::json::error_handler_t::replace);
    std::printf("%s\n", text.c_str());
  } else if (runs) {
    std::printf("quord runs on %s (process %d), socket %s\n", question.machine.c_str(),
                static_cast<int>(pid), path.c_str());
    for (const std::string& trouble : question.troubles)
      std::printf("  trouble: %s\n", trouble.c_str());
    for (const std::string& app : question.apps) std::printf("  %s\n", app.c_str());
    if (question.apps.empty()) std::printf("  no applications\n");
  } else {
    std::printf("quord does not run at %s\n", path.c_str());
  }
  return runs ? kExitGood : kExitNo;
}
