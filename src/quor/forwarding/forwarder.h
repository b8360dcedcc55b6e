// Forwards traces to another service: those of applications whose sink is that service's machine,
// or those that a program has received for the service of its own machine.
//
// Shape    A hub of its own, whose only stream is the link. Sent frames are kept until the other
//          side confirms them, and are sent again after a broken link. During a break a bounded
//          queue keeps traces and counts those that it drops. For sources of an earlier service it
//          sends two numbers, how many traces had arrived and how many there were, and the other
//          side counts the difference as lost. When the names of its hub are used up, it begins
//          another stream, with new names, as soon as nothing waits for confirmation.
// Owner    Owns its hub. Asynchronous operations keep the objects that they need.
// Errors   If the link cannot be made it tries again with growing pauses. The log has each reason
//          once.
// Threads  The service's one thread.
#pragma once

#include <asio/io_context.hpp>
#include <asio/steady_timer.hpp>
#include <deque>
#include <functional>

#include "quor/hub/hub.h"
#include "quor/hub/stream_queue.h"
#include "quor/kept/kept_frames.h"
#include "quor/protocol/connection.h"
#include "quor/protocol/machine.h"

// A way to the other side that is not another machine's port.
struct ForwardWay {
  std::string name;     // in the log
  const char* tooSlow;  // why traces are lost when the store is full
  std::function<void(Connected)> dial;
};

class Forwarder final : public HubStream,
                        public Connection::Handler,
                        public std::enable_shared_from_this<Forwarder> {
 public:
  static constexpr std::size_t kStoreBytes = 64u << 20;

  // `keysFolder`: has a client's certificate of role forward.
  Forwarder(asio::io_context& io, Machine machine, std::string keysFolder, std::string ownMachine,
            std::size_t storeBytes = kStoreBytes);
  Forwarder(asio::io_context& io, ForwardWay way, std::string ownMachine,
            std::size_t storeBytes = kStoreBytes);
  void Start();
  // The service's revocation lists. The link is made again, so that they are in force at once, and
  // new certificates too. They count only where the authority is the same.
  void UseRevoked(const std::string& lists, const std::string& serviceKeys);
  std::weak_ptr<Connection> Stop();

  Hub& Traces() { return m_hub; }
  // Why the machine cannot be reached; empty while it can.
  const std::string& Trouble() const { return m_loggedReason; }
  bool IsIdle() const;  // no application traces into it, and everything has arrived
  // It takes traces, or is about to say so.
  bool IsReached() const {
    return m_state == State::Up || (m_state == State::Asking && m_loggedReason.empty());
  }
  // So many traces have arrived or are told as lost there: the first ones that the hub has taken.
  std::uint64_t Settled() const { return m_settled; }
  // What waits or is not confirmed.
  std::size_t StoredBytes() const { return m_queue.WaitingBytes() + m_kept.Bytes(); }
  void OnSettled(std::function<void()> call) { m_onSettled = std::move(call); }
  // Renewed when there are so many, not only when all are used.
  void RenewNamesAt(std::size_t names) { m_namesMost = names; }
  bool NamesAreUsed() { return m_hub.Names().IsFull() || m_hub.Names().Count() >= m_namesMost; }
  void OnBatch(const SharedBatch& batch) override;
  void OnSource(const std::shared_ptr<Source>& source) override;

 private:
  void Dial();
  void OnConnected(std::shared_ptr<ByteStream> stream, const std::string& why);
  void TryLater(const std::string& why);
  void OnFrame(const Frame& frame) override;
  void OnWritten() override { Pump(); }
  void OnClosed(const std::string& reason) override;
  bool Handle(const Frame& frame);
  bool Refused(const std::string& why);
  void AskToForward();
  bool BeginStream(std::uint64_t taken);
  bool DropTaken(std::uint64_t taken);
  void SendKept();
  void ReportEarlier();
  void ConfirmEarlier();
  void LogUnconfirmed() const;
  void Pump();
  void NewStreamId();
  void RenewNames();

  // A source of an earlier service: how much of it had arrived, as far as that service knew, and
  // how much there was. The other side computes what is missing.
  struct EarlierSource {
    std::shared_ptr<Source> source;
    std::uint64_t arrived = 0, serial = 0;
    std::shared_ptr<const void> way;
  };
  enum class State { Down, Greeting, Asking, Up };

  asio::io_context& m_io;
  const Machine m_machine;
  const std::string m_keysFolder, m_ownMachine, m_name;
  const std::function<void(Connected)> m_dial;  // null: to the machine, over TLS
  std::string m_revoked, m_serviceKeys;
  unsigned m_listsRead = 0;  // how often they were given
  Hub m_hub{HubBatches::OfOneSource, m_name};
  StreamQueue m_queue;
  std::shared_ptr<Connection> m_connection;
  State m_state = State::Down;
  asio::steady_timer m_timer;
  std::chrono::milliseconds m_pause{};
  std::string m_loggedReason;
  std::string m_streamId;
  KeptFrames m_kept;  // data frames, sent and not confirmed
  std::deque<EarlierSource> m_earlier;
  std::size_t m_earlierReported = 0;           // how many were sent over this connection
  bool m_stopped = false, m_keptSent = false;  // over this connection and stream
  std::uint64_t m_settled = 0;
  std::size_t m_namesMost = SIZE_MAX;
  std::function<void()> m_onSettled;
};
