#include "quor/service/service.h"

#include <openssl/rand.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <asio/post.hpp>
#include <cerrno>
#include <optional>

#include "base/fail_with.h"
#include "base/make_folder.h"
#include "quor/catalogue/catalogue_store.h"
#include "quor/link/segment_folder.h"
#include "quor/log/log.h"
#include "quor/received/received.h"
#include "quor/service/manager_notice.h"

namespace {

using std::chrono::milliseconds;
constexpr milliseconds kTick{20};  // the time in which a batch fills
constexpr milliseconds kGreetingDeadline{5000};
constexpr milliseconds kGrace{15000};          // runtimes and clients come back within seconds
constexpr milliseconds kMonitorsReturn{4000};  // twice their longest pause between two tries
constexpr milliseconds kEndPatience{1500};
constexpr milliseconds kPlaceAgain{200};
constexpr milliseconds kAcceptAgain{100};  // no descriptors left: later, perhaps

// Whose members see all accounts unless another group is named; a machine need not have it.
constexpr const char* kMachineGroup = "quor";

std::string NewInstance() {
  std::string bytes(16, '\0');
  RAND_bytes(reinterpret_cast<unsigned char*>(bytes.data()), 16);
  return bytes;
}

// Each application costs a few descriptors.
void RaiseDescriptorLimit() {
  rlimit limit{};
  if (getrlimit(RLIMIT_NOFILE, &limit) != 0) return;
  limit.rlim_cur = limit.rlim_max;
  setrlimit(RLIMIT_NOFILE, &limit);
}

// Without a name, and so without a bound, unless it is restricted.
Account BoundAccount(Accounts& accounts, const SessionPeer& peer) {
  return peer.isRestricted && peer.uid ? accounts.Of(*peer.uid) : Account{};
}

}  // namespace

Service::Service(ServiceOptions options)
    : m_options(std::move(options)),
      m_machine(LocalHostName()),
      m_tlsListener(
          m_io, kGreetingDeadline,
          [this](std::unique_ptr<TlsSocket> socket, const TlsPeer& peer,
                 const std::string& address) { OnPeer(std::move(socket), peer, address); }) {}

Service::~Service() {
  // Otherwise sessions and instances would refer to members that are destroyed before them.
  m_sessions.clear();
  if (m_apps) m_apps->Stop();
}

bool Service::Open(std::string* why) {
  RaiseDescriptorLimit();
  signal(SIGPIPE, SIG_IGN);
  if (!m_options.group.empty() && !(m_group = GroupNamed(m_options.group, why))) return false;
  if (m_options.ofMachine && !m_group) m_group = GroupNamed(kMachineGroup, nullptr);
  const bool opened =
      m_options.inheritedSocket >= 0
          ? m_listener.Adopt(m_options.socketPath, m_options.inheritedSocket, why, m_group)
          : m_listener.Open(m_options.socketPath, why, m_group);
  if (!opened || !OpenState(why) || !m_tlsListener.Open(m_options.listen, m_options.tls, why))
    return false;
  m_apps = std::make_unique<Apps>(m_io, *m_catalogue, *this, m_machine,
                                  m_options.ofMachine ? &m_accounts : nullptr);
  m_context.reset(new SessionContext{m_hub,
                                     *m_apps,
                                     m_inlet,
                                     m_accounts,
                                     m_machine,
                                     NewInstance(),
                                     SourceFilters(m_hub.Names()),
                                     Takers(m_io, m_hub, m_options.takers),
                                     {},
                                     m_options.connectionLimits,
                                     {}});
  LookAtDates();
  std::error_code error;
  m_local.assign(asio::local::stream_protocol(), dup(m_listener.Descriptor()), error);
  m_apps->Watch(m_options.socketPath);
  return !error || FailWith(why, error.message());
}

bool Service::OpenState(std::string* why) {
  bool isTaken = false;
  std::string reason;
  std::unique_ptr<CatalogueStore> store;
  if (MakeFolder(m_options.stateFolder, &reason))
    store = CatalogueStore::Open(m_options.stateFolder + "/state.db", &reason, &isTaken);
  if (isTaken) return FailWith(why, reason);
  // A full or read-only disk, or no home folder: traces are needed most in that case.
  if (!store) m_troubles.push_back(reason + "; what is configured will not survive a restart");
  m_catalogue = std::make_unique<Catalogue>(std::move(store), m_options.defaultSettings);
  if (m_options.ofMachine) m_catalogue->BoundAccounts();
  return true;
}

void Service::Run() {
  for (const int number : {SIGTERM, SIGINT, SIGHUP}) m_signals.add(number);
  AwaitSignal();
  AcceptLocal();
  m_tlsListener.Start();
  m_hub.OnBatchOpened([this] { TickSoon(); });
  if (m_hub.HasOpenBatch()) TickSoon();
  Later(kGrace, [this] { m_apps->EndGrace(); });
  Later(kMonitorsReturn, [this] { m_apps->ReleaseHeld(); });
  for (const std::string& trouble : m_troubles) Log(LogLevel::Error, trouble);
  LookAtDatesDaily();
  TellManagerOften();
  Log(LogLevel::Info, "ready on " + m_options.socketPath);
  m_io.run();
  Log(LogLevel::Info, "ended");
}

// Gives the process that removes the folder time to finish.
void Service::OnPlaceChanged() {
  if (m_stopping || std::exchange(m_looksAtPlace, true)) return;
  Later(kPlaceAgain, [this] {
    m_looksAtPlace = false;
    if (!m_listener.IsInPlace()) return TakePlaceAgain();
    m_apps->LookAtFolder(m_options.socketPath);
  });
}

// Nobody can find this service any more. It makes its folder and socket again, or ends if it
// cannot. It does so also with a handed-over socket, because its maker does not make its name
// again.
void Service::TakePlaceAgain() {
  Log(LogLevel::Warning, m_options.socketPath + " has been removed");
  ++m_places;
  std::error_code error;
  m_local.close(error);
  m_listener.Close();
  std::string why;
  if (!m_listener.Open(m_options.socketPath, &why, m_group)) {
    Log(LogLevel::Error, why);
    return Stop();
  }
  m_local.assign(asio::local::stream_protocol(), dup(m_listener.Descriptor()), error);
  m_apps->WatchAnew(m_options.socketPath);
  AcceptLocal();
  Log(LogLevel::Info, "ready again on " + m_options.socketPath);
}

// A timer or a ready socket may still call back after the place was taken again. The number of that
// place shows such a call to be stale.
void Service::AcceptLocal() {
  const auto place = m_places;
  m_local.async_wait(asio::socket_base::wait_read, [this, place](const std::error_code& error) {
    if (error || m_stopping || place != m_places) return;
    const int socket =
        accept4(m_local.native_handle(), nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK);
    if (socket < 0) {
      const milliseconds pause = errno == EAGAIN ? milliseconds(0) : kAcceptAgain;
      return Later(pause, [this, place] {
        if (place == m_places) AcceptLocal();
      });
    }
    TakeArrival(socket);
    AcceptLocal();
  });
}

void Service::TakeArrival(int socket) {
  LocalPeer peer;
  if (!Admit(socket, &peer)) {
    Log(LogLevel::Warning, "process " + std::to_string(peer.pid) + " of user " +
                               std::to_string(peer.uid) +
                               " is refused: only the user of this service may connect");
    EndPeer(socket);
    close(socket);
    return;
  }
  MakeRoomForArrival(peer);
  auto arrival = std::make_shared<LocalArrival>(m_io, *this, socket, peer);
  m_arrivals.push_back(arrival);
  arrival->Start(kGreetingDeadline);
}

bool Service::Admit(int socket, LocalPeer* peer) const {
  if (!PeerOfSocket(socket, peer)) return false;
  const Admission admission = AdmissionOf(*peer, geteuid(), m_group);
  peer->isTraced = m_options.ofMachine || admission == Admission::Owner;
  peer->isRestricted = m_options.ofMachine && admission == Admission::None;
  return m_options.ofMachine || admission != Admission::None;
}

// With so many others waiting, the oldest has had enough time to send its hello. An account cannot
// send away those of others.
void Service::MakeRoomForArrival(const LocalPeer& peer) {
  const auto isOfAccount = [&peer](const auto& one) { return one->Uid() == peer.uid; };
  if (peer.isRestricted && std::count_if(m_arrivals.begin(), m_arrivals.end(), isOfAccount) >=
                               static_cast<std::ptrdiff_t>(kArrivalsOfAccountMax))
    (*std::find_if(m_arrivals.begin(), m_arrivals.end(), isOfAccount))->SendAway();
  if (m_arrivals.size() >= kArrivalsMax) m_arrivals.front()->SendAway();
}

void Service::AddSession(std::shared_ptr<ByteStream> stream, SessionPeer peer) {
  const std::size_t most = peer.isRestricted ? kSessionsMax - kSessionsLeft : kSessionsMax;
  if (m_sessions.size() < most && !m_boundSessions.Take(BoundAccount(m_accounts, peer)))
    return stream->Close();
  if (m_sessions.size() >= most) {
    Log(LogLevel::Warning, peer.label + " is refused: too many clients");
    return stream->Close();
  }
  auto session = std::make_shared<ClientSession>(*this, *m_context, std::move(peer));
  m_sessions.insert(session);
  session->Start(std::move(stream));
  Later(kGreetingDeadline, [this, weak = std::weak_ptr(session)] {
    const auto still = weak.lock();
    if (still && m_sessions.contains(still)) still->EndSilent();
  });
}

void Service::OnClient(LocalSocket socket, const LocalPeer& peer) {
  const auto pid = static_cast<std::uint32_t>(peer.pid);
  AddSession(MakeStream(std::move(socket)),
             {true,
              pid,
              quor::wire::ROLE_CONFIGURE,
              "",
              "client process " + std::to_string(pid) +
                  (peer.uid == geteuid() ? "" : " of user " + std::to_string(peer.uid)),
              {},
              peer.uid,
              peer.isRestricted});
}

bool Service::OnApplication(AppArrival arrival, std::string* why) {
  return m_apps->Arrive(std::move(arrival), why);
}

void Service::OnGone(LocalArrival& arrival) {
  m_arrivals.remove(arrival.shared_from_this());
}

void Service::OnEnded(ClientSession& session) {
  m_boundSessions.Give(BoundAccount(m_accounts, session.Peer()));
  m_sessions.erase(session.shared_from_this());
}

// Only while there are traces to deliver, so that an idle service sleeps. Traces after a pause go
// as soon as those at hand are taken, so that a user who switches a point on sees it at once. The
// next ones wait until the time to fill a batch is over.
void Service::TickSoon() {
  if (m_stopping || std::exchange(m_ticks, true)) return;
  m_tick.expires_at(std::max(m_tickedAt + kTick, std::chrono::steady_clock::now()));
  m_tick.async_wait([this](const std::error_code& error) {
    if (!error) Tick();
  });
}

void Service::Tick() {
  m_ticks = false;
  m_tickedAt = std::chrono::steady_clock::now();
  m_hub.Seal();
  m_hub.Deliver();
  for (const auto& [machine, forwarder] : m_forwarders) {
    forwarder->Traces().Seal();
    forwarder->Traces().Deliver();
  }
}

void Service::Later(milliseconds time, std::function<void()> call) {
  auto timer = std::make_shared<asio::steady_timer>(m_io, time);
  timer->async_wait([this, timer, call = std::move(call)](const std::error_code&) {
    if (!m_stopping) call();
  });
}

void Service::Stop() {
  if (std::exchange(m_stopping, true)) return;
  Log(LogLevel::Info, "ending");
  NotifyManager("STOPPING=1");
  const bool inPlace = m_listener.IsInPlace();
  CloseListeners();
  m_apps->Stop();
  if (inPlace && m_options.ofMachine)
    SegmentFolder::RemoveEmptyOfMachine(m_options.socketPath);
  else if (inPlace)
    SegmentFolder::RemoveEmpty(m_options.socketPath);
  m_hub.Seal();
  m_hub.Deliver();
  m_context->takers.Stop();
  const auto sessions = std::exchange(m_sessions, {});
  for (const auto& session : sessions) m_ending.push_back(session->Stop());
  for (const auto& [machine, forwarder] : m_forwarders) m_ending.push_back(forwarder->Stop());
  m_endBy = std::chrono::steady_clock::now() + kEndPatience;
  AwaitEnd();
}

// Waits a limited time for pending writes, then ends whether or not the peers read.
void Service::AwaitEnd() {
  std::erase_if(m_ending, [](const auto& connection) { return connection.expired(); });
  if (m_ending.empty() || std::chrono::steady_clock::now() > m_endBy) return m_io.stop();
  m_tick.expires_after(kTick);
  m_tick.async_wait([this](const std::error_code&) { AwaitEnd(); });
}

void Service::CloseListeners() {
  std::error_code ignored;
  m_local.close(ignored);
  m_tlsListener.Close();
  m_listener.StopListening();
  const auto arrivals = std::exchange(m_arrivals, {});
  for (const auto& arrival : arrivals) arrival->Stop();
}
