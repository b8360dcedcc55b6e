// A service for tests: accepts one application after the other on a socket of its own and consumes
// traces on the test's thread.
#pragma once

#include "seen_app.h"
#include "support/remove_segments.h"
#include "support/traced_child.h"

class FakeService {
 public:
  FakeService() {
    char pattern[] = "/tmp/quor-test-XXXXXX";
    m_folder = mkdtemp(pattern);
    setenv("QUOR_SOCKET", SocketPath().c_str(), 1);
    setenv("QUOR_AUTOSTART", "0", 1);
    Listen();
  }
  ~FakeService() {
    Stop();
    unsetenv("QUOR_RING_MIB");
    RemoveSegments(m_folder);
    std::filesystem::remove_all(m_folder);
  }
  std::string SocketPath() const { return m_folder + "/quord.sock"; }
  const std::string& Folder() const { return m_folder; }
  void Listen() {
    m_listener = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    SocketPath().copy(address.sun_path, sizeof address.sun_path - 1);
    EXPECT_EQ(bind(m_listener, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
    EXPECT_EQ(listen(m_listener, 64), 0);
  }
  void Stop() {
    if (m_listener >= 0) close(m_listener);
    m_listener = -1;
    unlink(SocketPath().c_str());
  }

  // The next application that sends a hello; null when none does in time.
  std::unique_ptr<SeenApp> Accept(int milliseconds = 20000) {
    pollfd ready{m_listener, POLLIN, 0};
    if (poll(&ready, 1, milliseconds) != 1) return nullptr;
    const int socket = accept4(m_listener, nullptr, nullptr, SOCK_CLOEXEC);
    LinkDecoder decoder;
    LinkFrame frame;
    int descriptor = -1;
    for (;;) {
      pollfd readable{socket, POLLIN, 0};
      if (poll(&readable, 1, milliseconds) != 1) break;
      std::uint8_t bytes[4096];
      const LinkReceived got = ReceiveOnLink(socket, bytes, sizeof bytes);
      if (got.descriptorCount != 0) descriptor = got.descriptors[0];
      const std::uint8_t* from = bytes;
      if (got.ended) break;
      if (decoder.Feed(from, bytes + got.bytes, frame) != LinkDecoder::Result::Frame) continue;
      SegmentMap segment;
      const char* why = "";
      EXPECT_EQ(frame.type, LinkType::Hello);
      EXPECT_TRUE(segment.Open(descriptor, &why)) << why;
      return std::make_unique<SeenApp>(socket, std::move(segment), frame.hello);
    }
    close(socket);
    return nullptr;
  }

 private:
  std::string m_folder;
  int m_listener = -1;
};
