// Receives logs and spans from programs that speak OpenTelemetry's protocol over HTTP.
//
// Shape    POST /v1/logs and /v1/traces, with protobuf, plain or packed. Programs of this machine
//          come over the loopback; those of others over TLS, with a certificate of role forward. A
//          body is answered with 200 once the sink says that its records are safe. The same bytes
//          from the same peer are taken once: see SeenBodies.
// Owner    Borrows the sink, and is used by what it calls back: they end together, after the
//          io_context.
// Errors   Open returns false and a reason. Later each failure is of one peer, who gets it as an
//          answer; the log has the first reasons of five seconds.
// Threads  The one that runs the io_context.
#pragma once

#include <asio/io_context.hpp>
#include <chrono>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "quor/http/serve/http_connection.h"
#include "quor/listeners/tls_listener.h"
#include "quor/otlp/receive/loopback_listener.h"
#include "quor/otlp/receive/seen_bodies.h"

struct OtlpDoors {
  std::vector<std::string> plain, tls;  // "address:port"
  TlsRules rules = {};                  // of `tls`
};

struct OtlpReceiverCounts {
  std::uint64_t requests = 0, taken = 0;
  std::uint64_t again = 0;    // came before
  std::uint64_t refused = 0;  // any answer but 200
};

class OtlpReceiver final : private HttpConnection::Handler {
 public:
  static constexpr std::size_t kConnectionsMax = 256;
  static constexpr std::size_t kBodyBytesMax = 4u << 20;  // also of the unpacked one

  OtlpReceiver(asio::io_context& io, OtlpSink& sink, const HttpConnection::Patience& patience = {});
  ~OtlpReceiver();
  OtlpReceiver(const OtlpReceiver&) = delete;
  OtlpReceiver& operator=(const OtlpReceiver&) = delete;

  bool Open(const OtlpDoors& doors, std::string* why);
  std::vector<std::string> Addresses() const;
  void Start();
  // Nobody is accepted any more. What was asked is answered, then the connection ends.
  void Stop();
  std::size_t Connections() const { return m_peers.size(); }
  const OtlpReceiverCounts& Counts() const { return m_counts; }

 private:
  struct Peer {
    std::shared_ptr<HttpConnection> connection;
    std::string machine;
  };
  void Add(std::shared_ptr<ByteStream> stream, std::string name, std::string machine);
  bool MakeRoom();
  std::optional<HttpAnswer> OnHead(const HttpRequest& request) override;
  void OnRequest(HttpConnection& connection, HttpRequest& request,
                 HttpConnection::Respond respond) override;
  HttpAnswer Refusal(int status, const std::string& why) override;
  void OnGone(HttpConnection& connection) override;
  HttpAnswer Counted(HttpAnswer answer);
  void Settle(const SeenBodies::Key& key, const OtlpVerdict& verdict);

  OtlpSink& m_sink;
  const HttpConnection::Patience m_patience;
  LoopbackListener m_plain;
  TlsListener m_tls;
  const std::shared_ptr<HttpMemory> m_memory = std::make_shared<HttpMemory>();
  std::map<const HttpConnection*, Peer> m_peers;
  SeenBodies m_seen;
  OtlpReceiverCounts m_counts;
  std::chrono::steady_clock::time_point m_nextReport{};
};
