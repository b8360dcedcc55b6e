// A publisher that keeps what is not acknowledged and sends it again, as those of the relay do.
#pragma once

#include <deque>
#include <set>

#include "support/engine_contract.h"

class ResendingPublisher {
 public:
  ResendingPublisher(Engine& engine, RecordingEngineUser& user) : m_engine(engine), m_user(user) {}

  // Publishes so many messages to `subject`; `each` is called with the number of those that were
  // acknowledged. False: not all were, in that time.
  template <class Each>
  bool Publish(const std::string& subject, unsigned count, std::chrono::seconds longest,
               Each each) {
    const auto end = std::chrono::steady_clock::now() + longest;
    auto heard = std::chrono::steady_clock::now();
    unsigned sent = 0;
    std::set<unsigned> open;
    while (m_acked < count && std::chrono::steady_clock::now() < end) {
      while (sent < count && open.size() < 64) open.insert(sent), Send(subject, sent++);
      if (TakeAcks(open)) {
        heard = std::chrono::steady_clock::now();
        each(m_acked);
      } else if (std::chrono::steady_clock::now() - heard > std::chrono::milliseconds(700)) {
        heard = std::chrono::steady_clock::now();
        resent += unsigned(open.size());
        for (const unsigned number : open) Send(subject, number);
      } else {
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
      }
    }
    return m_acked == count;
  }

  unsigned resent = 0;

 private:
  void Send(const std::string& subject, unsigned number) {
    const std::string text = std::to_string(number);
    m_engine.Publish(subject, "p:" + text, ContractBytes(text), number, nullptr);
  }

  bool TakeAcks(std::set<unsigned>& open) {
    const auto acks = m_user.AcksFrom(m_seen);
    m_seen += acks.size();
    bool some = false;
    for (const auto& [token, ack] : acks)
      if (ack.stored && open.erase(unsigned(token))) m_acked++, some = true;
    return some;
  }

  Engine& m_engine;
  RecordingEngineUser& m_user;
  std::size_t m_seen = 0;
  unsigned m_acked = 0;
};
