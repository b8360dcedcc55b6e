// A client of the service that checks every byte: hello, requests, and a monitor.
#pragma once

#include "checked_monitor.h"
#include "quor/link/link_socket.h"
#include "quor/link/paths.h"
#include "quor/protocol/frames.h"
#include "quor/protocol/quor.pb.h"
#include "quord_process.h"

using quor::wire::Request;
using quor::wire::Response;
using quor::wire::Role;

class QuordClient final : public CheckedMonitor {
 public:
  QuordClient() = default;
  explicit QuordClient(const std::string& path) { Connect(path); }
  ~QuordClient() { Close(); }
  QuordClient(const QuordClient&) = delete;
  QuordClient& operator=(const QuordClient&) = delete;

  bool Connect(const std::string& path) {
    Close();
    m_reader = FrameReader();
    BeginConnection();
    ended = false;
    m_socket = ConnectToService(path.c_str(), TrustedOwner(path));
    return m_socket >= 0;
  }
  void Close() {
    if (m_socket >= 0) close(m_socket);
    m_socket = -1;
  }
  int Socket() const { return m_socket; }
  bool SendRaw(const std::vector<std::uint8_t>& bytes) { return SendOnLink(m_socket, bytes); }
  template <class Message>
  void Send(FrameType type, const Message& message) {
    SendRaw(EncodeFrame(type, message.SerializeAsString()));
  }
  // True when the service answers with Welcome.
  bool Hello(Role role, std::uint32_t version = kProtocolVersion) {
    quor::wire::Hello hello;
    hello.set_version(version);
    hello.set_role(role);
    Send(FrameType::Hello, hello);
    welcomed = false;
    return WaitFor([&] { return Pump(), welcomed || ended; }) && welcomed;
  }
  Response Ask(Request request) {
    Begin(std::move(request));
    EXPECT_TRUE(WaitFor([&] { return Pump(), IsAnswered() || ended; }));
    return m_answer;
  }
  // The same without waiting; call Pump until it is answered.
  void Begin(Request request) {
    request.set_id(++m_id);
    Send(FrameType::Request, request);
    m_answer.Clear();
  }
  bool IsAnswered() const { return m_answer.id() == m_id; }
  const Response& Answer() const { return m_answer; }
  // Connects, sends the hello and subscribes, as soon as the service accepts connections.
  bool Monitor(const std::string& path) {
    if (!WaitFor([&] { return Connect(path); }) || !Hello(quor::wire::ROLE_MONITOR)) return false;
    Request request;
    request.mutable_subscribe();
    BeginStream();
    return Ask(request).error() == quor::wire::ERROR_NONE &&
           WaitFor([&] { return Pump(), StreamBegan(); });
  }

  // Sends heartbeats as often as necessary.
  void Beat() {
    const auto now = std::chrono::steady_clock::now();
    if (now < m_nextBeat) return;
    m_nextBeat = now + std::chrono::milliseconds(500);
    const auto beat = EncodeFrame(FrameType::Heartbeat, Bytes());
    send(m_socket, beat.data(), beat.size(), MSG_NOSIGNAL | MSG_DONTWAIT);
  }
  // Reads what has arrived.
  void Pump() {
    std::uint8_t bytes[65536];
    for (int i = 0; i < 64 && m_socket >= 0 && !ended; ++i) {
      const LinkReceived got = ReceiveOnLink(m_socket, bytes, sizeof bytes);
      m_reader.Feed({bytes, got.bytes});
      while (const auto frame = m_reader.Next()) Take(*frame);
      EXPECT_EQ(m_reader.Error(), "");
      ended = ended || got.ended;
      if (got.bytes == 0) break;
    }
  }
  bool Sees(const std::string& text) {
    return WaitFor([&] {
      Pump();
      while (m_looked < traces.size() && traces[m_looked].text != text) ++m_looked;
      return m_looked < traces.size() && IsCounted();
    });
  }

  bool welcomed = false, ended = false;
  quor::wire::Welcome welcome;
  quor::wire::Refused refused;

 private:
  template <class Message>
  static void Parse(const Frame& frame, Message* message) {
    EXPECT_TRUE(message->ParseFromArray(frame.body.data(), static_cast<int>(frame.body.size())));
  }
  void Take(const Frame& frame) {
    quor::wire::Ledger ledger;
    switch (frame.type) {
      case FrameType::Welcome:
        Parse(frame, &welcome);
        welcomed = true;
        break;
      case FrameType::Refused:
        Parse(frame, &refused);
        break;
      case FrameType::Response:
        Parse(frame, &m_answer);
        break;
      case FrameType::Data:
        TakeData(frame.body);
        break;
      case FrameType::Ledger:
        Parse(frame, &ledger);
        TakeLedger(ledger);
        break;
      default:
        break;
    }
  }

  int m_socket = -1;
  std::chrono::steady_clock::time_point m_nextBeat{};
  FrameReader m_reader;
  std::uint32_t m_id = 0;
  Response m_answer;
  std::size_t m_looked = 0;
};

// Requests in one line.
inline Request OpenAppRequest(const std::string& app) {
  Request request;
  request.mutable_open_app()->set_name(app);
  return request;
}
inline Request GetAppRequest(const std::string& app) {
  Request request;
  request.mutable_get_app()->set_name(app);
  return request;
}
// How many of an application run.
inline std::uint32_t Instances(QuordClient& client, const std::string& app) {
  Request request;
  request.mutable_list_apps();
  const Response response = client.Ask(request);
  for (int i = 0; i < response.app_names_size(); ++i)
    if (response.app_names(i) == app) return response.app_instances(i);
  return 0;
}
inline Request SubmitAllRequest(const quor::wire::App& app, std::uint32_t settings) {
  Request request;
  request.mutable_submit()->set_app(app.name());
  for (const auto& component : app.components())
    for (const auto& category : component.categories()) {
      auto* const setting = request.mutable_submit()->add_settings();
      setting->set_trace_id(category.trace_id());
      setting->set_settings(settings);
    }
  return request;
}
inline Request SinkRequest(const std::string& app, std::uint32_t type, const std::string& name,
                           const std::string& options = {}) {
  Request request;
  request.mutable_submit()->set_app(app);
  auto* const sink = request.mutable_submit()->mutable_sink();
  sink->set_type(type);
  sink->set_name(name);
  sink->set_options(options);
  return request;
}
