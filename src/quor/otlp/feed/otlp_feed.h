// Logs and spans that came from programs, on their way to the trace service.
//
// Shape    A body is mapped (quor/otlp) and given to the forwarder's hub. It is taken once the
//          service has confirmed all records that were made of it. Spans that wait for the others
//          of their trace are not waited for: a client whose answer takes seconds would lose more
//          of its own than an end of this process does. While the service is not reached, while too
//          much is unconfirmed, or while names are renewed, a body is refused as Full.
// Owner    Shares the forwarder, whose store is bounded: what spans drop there is told as lost by
//          the service. End it after the io_context.
// Errors   Bodies that are no message of the protocol are Malformed.
// Threads  The one that runs the io_context.
#pragma once

#include <asio/io_context.hpp>
#include <asio/steady_timer.hpp>
#include <deque>
#include <functional>
#include <memory>
#include <unordered_map>

#include "quor/forwarding/forwarder.h"
#include "quor/otlp/feed/feed_process.h"
#include "quor/otlp/otlp_mapper.h"
#include "quor/otlp/receive/otlp_sink.h"

class OtlpFeed final : public OtlpSink, private OtlpTaker {
 public:
  // Of what is not confirmed. Another body is refused then, so the forwarder's store holds several.
  static constexpr std::size_t kUnconfirmedBytes = 16u << 20;
  // A body may bring names for a quarter of all ids before any is shared.
  static constexpr std::size_t kNamesMost = 49'152;

  OtlpFeed(asio::io_context& io, std::shared_ptr<Forwarder> forwarder, const OtlpRules& rules = {});

  void Take(OtlpSignal signal, Bytes body, const std::string& machine, Done done) override;
  // Gives what is held long enough, each second from now on.
  void Start();
  // Gives all that is held. `done` is called when it is confirmed, or after `patience`.
  void Finish(std::chrono::milliseconds patience, std::function<void()> done);
  const OtlpCounts& Counts() const { return m_mapper.Counts(); }
  std::size_t HeldSpans() const { return m_mapper.HeldSpans(); }

 private:
  struct Waiting {
    std::uint64_t until;  // so many traces must be settled
    Done done;
  };
  void OnRecord(const OtlpSource& source, const OtlpRecord& record) override;
  void OnEnd(const OtlpSource& source) override { m_processes.erase(&source); }
  std::string WhyFull();
  template <class Message>
  bool Map(Bytes body, const std::string& machine);
  void HandOver();
  void OnSettled();
  void Tick();

  const std::shared_ptr<Forwarder> m_forwarder;
  OtlpMapper m_mapper;
  std::unordered_map<const OtlpSource*, std::unique_ptr<FeedProcess>> m_processes;
  std::deque<Waiting> m_waiting;
  asio::steady_timer m_tick, m_patience;
  std::function<void()> m_finished;
};
