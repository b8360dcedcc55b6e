// One client of the service: its hello, its role, and the requests that the role allows.
//
// Shape    Hello, then Welcome, or Refused and the end of the connection. Requests are answered in
//          their order.
// Owner    Its host holds it from Start until OnEnded. Its open handles and its stream end with it.
// Errors   A malformed or unexpected frame ends this connection with a reason in the log. A request
//          that is not allowed is answered with an error.
// Threads  The service's one thread.
#pragma once

#include <utility>

#include "quor/forwarding/forward_inlet.h"
#include "quor/hub/hub.h"
#include "quor/monitors/monitor_stream.h"
#include "quor/monitors/source_filters.h"
#include "quor/protocol/certificates.h"
#include "quor/protocol/connection.h"
#include "quor/protocol/quor.pb.h"
#include "quor/service/app_requests.h"
#include "quor/takers/takers.h"

// The objects that all sessions share.
struct SessionContext {
  Hub& hub;
  Apps& apps;
  ForwardInlet& inlet;
  Accounts& accounts;
  std::string machine;
  std::string instance;  // 16 random bytes of this run
  SourceFilters filters;
  Takers takers;
  StreamLimits streamLimits;
  ConnectionLimits connectionLimits;
  std::vector<std::string> troubles;        // what does not work
  std::uint64_t dropped = 0, withheld = 0;  // for monitors that have gone
};

struct SessionPeer {
  bool local = true;
  std::uint32_t pid = 0;                          // of a local client
  quor::wire::Role held = quor::wire::ROLE_NONE;  // by its certificate; a local client has all
  std::string name;                               // in its certificate
  std::string label;                              // its name in the log
  ShownCertificate shown;
  std::optional<uid_t> uid = {};  // of a local client
  // At the service of a machine: it sees and changes only what is of its own account.
  bool isRestricted = false;
};

class ClientSession final : public Connection::Handler,
                            public std::enable_shared_from_this<ClientSession> {
 public:
  class Host {
   public:
    virtual void OnEnded(ClientSession& session) = 0;
    virtual void FillStatus(quor::wire::Status* status) = 0;
    // `notes`: what was taken, and what needs a restart. False and a reason: nothing has changed.
    virtual bool Reload(std::vector<std::string>* notes, std::string* why) = 0;

   protected:
    ~Host() = default;
  };
  ClientSession(Host& host, SessionContext& context, SessionPeer peer);
  void Start(std::shared_ptr<ByteStream> stream);
  // A clean end: sends first what the stream has. Its settings stay in force. The connection lives
  // on until it has written, or its deadline has passed.
  std::weak_ptr<Connection> Stop();
  // False: no welcome yet. Such a session is ended after its deadline.
  bool IsGreeted() const { return m_role != quor::wire::ROLE_NONE; }
  void EndSilent();
  // What was accepted at its beginning is accepted no more.
  void EndBecause(const std::string& why) { End(why); }
  const SessionPeer& Peer() const { return m_peer; }
  bool IsMonitor() const { return m_monitor != nullptr; }
  std::uint64_t Dropped() const { return m_monitor ? m_monitor->Dropped() : 0; }
  std::uint64_t Withheld() const { return m_monitor ? m_monitor->Withheld() : 0; }

 private:
  void OnFrame(const Frame& frame) override;
  void OnWritten() override;
  void OnRested() override { Answer(std::exchange(m_putOff, {})); }
  void OnClosed(const std::string& reason) override;
  void End(const std::string& why);
  void Greet(const Frame& frame);
  void Refuse(quor::wire::ErrorCode code, const std::string& text);
  void Answer(const quor::wire::Request& request);
  bool Serve(const quor::wire::Request& request, quor::wire::Response* response);
  bool ServeStream(const quor::wire::Request& request, quor::wire::Response* response);
  Account OwnAccount() const;
  bool PutsOff(const quor::wire::Request& request);
  bool SetFilter(const std::string& text, quor::wire::Response* response);
  // Its name for the inlet of forwarded streams; a local client is identified by its process.
  std::string Forwarder() const { return m_peer.local ? m_peer.label : m_peer.name; }
  bool Forward(const quor::wire::Forward& forward, quor::wire::Response* response);
  bool Take(const quor::wire::Request& request, quor::wire::Response* response);
  void StartStream(const quor::wire::Request& request);
  void TakeTaken(const Frame& frame);
  bool Reload(quor::wire::Response* response);
  void EndMonitor();
  void LeaveTaker();
  std::optional<uid_t> Only() const { return m_peer.isRestricted ? m_peer.uid : std::nullopt; }
  void TakeForwarded(const Frame& frame);

  Host& m_host;
  SessionContext& m_context;
  const SessionPeer m_peer;
  AppRequests m_apps;
  std::shared_ptr<Connection> m_connection;
  quor::wire::Role m_role = quor::wire::ROLE_NONE;  // granted
  std::shared_ptr<SourceFilter> m_filter;           // of the monitor
  quor::wire::Request m_putOff;                     // is answered when the connection has rested
  std::unique_ptr<MonitorStream> m_monitor;
  std::shared_ptr<TakerStream> m_taker;
  std::shared_ptr<ForwardInlet::Stream> m_forwarded;
  std::string m_forwardedId;
  std::uint64_t m_forwardedTurn = 0;
};
