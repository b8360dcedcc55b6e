// The other side of an HTTP connection, in the test's own thread: it sends bytes and reads what
// comes back.
#pragma once

#include <sys/socket.h>
#include <unistd.h>

#include <asio/io_context.hpp>
#include <asio/local/stream_protocol.hpp>
#include <chrono>
#include <functional>
#include <string>

// Runs the context until the condition holds; false: it does not within ten seconds.
inline bool RunUntil(asio::io_context& io, const std::function<bool()>& holds) {
  const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(10);
  while (!holds()) {
    if (std::chrono::steady_clock::now() > end) return false;
    io.restart();
    io.run_one_for(std::chrono::milliseconds(5));
  }
  return true;
}

class HttpPeer {
 public:
  explicit HttpPeer(int socket) : m_socket(socket) {}
  // A pair of sockets, of which `other` gets the other end.
  explicit HttpPeer(asio::local::stream_protocol::socket& other) {
    int pair[2] = {-1, -1};
    if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, pair) != 0) return;
    m_socket = pair[0];
    other.assign(asio::local::stream_protocol(), pair[1]);
  }
  ~HttpPeer() { Close(); }
  HttpPeer(const HttpPeer&) = delete;
  HttpPeer& operator=(const HttpPeer&) = delete;

  // How much of it the system takes at once.
  std::size_t Send(const std::string& bytes) {
    const ssize_t sent = send(m_socket, bytes.data(), bytes.size(), MSG_DONTWAIT | MSG_NOSIGNAL);
    return sent < 0 ? 0 : static_cast<std::size_t>(sent);
  }
  bool SendAll(asio::io_context& io, const std::string& bytes) {
    std::size_t sent = 0;
    return RunUntil(io, [&] {
      sent += Send(bytes.substr(sent, 65536));
      return sent == bytes.size();
    });
  }
  void EndSending() { shutdown(m_socket, SHUT_WR); }
  void Close() {
    if (m_socket >= 0) close(m_socket);
    m_socket = -1;
  }
  // All that has come until now.
  const std::string& Got() {
    char piece[4096];
    for (;;) {
      const ssize_t got = recv(m_socket, piece, sizeof piece, MSG_DONTWAIT);
      if (got == 0) m_ended = true;
      if (got <= 0) return m_got;
      m_got.append(piece, static_cast<std::size_t>(got));
    }
  }
  bool Await(asio::io_context& io, const std::string& text) {
    return RunUntil(io, [&] { return Got().find(text) != m_got.npos; });
  }
  bool AwaitEnd(asio::io_context& io) {
    return RunUntil(io, [&] {
      Got();
      return m_ended;
    });
  }
  // What has come is forgotten.
  std::string Take() { return std::exchange(m_got, {}); }

 private:
  int m_socket = -1;
  std::string m_got;
  bool m_ended = false;
};
