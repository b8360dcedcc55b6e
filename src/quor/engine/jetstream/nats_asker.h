// Questions over a link, each with one answer; and the acknowledgements of messages.
//
// Shape    All answers come on one subscription, so that the engine is told of it once.
// Owner    The link outlives it.
// Errors   Nothing and a reason: also at once when nobody listens at the subject.
// Threads  Any; `acked` is called on a thread of libnats.
#pragma once

#include <chrono>
#include <map>
#include <optional>

#include "quor/engine/jetstream/nats_link.h"

class NatsAsker {
 public:
  using Acked = std::function<void(std::uint64_t token, const BusMessage& answer)>;
  static std::unique_ptr<NatsAsker> Make(NatsLink& link, Acked acked, std::string* why);
  ~NatsAsker();

  // The subject at which a message with this token is acknowledged.
  std::string AckSubject(std::uint64_t token) const;

  // The answer; it has a status when nobody listens.
  std::optional<BusMessage> Ask(const std::string& subject, Bytes question,
                                std::chrono::milliseconds deadline, const std::uint64_t* revision,
                                std::string* why);
  // Questions that wait fail with this reason. True: there were some.
  bool Refuse(const std::string& what);

 private:
  struct Question {
    std::optional<BusMessage> answer;
    std::string refused;
    std::string subject;
  };

  NatsAsker(NatsLink& link, Acked acked) : m_link(link), m_acked(std::move(acked)) {}
  void OnAnswer(BusMessage message);

  NatsLink& m_link;
  const Acked m_acked;
  std::mutex m_mutex;
  std::condition_variable m_answered;
  std::uint64_t m_number = 0;
  std::map<std::uint64_t, Question> m_questions;
  std::unique_ptr<NatsSubscription> m_answers;
};
