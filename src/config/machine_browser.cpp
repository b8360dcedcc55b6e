#include "config/machine_browser.h"

#include <algorithm>
#include <fstream>
#include <sstream>
#include <utility>

#include "base/text.h"
#include "config/used_machines.h"
#include "quor/client/trace_thread.h"

namespace {

bool IsLoopback(const std::string& address) {
  return address == "::1" || address.rfind("127.", 0) == 0;
}

// Hosts files also list networks, multicast groups, and names that are blocked on purpose.
bool IsNoMachine(const std::string& address) {
  return address == "0.0.0.0" || address == "::" || address == "255.255.255.255" ||
         address == "fe00::0" || address.rfind("ff0", 0) == 0;
}

}  // namespace

std::vector<std::string> MachinesIn(std::istream& hosts, const std::string& localName,
                                    const std::vector<std::string>& used) {
  std::vector<std::string> machines;
  const auto known = [&](const std::string& name) {
    return CompareIgnoringCase(name, localName) == 0 ||
           std::any_of(machines.begin(), machines.end(), [&](const std::string& machine) {
             return CompareIgnoringCase(machine, name) == 0;
           });
  };
  for (const std::string& machine : used)
    if (!known(machine)) machines.push_back(machine);
  for (std::string line; std::getline(hosts, line);) {
    std::istringstream words(line.substr(0, line.find('#')));
    std::string address, name;
    if (!(words >> address >> name) || IsLoopback(address) || IsNoMachine(address)) continue;
    // A machine's line may begin with its full name.
    if (!known(name) && !known(name.substr(0, name.find('.')))) machines.push_back(name);
  }
  std::sort(machines.begin(), machines.end(), [](const std::string& a, const std::string& b) {
    return CompareIgnoringCase(a, b) < 0;
  });
  machines.insert(machines.begin(), localName);
  return machines;
}

std::vector<std::string> KnownMachines() {
  std::ifstream hosts("/etc/hosts");
  return MachinesIn(hosts, _trc_GetHostName(), UsedMachines());
}

std::optional<std::string> BrowseForMachine(Host& host) {
  std::vector<std::string> machines = KnownMachines();
  if (machines.empty()) return std::nullopt;
  CMachineBrowser browser(host, std::move(machines));
  if (browser.DoModal() != CDialog::kIdOk) return std::nullopt;
  return browser.Chosen();
}
