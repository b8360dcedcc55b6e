// Accepts programs of this machine at ports without TLS. Only addresses of the loopback are
// opened.
//
// Owner    The listener lives until its context has ended or Close.
// Errors   Open returns false and a reason.
// Threads  The one that runs the io_context.
#pragma once

#include <asio/io_context.hpp>
#include <asio/ip/tcp.hpp>
#include <asio/steady_timer.hpp>
#include <functional>
#include <list>
#include <string>
#include <vector>

class LoopbackListener {
 public:
  using Accepted = std::function<void(asio::ip::tcp::socket socket, const std::string& address)>;
  LoopbackListener(asio::io_context& io, Accepted accepted)
      : m_io(io), m_accepted(std::move(accepted)) {}
  ~LoopbackListener() { Close(); }
  LoopbackListener(const LoopbackListener&) = delete;
  LoopbackListener& operator=(const LoopbackListener&) = delete;

  // "127.0.0.1:4318"; port 0: one that is free.
  bool Open(const std::string& text, std::string* why);
  std::vector<std::string> Addresses() const;
  void Start();
  void Close();

 private:
  struct Door {
    explicit Door(asio::ip::tcp::acceptor from)
        : acceptor(std::move(from)), again(acceptor.get_executor()) {}
    asio::ip::tcp::acceptor acceptor;
    asio::steady_timer again;
  };
  void Accept(Door& door);

  asio::io_context& m_io;
  const Accepted m_accepted;
  std::list<Door> m_doors;
  bool m_closed = false;
};
