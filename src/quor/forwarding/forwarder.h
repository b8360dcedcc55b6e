// Hands the traces of applications whose sink is another machine on to that machine's service.
//
// Shape    A hub of its own, whose one stream is the link. What was sent is kept until the other
//          side has it, and sent again after a broken link; a bounded store rides the break out and
//          counts what it must drop. What an earlier service had not handed on the other side
//          counts, by two words on the source: what had arrived, and what there was. When the names
//          of its hub are used up, it begins another stream, with names of its own, as soon as
//          nothing is under way.
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
  void OnSource(const std::shared_ptr<Source>& source) override;

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
  void TellUnsure();
  void ConfirmUnsure();
  void SayWhatStays() const;
  void Pump();
  void NewStreamId();
  void RenewNames();

  struct Kept {
    SharedBatch batch;
    SharedBytes names, records;
    quor::wire::Ledger ledger;
    std::size_t Bytes() const { return records->size() + (names ? names->size() : 0); }
  };
  // One that an earlier service handed on: how much of it had arrived there, as far as that service
  // knew, and how much there was. What is missing the other side finds out.
  struct Unsure {
    std::shared_ptr<Source> source;
    std::uint64_t arrived = 0, serial = 0;
    std::shared_ptr<const void> way;
  };
  enum class State { Down, Greeting, Asking, Up };

  asio::io_context& m_io;
  const Machine m_machine;
  const std::string m_keysFolder, m_ownMachine, m_name;
  Hub m_hub{true, m_name};
  StreamQueue m_queue;
  std::shared_ptr<Connection> m_connection;
  State m_state = State::Down;
  asio::steady_timer m_timer;
  std::chrono::milliseconds m_pause{};
  std::string m_toldReason;
  std::string m_streamId;
  std::deque<Kept> m_kept;  // sent and not known to be taken
  std::deque<Unsure> m_unsure;
  std::size_t m_unsureTold = 0;                // so many of them, over this connection
  std::uint64_t m_base = 0;                    // data frames of this stream that were taken
  std::uint64_t m_inFlight = 0;                // bytes of m_kept, but for ledgers
  bool m_stopped = false, m_keptSent = false;  // over this connection and stream
};
