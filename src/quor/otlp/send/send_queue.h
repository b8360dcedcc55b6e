// Requests on their way to a collector: one under way, the others waiting, in order.
//
// Shape    Requests have numbers from 0, in the order of Add. A request is done when the collector
//          has taken or refused it, or when it was dropped. It is sent again for as long as the
//          collector cannot take anything. Beyond the bound the oldest that is not under way is
//          dropped.
// Owner    Next borrows until Answer.
// Errors   What is lost is told with its number and a reason, which is the same for one cause.
// Threads  One. Time is what its user says.
#pragma once

#include <chrono>
#include <functional>
#include <list>
#include <optional>
#include <random>

#include "quor/otlp/out/out_requests.h"
#include "quor/otlp/send/judged_answer.h"

struct SendLimits {
  std::size_t bytes = 64u << 20;          // of bodies, packed
  std::chrono::milliseconds batch{1000};  // how long a message waits for others
  std::chrono::milliseconds pause{1000}, longestPause{30'000};  // before it is sent again
  std::chrono::seconds longestAsked{300};                       // that a collector may ask for
};

struct SendLoss {
  std::uint64_t number = 0, traces = 0;  // of the request
  std::string reason, words;             // see JudgedAnswer
};

class SendQueue {
 public:
  using Time = std::chrono::steady_clock::time_point;
  using Lose = std::function<void(SendLoss)>;
  struct Request {
    OutRequest::Kind kind = OutRequest::Kind::Logs;
    std::string body;
    bool isPacked = false;  // gzip
    std::uint32_t messages = 0;
    OutWeight weight;
    std::uint64_t number = 0;
  };

  SendQueue(const SendLimits& limits, Lose lose, unsigned seed)
      : m_limits(limits), m_lose(std::move(lose)), m_random(seed), m_pause(limits.pause) {}

  void Add(OutRequest request);
  // It is under way from now on. Null: nothing may be sent now.
  const Request* Next(Time now);
  // REQUIRES: one is under way. `date`: in seconds since 1970.
  void Answer(const HttpResult& result, Time now, std::time_t date);
  // When Next may give something that it does not give now, whatever else happens.
  std::optional<Time> WakeAt() const;

  std::uint64_t Added() const { return m_added; }
  // Those with lower numbers are done.
  std::uint64_t Done() const { return m_waiting.empty() ? m_added : m_waiting.front().number; }
  std::size_t Bytes() const { return m_bytes; }
  std::uint64_t Taken() const { return m_taken; }  // traces that the collector has
  // Why it is asked again, in words. Empty: it takes what it gets.
  const std::string& Trouble() const { return m_trouble; }

 private:
  void Drop();
  void LoseOf(const Request& request, std::uint64_t traces, const JudgedAnswer& why);
  void TakeAnswer(const Request& request, const JudgedAnswer& answer);
  void Wait(const JudgedAnswer& answer, Time now);

  const SendLimits m_limits;
  const Lose m_lose;
  std::minstd_rand m_random;
  std::list<Request> m_waiting;  // the one under way keeps its address
  std::size_t m_bytes = 0;
  std::uint64_t m_added = 0, m_taken = 0;
  bool m_isUnderWay = false;  // the first one
  Time m_resume{};
  std::chrono::milliseconds m_pause;
  std::string m_trouble;
};
