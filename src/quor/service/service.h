// The service quord: listeners, hub, applications, clients and forwarding, on one thread.
//
// Owner    Owns everything. Run returns after Stop, or never.
// Errors   Open returns false and a reason. After that every failure concerns one peer only.
// Threads  Run's thread; Stop also from a signal through its own io_context.
#pragma once

#include <asio/io_context.hpp>
#include <asio/local/stream_protocol.hpp>
#include <asio/signal_set.hpp>
#include <asio/steady_timer.hpp>
#include <functional>
#include <optional>
#include <set>

#include "quor/accounts/account_bound.h"
#include "quor/forwarding/forwarder.h"
#include "quor/listeners/tls_listener.h"
#include "quor/log/log.h"
#include "quor/protocol/byte_stream.h"
#include "quor/service/client_session.h"
#include "quor/service/local_arrival.h"

struct ServiceOptions {
  std::string socketPath, stateFolder;
  int inheritedSocket = -1;  // listens already
  TakerLimits takers;
  std::vector<std::string> listen;  // "address:port", "[address]:port"
  TlsRules tls;
  std::uint32_t defaultSettings = kDefaultSettings;
  bool ofMachine = false;  // traces all its accounts
  std::string group;       // whose members may watch and configure; empty: none
  LogLevel logLevel = LogLevel::Info;
  ConnectionLimits connectionLimits;  // of clients: above all when a stalled client is given up
  std::string version;                // of the program
  std::string configFile;             // that was read; empty: none
  // SIGHUP comes from a terminal that closes. It ends the service, which else reads all again.
  bool endsWithTerminal = false;
  // The options as they stand now in the file and on the command line; empty: they stay.
  std::function<std::optional<ServiceOptions>(std::string* why)> again;
};

class Service final : public LocalArrival::Host, public ClientSession::Host, public Apps::Router {
 public:
  explicit Service(ServiceOptions options);
  ~Service();

  bool Open(std::string* why);
  // Problems with which the service runs nevertheless; known once it is open.
  const std::vector<std::string>& Troubles() const { return m_context->troubles; }
  void Run();

 private:
  static constexpr std::size_t kSessionsMax = 256, kArrivalsMax = 64, kForwardersMax = 64;
  // At the service of a machine, of an account that is no administrator; and what of all sessions
  // is left to administrators.
  static constexpr std::size_t kSessionsOfAccountMax = 32, kArrivalsOfAccountMax = 16,
                               kForwardersOfAccountMax = 8, kSessionsLeft = 32;

  bool OpenState(std::string* why);
  void AcceptLocal();
  void TakeArrival(int socket);
  bool Admit(int socket, LocalPeer* peer) const;
  void MakeRoomForArrival(const LocalPeer& peer);
  void AddSession(std::shared_ptr<ByteStream> stream, SessionPeer peer);
  void OnClient(LocalSocket socket, const LocalPeer& peer) override;
  bool OnApplication(AppArrival arrival, std::string* why) override;
  void OnGone(LocalArrival& arrival) override;
  void OnEnded(ClientSession& session) override;
  void FillStatus(quor::wire::Status* status) override;
  bool Reload(std::vector<std::string>* notes, std::string* why) override;
  void AwaitSignal();
  void OnHangup();
  void EndUnaccepted();
  void LookAtDates();
  void OnPeer(std::unique_ptr<TlsSocket> socket, const TlsPeer& peer, const std::string& address);
  void LookAtDatesDaily();
  void TellManagerOften();
  Hub& HubForMachine(const std::string& machine, const Account& account) override;
  std::string WhyUnreachable(const std::string& machine) const override;
  void OnPlaceChanged() override;
  void TakePlaceAgain();
  void EndIdleForwarders();
  void TickSoon();
  void Tick();
  void Stop();
  void CloseListeners();
  void AwaitEnd();
  void Later(std::chrono::milliseconds time, std::function<void()> call);

  ServiceOptions m_options;
  const std::time_t m_since = std::time(nullptr);
  const std::string m_machine;
  asio::io_context m_io{1};
  Accounts m_accounts{m_options.ofMachine};
  LocalListener m_listener{m_options.ofMachine};
  LocalListener::Group m_group;
  std::unique_ptr<Catalogue> m_catalogue;
  std::unique_ptr<Apps> m_apps;
  Hub m_hub{m_options.ofMachine ? HubBatches::OfOneAccount : HubBatches::Mixed};
  ForwardInlet m_inlet{m_hub};
  std::unique_ptr<SessionContext> m_context;
  asio::local::stream_protocol::acceptor m_local{m_io};
  TlsListener m_tlsListener;
  std::list<std::shared_ptr<LocalArrival>> m_arrivals;  // the oldest first
  std::set<std::shared_ptr<ClientSession>> m_sessions;
  std::map<std::string, std::shared_ptr<Forwarder>> m_forwarders;
  std::map<std::string, Account> m_forwardsFor;  // who asked first
  AccountBound m_boundSessions{"clients", kSessionsOfAccountMax};
  AccountBound m_boundForwarders{"other machines to trace to", kForwardersOfAccountMax};
  asio::steady_timer m_tick{m_io};
  bool m_ticks = false;
  std::chrono::steady_clock::time_point m_tickedAt;
  unsigned m_places = 0;                // how often it has taken its place again
  std::vector<std::string> m_troubles;  // since the start; those of dates come and go
  asio::signal_set m_signals{m_io};
  std::vector<std::weak_ptr<Connection>> m_ending;
  std::chrono::steady_clock::time_point m_endBy;
  bool m_stopping = false, m_looksAtPlace = false;
};
