// A TCP socket whose close waits for minutes, because its peer reads nothing.
#pragma once

#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <vector>

class LingeringSocket {
 public:
  LingeringSocket() : m_peer(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
    sockaddr_in address{};
    socklen_t size = sizeof address;
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    auto* const any = reinterpret_cast<sockaddr*>(&address);
    EXPECT_EQ(bind(m_peer, any, size), 0);
    EXPECT_EQ(listen(m_peer, 1), 0);
    EXPECT_EQ(getsockname(m_peer, any, &size), 0);
    m_socket = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    EXPECT_EQ(connect(m_socket, any, size), 0);
    const linger minutes{1, 600};
    EXPECT_EQ(setsockopt(m_socket, SOL_SOCKET, SO_LINGER, &minutes, sizeof minutes), 0);
    const std::vector<char> bytes(1 << 20);
    while (send(m_socket, bytes.data(), bytes.size(), MSG_DONTWAIT | MSG_NOSIGNAL) > 0) {
    }
  }
  // Ends the peer first, so that nothing waits here.
  ~LingeringSocket() {
    close(m_peer);
    Forget();
  }
  LingeringSocket(const LingeringSocket&) = delete;
  LingeringSocket& operator=(const LingeringSocket&) = delete;
  int Number() const { return m_socket; }
  // After it was sent: the other side has the last descriptor.
  void Forget() {
    if (m_socket >= 0) close(m_socket);
    m_socket = -1;
  }

 private:
  int m_peer, m_socket = -1;
};
