// The streams of all takers of this service: see Take in quor.proto.
//
// Shape    A stream belongs to whoever opened it: the same id of another is another stream. It is
//          in the hub from its first Take until it is ended or forgotten, connected or not. There
//          is room for a few of them. One that nobody takes gives way to a new one, the longest
//          waiting first, and is forgotten after a time.
// Owner    Borrows the hub, which outlives it. Sessions share their streams.
// Errors   What a forgotten stream held is counted as dropped and is in the log.
// Threads  The service's one thread.
#pragma once

#include <asio/io_context.hpp>
#include <asio/steady_timer.hpp>
#include <map>

#include "quor/protocol/quor.pb.h"
#include "quor/takers/one_source.h"
#include "quor/takers/taker_stream.h"

struct TakerLimits {
  std::size_t streams = 4;
  std::size_t storeBytes = 64u << 20;  // of each stream, sent and waiting
  std::chrono::milliseconds away = std::chrono::hours(1);
};

class Takers final : public HubStream {
 public:
  Takers(asio::io_context& io, Hub& hub, TakerLimits limits = {});
  ~Takers();
  Takers(const Takers&) = delete;
  Takers& operator=(const Takers&) = delete;

  // `owner`: who may go on with the stream; `who`: for the log. Call Start on the stream after the
  // answer. Null, a code and a reason when it cannot be.
  std::shared_ptr<TakerStream> Open(const std::string& owner, const std::string& who,
                                    const quor::wire::Take& take, quor::wire::ErrorCode* code,
                                    std::string* why);
  // Its connection has ended: from now on it waits.
  void Leave(TakerStream& stream, const Connection& connection);
  // Call it after a Take of a stream: the names of a hub that has only takers begin anew when all
  // of them are in use and nothing waits.
  void RenewNames();
  // It ends for good.
  void End(const TakerStream& stream) { Forget(stream, "it has ended its stream"); }

  void OnBatch(const SharedBatch& batch) override;
  void OnDelivered() override;
  // Traces, of all streams since the start.
  std::uint64_t Dropped() const;
  void FillStatus(quor::wire::Status* status) const;
  // The service ends: nothing that is kept survives it.
  void Stop();

 private:
  using Key = std::pair<std::string, std::string>;  // the owner, and its id for the stream
  bool MakeRoom();
  void Forget(const TakerStream& stream, const std::string& because);
  void ForgetAway();
  void Await();

  Hub& m_hub;
  const TakerLimits m_limits;
  OneSource m_parts;
  std::map<Key, std::shared_ptr<TakerStream>> m_streams;
  std::uint64_t m_dropped = 0;  // of streams that have gone
  asio::steady_timer m_timer;
};
