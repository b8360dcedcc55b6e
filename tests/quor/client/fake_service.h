// A service that does what a test tells it, on a socket of its own.
//
// The test runs the client's blocking calls in another thread (WhileServed) and plays the service's
// part in its own.
#pragma once

#include <gtest/gtest.h>
#include <poll.h>
#include <stdlib.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <chrono>
#include <future>
#include <memory>
#include <optional>
#include <string>

#include "quor/protocol/frames.h"
#include "quor/protocol/quor.pb.h"
#include "support/temp_dir.h"

constexpr int kPatienceMs = 5000;

// One connection that the fake has accepted. Every read has a deadline.
class FakePeer {
 public:
  explicit FakePeer(int socket) : m_socket(socket) {}
  ~FakePeer() { close(m_socket); }
  FakePeer(const FakePeer&) = delete;
  FakePeer& operator=(const FakePeer&) = delete;

  // The next frame but heartbeats; false when the client has ended the connection.
  bool Read(FrameType* type, std::string* body, int patienceMs = kPatienceMs) {
    for (;;) {
      if (const auto frame = m_reader.Next()) {
        if (frame->type == FrameType::Heartbeat) continue;
        *type = frame->type;
        body->assign(frame->body.begin(), frame->body.end());
        return true;
      }
      pollfd ready{m_socket, POLLIN, 0};
      if (poll(&ready, 1, patienceMs) <= 0) {
        ADD_FAILURE() << "the client says nothing";
        return false;
      }
      std::uint8_t bytes[65536];
      const ssize_t count = recv(m_socket, bytes, sizeof bytes, 0);
      if (count <= 0) {
        m_ended = true;
        return false;
      }
      m_reader.Feed({bytes, static_cast<std::size_t>(count)});
    }
  }
  template <class Message>
  Message Expect(FrameType wanted) {
    FrameType type{};
    std::string body;
    Message message;
    EXPECT_TRUE(Read(&type, &body));
    EXPECT_EQ(type, wanted);
    EXPECT_TRUE(message.ParseFromString(body));
    return message;
  }
  quor::wire::Request ExpectRequest() { return Expect<quor::wire::Request>(FrameType::Request); }
  // Has the client gone?
  bool Ended() {
    FrameType type{};
    std::string body;
    while (Read(&type, &body)) {
    }
    return m_ended;
  }

  void SendBytes(const void* bytes, std::size_t size) {
    const auto* from = static_cast<const char*>(bytes);
    while (size > 0) {
      const ssize_t count = send(m_socket, from, size, MSG_NOSIGNAL);
      if (count <= 0) return;  // the client has gone, which the test finds out otherwise
      from += count;
      size -= static_cast<std::size_t>(count);
    }
  }
  void SendRaw(FrameType type, const std::string& body) {
    const auto frame = EncodeFrame(type, body);
    SendBytes(frame.data(), frame.size());
  }
  template <class Message>
  void Send(FrameType type, const Message& message) {
    SendRaw(type, message.SerializeAsString());
  }
  void Answer(const quor::wire::Request& request, quor::wire::Response response = {}) {
    response.set_id(request.id());
    Send(FrameType::Response, response);
  }
  // Takes the hello and welcomes the client.
  quor::wire::Hello Welcome(std::uint32_t version = kProtocolVersion) {
    const auto hello = Expect<quor::wire::Hello>(FrameType::Hello);
    quor::wire::Welcome welcome;
    welcome.set_version(version);
    welcome.set_machine("fake");
    welcome.set_role(hello.role());
    welcome.set_instance(instance);
    Send(FrameType::Welcome, welcome);
    return hello;
  }
  // The same, and answers its subscription.
  void Subscribed() {
    Welcome();
    const auto request = ExpectRequest();
    EXPECT_TRUE(request.has_subscribe());
    Answer(request);
  }

  struct Source {
    char id = 'a';
    std::uint64_t serial = 0, delivered = 0, lost = 0;
  };
  // `forgotten`: the sum, in the first ledger of a stream, of a service that forgets.
  void Ledger(std::vector<Source> sources, std::optional<std::uint64_t> forgotten = {},
              std::vector<Source> forgottenSources = {}) {
    quor::wire::Ledger ledger;
    if (forgotten) ledger.set_forgotten(*forgotten);
    for (const Source& source : forgottenSources) {
      auto& word = *ledger.add_forgotten_sources();
      word.set_instance(std::string(16, source.id));
      word.set_serial(source.serial);
    }
    for (const Source& source : sources) {
      auto& word = *ledger.add_sources();
      word.set_instance(std::string(16, source.id));
      word.set_serial(source.serial);
      word.set_delivered(source.delivered);
      word.set_lost(source.lost);
    }
    Send(FrameType::Ledger, ledger);
  }
  std::string instance;  // of the run of the service that this plays

  void Data(const std::string& body) { SendRaw(FrameType::Data, body); }

 private:
  const int m_socket;
  bool m_ended = false;
  FrameReader m_reader;
};

// Listens where the clients of this process look for their service.
class FakeService {
 public:
  FakeService() : m_path(m_dir.File("quord.sock")) {
    setenv("QUOR_SOCKET", m_path.c_str(), 1);
    setenv("QUOR_AUTOSTART", "0", 1);
    Listen();
  }
  ~FakeService() {
    StopListening();
    unsetenv("QUOR_SOCKET");
  }
  void Listen() {
    m_listener = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    m_path.copy(address.sun_path, sizeof address.sun_path - 1);
    unlink(m_path.c_str());
    ASSERT_EQ(bind(m_listener, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
    ASSERT_EQ(listen(m_listener, 8), 0);
  }
  void StopListening() {
    if (m_listener >= 0) close(m_listener);
    m_listener = -1;
    unlink(m_path.c_str());
  }
  std::unique_ptr<FakePeer> Accept() {
    pollfd ready{m_listener, POLLIN, 0};
    if (poll(&ready, 1, kPatienceMs) <= 0) {
      ADD_FAILURE() << "no client comes";
      return nullptr;
    }
    return std::make_unique<FakePeer>(accept4(m_listener, nullptr, nullptr, SOCK_CLOEXEC));
  }
  const std::string& Path() const { return m_path; }

 private:
  TempDir m_dir;
  const std::string m_path;
  int m_listener = -1;
};

// Runs a blocking call of the client in a thread of its own while `serve` plays the service.
template <class Call, class Serve>
auto WhileServed(Call&& call, Serve&& serve) {
  auto result = std::async(std::launch::async, std::forward<Call>(call));
  serve();
  return result.get();
}

template <class Condition>
bool Eventually(Condition&& condition, int patienceMs = kPatienceMs) {
  const auto until = std::chrono::steady_clock::now() + std::chrono::milliseconds(patienceMs);
  while (!condition()) {
    if (std::chrono::steady_clock::now() >= until) return false;
    std::this_thread::yield();
  }
  return true;
}
