// A service that is driven by the test, on a socket of its own.
//
// The test runs the client's blocking calls in another thread (WhileServed) and acts as the service
// in its own thread.
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
#include <string>
#include <thread>

#include "fake_peer.h"
#include "support/temp_dir.h"

// Listens at the socket where the clients of this process look for their service.
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
