// What an administrator asks of a service that runs: its state, and to read its files again.
#include <signal.h>
#include <unistd.h>

#include "base/fail_with.h"
#include "quor/protocol/tls.h"
#include "quor/service/manager_notice.h"
#include "quor/service/service.h"

namespace {

constexpr std::chrono::hours kOneDay{24};

void NeedsRestart(bool differs, const char* word, std::vector<std::string>* notes) {
  if (differs) notes->push_back(std::string(word) + " needs a restart");
}

}  // namespace

void Service::AwaitSignal() {
  m_signals.async_wait([this](const std::error_code& error, int number) {
    if (error) return;
    if (number != SIGHUP || m_options.endsWithTerminal) return Stop();
    OnHangup();
    AwaitSignal();
  });
}

void Service::OnHangup() {
  std::vector<std::string> notes;
  std::string why;
  Reload(&notes, &why);  // which logs the result
}

bool Service::Reload(std::vector<std::string>* notes, std::string* why) {
  std::string reason;
  const auto fail = [&] {
    Log(LogLevel::Error, "cannot reload, all stays as it is: " + reason);
    return FailWith(why, reason);
  };
  std::optional<ServiceOptions> fresh = m_options.again ? m_options.again(&reason) : m_options;
  if (!fresh) return fail();
  if (m_tlsListener.Context()) {
    const auto tls = MakeServerTls(fresh->tls, &reason);
    if (!tls) return fail();
    m_tlsListener.Use(tls, fresh->tls);
    notes->push_back("certificates are read again");
  }
  NeedsRestart(fresh->listen != m_options.listen, "listen", notes);
  NeedsRestart(fresh->socketPath != m_options.socketPath, "socket-dir", notes);
  NeedsRestart(fresh->group != m_options.group, "group", notes);
  NeedsRestart(fresh->ofMachine != m_options.ofMachine, "machine", notes);
  NeedsRestart(fresh->takers.streams != m_options.takers.streams, "takers", notes);
  NeedsRestart(fresh->takers.storeBytes != m_options.takers.storeBytes, "taker-store", notes);
  NeedsRestart(fresh->stateFolder != m_options.stateFolder, "state-dir", notes);
  if (fresh->logLevel != m_options.logLevel) notes->push_back("log-level has changed");
  if (fresh->defaultSettings != m_options.defaultSettings)
    notes->push_back("default-settings has changed, for new applications");
  SetLogLevel(fresh->logLevel);
  m_catalogue->SetDefaultSettings(fresh->defaultSettings);
  m_options.logLevel = fresh->logLevel;
  m_options.defaultSettings = fresh->defaultSettings;
  m_options.tls = fresh->tls;
  m_options.configFile = fresh->configFile;
  Log(LogLevel::Info, "reloaded");
  for (const std::string& note : *notes) Log(LogLevel::Info, note);
  EndUnaccepted();
  for (const auto& [address, forwarder] : m_forwarders)
    forwarder->UseRevoked(m_options.tls.revoked, m_options.tls.keysFolder);
  LookAtDates();
  return true;
}

// A client whose certificate has been revoked, or gives another role now, does not stay because it
// came earlier.
void Service::EndUnaccepted() {
  const auto sessions = m_sessions;
  for (const auto& session : sessions) {
    const SessionPeer& peer = session->Peer();
    if (peer.local || !peer.shown.own) continue;
    const std::string why = WhyNotAccepted(m_tlsListener.Context(), peer.shown);
    if (!why.empty())
      session->EndBecause("the certificate is refused: " + why);
    else if (RoleIn(peer.shown.own.get(), m_options.tls.roles) != peer.held)
      session->EndBecause("the certificate gives another role now");
  }
}

void Service::OnPeer(std::unique_ptr<TlsSocket> socket, const TlsPeer& peer,
                     const std::string& address) {
  const std::string label = peer.name + " at " + address;
  const CertificateDate date{"the certificate of " + label, EndOf(peer.shown.own.get())};
  if (const std::string warning = WarningOf(date, std::time(nullptr)); !warning.empty())
    Log(LogLevel::Warning, warning);
  AddSession(MakeStream(std::move(socket)), {false, 0, peer.role, peer.name, label, peer.shown});
}

void Service::LookAtDates() {
  m_context->troubles = m_troubles;
  if (!m_tlsListener.Context()) return;
  for (const CertificateDate& date : DatesOf(m_tlsListener.Context(), m_tlsListener.Rules())) {
    const std::string warning = WarningOf(date, std::time(nullptr));
    if (warning.empty()) continue;
    m_context->troubles.push_back(warning);
    Log(LogLevel::Warning, warning);
  }
}

void Service::LookAtDatesDaily() {
  if (!m_tlsListener.Context()) return;
  Later(kOneDay, [this] {
    LookAtDates();
    LookAtDatesDaily();
  });
}

// From the loop that serves: one that hangs is silent, and the manager starts the service again.
void Service::TellManagerOften() {
  const std::chrono::microseconds patience = ManagersPatience();
  if (patience.count() == 0) return;
  NotifyManager("WATCHDOG=1");
  Later(std::chrono::duration_cast<std::chrono::milliseconds>(patience / 2),
        [this] { TellManagerOften(); });
}

void Service::FillStatus(quor::wire::Status* status) {
  status->set_version(m_options.version);
  status->set_pid(static_cast<std::uint32_t>(getpid()));
  status->set_since(static_cast<std::uint64_t>(m_since));
  for (const std::string& address : m_tlsListener.Addresses()) status->add_listening(address);
  status->set_config(m_options.configFile);
  status->set_instances(static_cast<std::uint32_t>(m_apps->Running()));
  status->set_clients(static_cast<std::uint32_t>(m_sessions.size()));
  std::uint64_t traces = m_hub.Taken(), lost = m_hub.Lost();
  std::uint64_t dropped = m_context->dropped + m_context->takers.Dropped();
  std::uint64_t withheld = m_context->withheld;
  std::uint32_t monitors = 0;
  for (const auto& session : m_sessions) {
    monitors += session->IsMonitor() ? 1 : 0;
    dropped += session->Dropped();
    withheld += session->Withheld();
  }
  for (const auto& [machine, forwarder] : m_forwarders) {
    traces += forwarder->Traces().Taken();
    lost += forwarder->Traces().Lost();
  }
  status->set_monitors(monitors);
  status->set_traces(traces);
  status->set_lost(lost);
  status->set_dropped(dropped);
  status->set_withheld(withheld);
  m_context->takers.FillStatus(status);
  if (!m_tlsListener.Context()) return;
  for (const CertificateDate& date : DatesOf(m_tlsListener.Context(), m_tlsListener.Rules())) {
    quor::wire::Status::Certificate* const line = status->add_certificates();
    line->set_what(date.what);
    line->set_ends(date.ends);
  }
}
