// A web service in a thread of its own, for the test of a client.
//
// Shape    Accepts connections one after the other, and does with each what the test says. What the
//          test says must end when a read fails, because the end of the service shuts the
//          connection down.
// Threads  The play runs on the service's thread.
#pragma once

#include <array>
#include <asio/ip/tcp.hpp>
#include <asio/read.hpp>
#include <asio/read_until.hpp>
#include <asio/write.hpp>
#include <atomic>
#include <functional>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

class PlayedService {
 public:
  using Play = std::function<void(asio::ip::tcp::socket&, int connection)>;
  explicit PlayedService(Play play)
      : m_acceptor(m_io, {asio::ip::address_v4::loopback(), 0}),
        m_thread([this, play = std::move(play)] { Run(play); }) {}
  ~PlayedService() {
    m_ends = true;
    std::error_code ignored;
    // Wakes the thread where it accepts or reads.
    asio::ip::tcp::socket last(m_io);
    last.connect(m_acceptor.local_endpoint(), ignored);
    {
      const std::lock_guard lock(m_mutex);
      if (m_now) m_now->shutdown(asio::ip::tcp::socket::shutdown_both, ignored);
    }
    m_thread.join();
  }
  std::string Address() const {
    return "http://127.0.0.1:" + std::to_string(m_acceptor.local_endpoint().port()) + "/base";
  }
  int Connections() const { return m_connections; }
  std::vector<std::string> Requests() const {
    const std::lock_guard lock(m_mutex);
    return m_requests;
  }
  // A whole request; "" at the end.
  std::string ReadRequest(asio::ip::tcp::socket& socket) {
    std::string text;
    std::error_code error;
    const std::size_t head =
        asio::read_until(socket, asio::dynamic_buffer(text), "\r\n\r\n", error);
    if (error) return {};
    const std::size_t at = text.find("Content-Length: ");
    const std::size_t body = at == text.npos ? 0 : std::stoul(text.substr(at + 16));
    if (text.size() < head + body)
      asio::read(socket, asio::dynamic_buffer(text),
                 asio::transfer_exactly(head + body - text.size()), error);
    const std::lock_guard lock(m_mutex);
    m_requests.push_back(text);
    return text;
  }
  static void Say(asio::ip::tcp::socket& socket, const std::string& text) {
    std::error_code ignored;
    asio::write(socket, asio::buffer(text), ignored);
  }
  bool Ends() const { return m_ends; }

 private:
  void Run(const Play& play) {
    while (!m_ends) {
      std::error_code error;
      asio::ip::tcp::socket socket = m_acceptor.accept(error);
      if (error || m_ends) return;
      {
        const std::lock_guard lock(m_mutex);
        m_now = &socket;
      }
      play(socket, m_connections++);
      const std::lock_guard lock(m_mutex);
      m_now = nullptr;
    }
  }
  asio::io_context m_io;
  asio::ip::tcp::acceptor m_acceptor;
  std::atomic<bool> m_ends = false;
  std::atomic<int> m_connections = 0;
  mutable std::mutex m_mutex;
  asio::ip::tcp::socket* m_now = nullptr;
  std::vector<std::string> m_requests;
  std::thread m_thread;
};
