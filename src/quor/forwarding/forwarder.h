// Hands the traces of applications whose sink is another machine on to that machine's service.
//
// Shape    A hub of its own, whose one stream is the link. What was sent is kept until the other
//          side has it, and sent again after a broken link; a bounded store rides the break out and
//          counts what it must drop. When the names of its hub are used up, it begins another
//          stream, with names of its own, as soon as nothing is under way.
// Owner    Keeps its hub; asynchronous work keeps what it needs.
// Errors   A link that cannot be made is tried again with back-off, told in the log once per
//          reason.
// Threads  The service's one thread.
#pragma once

#include <asio/io_context.hpp>
#include <asio/steady_timer.hpp>
#include <deque>

#include "quor/hub/hub.h"
#include "quor/hub/stream_queue.h"
#include "quor/protocol/connection.h"
#include "quor/protocol/machine.h"

class Forwarder final : public HubStream,
                        public Connection::Handler,
                        public std::enable_shared_from_this<Forwarder> {
 public:
  static constexpr std::size_t kStoreBytes = 64u << 20;

  // `keysFolder`: with a client's certificate of role forward.
  Forwarder(asio::io_context& io, Machine machine, std::string keysFolder, std::string ownMachine,
            std::size_t storeBytes = kStoreBytes);
  void Start();
  std::weak_ptr<Connection> Stop();

  Hub& Traces() { return m_hub; }
  // No application traces into it, and everything has arrived.
  bool IsIdle() const;
  void OnBatch(const SharedBatch& batch) override;

 private:
  void Dial();
  void OnConnected(std::shared_ptr<ByteStream> stream, const std::string& why);
  void TryLater(const std::string& why);
  void OnFrame(const Frame& frame) override;
  void OnWritten() override { Pump(); }
  void OnClosed(const std::string& reason) override;
  bool Handle(const Frame& frame);
  void AskToForward();
  bool BeginStream(std::uint64_t taken);
  bool DropTaken(std::uint64_t taken);
  void SendKept();
  void Pump();
  void NewStreamId();
  void RenewNames();

  struct Kept {
    SharedBatch batch;
    SharedBytes names, records;
    quor::wire::Ledger ledger;
    std::size_t Bytes() const { return records->size() + (names ? names->size() : 0); }
  };
  enum class State { Down, Greeting, Asking, Up };

  asio::io_context& m_io;
  const Machine m_machine;
  const std::string m_keysFolder, m_ownMachine, m_name;
  Hub m_hub{true};
  StreamQueue m_queue;
  std::shared_ptr<Connection> m_connection;
  State m_state = State::Down;
  asio::steady_timer m_timer;
  std::chrono::milliseconds m_pause{};
  std::string m_toldReason;
  std::string m_streamId;
  std::deque<Kept> m_kept;       // sent and not known to be taken
  std::uint64_t m_base = 0;      // data frames of this stream that were taken
  std::uint64_t m_inFlight = 0;  // bytes of m_kept, but for ledgers
  bool m_stopped = false;
};
