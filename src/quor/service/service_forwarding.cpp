// The hubs of other machines to which applications trace.
#include <sys/stat.h>

#include "quor/log/log.h"
#include "quor/service/service.h"

Hub& Service::HubForMachine(const std::string& machine, const Account& account) {
  std::string why;
  const std::optional<Machine> to = ParseMachine(machine, &why);
  if (!to) Log(LogLevel::Warning, "a sink names no machine, its traces stay here: " + why);
  if (!to || to->local) return m_hub;
  const std::string key = AddressOf(to->host, to->port);
  if (const auto known = m_forwarders.find(key); known != m_forwarders.end())
    return known->second->Traces();
  if (m_forwarders.size() >= kForwardersMax || m_options.ofMachine) EndIdleForwarders();
  if (m_forwarders.size() >= kForwardersMax) {
    Log(LogLevel::Warning, "traces for " + key + " stay here: too many machines to forward to");
    return m_hub;
  }
  if (!m_boundForwarders.Take(account)) return m_hub;
  m_forwardsFor[key] = account;
  struct stat status {};
  const std::string own = m_options.tls.keysFolder + "/forward";
  const std::string keys = stat(own.c_str(), &status) == 0 ? own : m_options.tls.keysFolder;
  auto forwarder = std::make_shared<Forwarder>(m_io, *to, keys, m_machine);
  forwarder->UseRevoked(m_options.tls.revoked, m_options.tls.keysFolder);
  m_forwarders[key] = forwarder;
  forwarder->Traces().OnBatchOpened([this] { TickSoon(); });
  forwarder->Start();
  return forwarder->Traces();
}

std::string Service::WhyUnreachable(const std::string& machine) const {
  const std::optional<Machine> to = ParseMachine(machine);
  if (!to || to->local) return {};
  const auto known = m_forwarders.find(AddressOf(to->host, to->port));
  return known == m_forwarders.end() ? std::string() : known->second->Trouble();
}

// Forwarders to machines that are no application's sink any more.
void Service::EndIdleForwarders() {
  std::erase_if(m_forwarders, [this](const auto& entry) {
    const bool idle = entry.second->IsIdle();
    if (idle) entry.second->Stop();
    if (idle) m_boundForwarders.Give(m_forwardsFor[entry.first]);
    if (idle) m_forwardsFor.erase(entry.first);
    return idle;
  });
}
