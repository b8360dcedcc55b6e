// The questions to a service that wait for their answers.
//
// Shape    A question is sent once over each connection: by the call that asks it, or when a
//          connection begins, whichever comes first.
// Owner    A request that is returned is valid until its question is taken.
// Errors   An answer to no open question is passed over.
// Threads  Under the owner's lock.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>

#include "quor/protocol/quor.pb.h"

class Questions {
 public:
  // For a message that nobody waits for.
  std::uint32_t NextId() { return ++m_lastId; }
  // Gives the request its id.
  std::uint32_t Add(quor::wire::Request request);
  // What is still to be sent over this connection; null: nothing. The caller sends it.
  const quor::wire::Request* TakeUnsent(std::uint32_t id);
  // A connection begins: `send` is called for each open question, oldest first.
  void SendAll(const std::function<void(const quor::wire::Request&)>& send);
  // Will one of them open this application?
  bool WillOpen(const std::string& app) const;

  void Answer(quor::wire::Response response);
  bool IsAnswered(std::uint32_t id) const;
  // Ends the question. None: it has no answer.
  std::optional<quor::wire::Response> Take(std::uint32_t id);

 private:
  struct Question {
    quor::wire::Request request;
    std::optional<quor::wire::Response> answer;
    bool sent = false;  // over the last connection
  };
  std::map<std::uint32_t, Question> m_open;
  std::uint32_t m_lastId = 0;
};
