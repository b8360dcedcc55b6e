// Reads a stream through consumers of its own: when to ask for more, and when to make a new
// consumer.
//
// Shape    A consumer is thrown away at the first thing that is not as it must be: a silence of 2.5
//          heartbeats, a jump of its numbers, a status that is not known. The next one goes on
//          behind the last message. Before each one the stream is asked when it was made.
// Owner    The bus outlives it. The owner subscribes to `inbox`.> and passes on what comes.
// Errors   Broken() in words, until the engine answers again; it goes on trying.
// Threads  One at a time.
#pragma once

#include <deque>

#include "quor/engine/pull/bus.h"
#include "quor/engine/pull/replies.h"

struct PullTarget {
  std::string stream, filter;
  std::string inbox;     // what comes there is an answer
  std::string consumer;  // begins the names of its consumers; others must not guess it
  EngineStart start;
  bool lastOfEach = false;  // begin with the last message of each subject
};

class PullLoop {
 public:
  using Time = std::chrono::steady_clock::time_point;

  PullLoop(PullTarget target, EngineBus& bus);
  void OnMessage(Time now, BusMessage message);
  // Sends what is due. Returns when the next thing is due; a message that comes may make it
  // earlier.
  Time Tick(Time now);

  // The messages that came, in the order of the stream. False: none.
  bool Take(std::vector<EngineMessage>& messages);
  // Whether the stream was begun anew behind what was taken.
  bool TakeAnew(std::string* why);
  // Empty: the engine answers.
  const std::string& Broken() const { return m_broken; }

 private:
  enum class Step { Pause, Ask, Make, Pull, Anew };
  struct Request {
    unsigned number;
    unsigned left;
    Time end;
    bool fed = false;
  };

  void AskState(Time now);
  void MakeConsumer(Time now);
  void AskMessages(Time now);
  void OnState(Time now, const BusMessage& message);
  void OnMade(Time now, const BusMessage& message);
  void OnStatus(Time now, const BusMessage& message);
  void OnDelivered(Time now, BusMessage message);
  bool IsSame(Time now, const StreamState& state);
  void CountDown();
  void Again(Time now, const std::string& why);
  void Send(Time now, const std::string& subject, char kind, const std::string& body);
  std::string ConsumerName() const { return m_target.consumer + std::to_string(m_consumer); }

  PullTarget m_target;
  EngineBus& m_bus;
  Step m_step = Step::Pause;
  Time m_due{}, m_heard{};
  std::chrono::milliseconds m_pause{0};
  std::string m_broken, m_anew;
  std::string m_created;
  std::optional<Time> m_fellAt;
  std::uint64_t m_last = 0;    // sequence of the stream
  std::uint64_t m_resume = 0;  // 0: where the target begins
  std::uint64_t m_ofConsumer = 0;
  unsigned m_consumer = 0, m_number = 0;
  bool m_large = false;  // the next message is larger than what is asked for
  std::deque<Request> m_requests;
  std::vector<EngineMessage> m_messages;
  std::size_t m_bytes = 0;
};
