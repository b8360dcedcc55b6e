// A connection on which a peer sends requests and gets an answer to each, in their order.
//
// Shape    One request at a time: while it is answered nothing is read, so a peer that does not
//          wait for answers is slowed down and takes no memory. A peer that closes its sending side
//          still gets its answers.
// Owner    Whoever started it keeps it until OnGone, and lives until then or until Close.
// Errors   What cannot be read as a request is answered with the reason, and the connection ends.
//          So does one that is slow: each phase has its deadline, in Patience. After the last
//          answer what still comes is dropped for a moment, because a reset could overtake the
//          answer.
// Threads  The thread that runs the stream's io_context.
#pragma once

#include <array>
#include <asio/steady_timer.hpp>
#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "quor/http/answer.h"
#include "quor/http/request_reader.h"
#include "quor/protocol/byte_stream.h"

// The bodies of all connections together, while they come and until they are answered.
struct HttpMemory {
  std::size_t used = 0, most = 64u << 20;
};

class HttpConnection final : public std::enable_shared_from_this<HttpConnection> {
 public:
  using Clock = std::chrono::steady_clock;
  struct Patience {
    std::chrono::milliseconds idle{75'000}, head{10'000}, body{30'000};
    // Clients give a batch up after 10 s without an answer.
    std::chrono::milliseconds answer{8'000};
    std::chrono::milliseconds write{10'000}, last{1'000};
  };
  // Once. Later calls, and those after the deadline, do nothing.
  using Respond = std::function<void(HttpAnswer)>;
  class Handler {
   public:
    // The head has come. An answer refuses the request before its body comes.
    virtual std::optional<HttpAnswer> OnHead(const HttpRequest& request) = 0;
    // The request may be changed; it lives until its answer.
    virtual void OnRequest(HttpConnection& connection, HttpRequest& request, Respond respond) = 0;
    // For what the connection itself refuses: 400, 408, 413 ..., or 503 when there is no answer in
    // time or no memory.
    virtual HttpAnswer Refusal(int status, const std::string& why) = 0;
    virtual void OnGone(HttpConnection& connection) = 0;

   protected:
    ~Handler() = default;
  };

  // `peer`: whatever the handler knows it by.
  static std::shared_ptr<HttpConnection> Start(std::shared_ptr<ByteStream> stream, Handler& handler,
                                               std::shared_ptr<HttpMemory> memory, std::string peer,
                                               const HttpLimits& limits, const Patience& patience);
  const std::string& Peer() const { return m_peer; }
  // Waits for a request, of which nothing has come, since then; none: it does not.
  std::optional<Clock::time_point> IdleSince() const;
  void Close();  // OnGone is not called
  // What is asked already is answered; then it ends.
  void CloseAfterAnswer();

 private:
  enum class Phase { Idle, Head, Body, Answer, Write, Last, Gone };
  HttpConnection(std::shared_ptr<ByteStream> stream, Handler& handler,
                 std::shared_ptr<HttpMemory> memory, std::string peer, const HttpLimits& limits,
                 const Patience& patience);
  void Enter(Phase phase);
  std::chrono::milliseconds PatienceIn(Phase phase) const;
  void OnLate();
  void Read();
  void OnRead(const std::error_code& error, std::size_t bytes);
  void TakeBytes();
  bool TakeHead();
  void Ask();
  bool CountMemory();
  void SendContinue();
  void Refuse(int status, const std::string& why);
  void Send(HttpAnswer answer);
  void OnSent(const std::error_code& error);
  void End();

  std::shared_ptr<ByteStream> m_stream;
  Handler* m_handler;  // null once it is gone
  const std::shared_ptr<HttpMemory> m_memory;
  const std::string m_peer;
  const Patience m_patience;
  HttpRequestReader m_reader;
  Phase m_phase = Phase::Gone;
  asio::steady_timer m_timer;
  Clock::time_point m_since;
  std::array<std::uint8_t, 16384> m_buffer;
  Bytes m_rest;            // of the buffer, not yet read
  std::size_t m_held = 0;  // of the memory
  std::string m_answer;    // on its way
  std::uint64_t m_requests = 0;
  bool m_sawHead = false, m_closes = false, m_reads = false, m_continues = false;
};
