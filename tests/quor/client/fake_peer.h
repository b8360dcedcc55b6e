// The service's end of a client's connection, driven by the test. Every read has a deadline.
#pragma once

#include <gtest/gtest.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <optional>
#include <string>
#include <vector>

#include "quor/protocol/frames.h"
#include "quor/protocol/quor.pb.h"

constexpr int kPatienceMs = 5000;

class FakePeer {
 public:
  explicit FakePeer(int socket) : m_socket(socket) {}
  ~FakePeer() { close(m_socket); }
  FakePeer(const FakePeer&) = delete;
  FakePeer& operator=(const FakePeer&) = delete;

  // The next frame except heartbeats; false when the client has closed the connection.
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
  // Has the client closed the connection?
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
      if (count <= 0) return;  // the client has closed it, which the test finds out otherwise
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
  // Reads the hello and sends the Welcome.
  quor::wire::Hello Welcome(std::uint32_t version = kProtocolVersion) {
    const auto hello = Expect<quor::wire::Hello>(FrameType::Hello);
    quor::wire::Welcome welcome;
    welcome.set_version(version);
    welcome.set_machine("fake");
    welcome.set_instance(instance);
    welcome.set_filters(filters);
    Send(FrameType::Welcome, welcome);
    return hello;
  }
  // The same, and answers the client's Subscribe.
  void Subscribed() {
    Welcome();
    const auto request = ExpectRequest();
    EXPECT_TRUE(request.has_subscribe());
    Answer(request);
  }

  struct Source {
    char id = 'a';
    std::uint64_t serial = 0, delivered = 0, lost = 0, withheld = 0;
  };
  // `forgotten`: the sum in the first ledger of a stream.
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
      word.set_withheld(source.withheld);
    }
    Send(FrameType::Ledger, ledger);
  }
  std::string instance;  // of the simulated run of the service
  bool filters = true;   // knows filters at the source

  void Data(const std::string& body) { SendRaw(FrameType::Data, body); }

 private:
  const int m_socket;
  bool m_ended = false;
  FrameReader m_reader;
};
