// Questions to the service of this machine, for the commands about it.
//
// Owner    Holds its connection.
// Errors   Ask returns false when nobody answers within a few seconds.
// Threads  One; Ask blocks.
#pragma once

#include <asio/io_context.hpp>
#include <string>
#include <vector>

#include "quor/protocol/connection.h"
#include "quor/protocol/quor.pb.h"

class Question final : public Connection::Handler {
 public:
  // Connects and greets. False: no service answers at this socket.
  bool Reach(const std::string& path);
  // An answer with an error is an answer.
  bool Ask(quor::wire::Request request, quor::wire::Response* response);
  ~Question();

  const quor::wire::Welcome& Welcome() const { return m_welcome; }

 private:
  void OnFrame(const Frame& frame) override;
  void OnClosed(const std::string& reason) override;
  bool Await();

  asio::io_context m_io{1};
  std::shared_ptr<Connection> m_connection;
  quor::wire::Welcome m_welcome;
  quor::wire::Response m_response;
  bool m_answered = false, m_ended = false;
  std::uint32_t m_id = 0;
};
