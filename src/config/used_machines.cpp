#include "config/used_machines.h"

#include "base/quor_str.h"
#include "base/text.h"
#include "quor/client/trace_thread.h"
#include "settings/registry.h"

namespace {

constexpr unsigned kMachinesMax = 10;

std::string MachineKey() {
  return std::string(kRegProgram) + "\\Machine List";
}

std::string MachineEntry(unsigned place) {
  return "Machine" + QuorStr::NumToStr(place + 1);
}

bool IsThisMachine(const std::string& machine) {
  return machine.empty() || CompareIgnoringCase(machine, "localhost") == 0 ||
         CompareIgnoringCase(machine, _trc_GetHostName()) == 0;
}

}  // namespace

std::vector<std::string> UsedMachines() {
  std::vector<std::string> machines;
  for (unsigned place = 0; place < kMachinesMax; ++place) {
    std::string machine = NtRegGet(HKEY_CURRENT_USER, MachineKey(), MachineEntry(place), "");
    if (!machine.empty()) machines.push_back(std::move(machine));
  }
  return machines;
}

void NoteUsedMachine(const std::string& machine) {
  if (IsThisMachine(machine)) return;
  std::vector<std::string> machines = {machine};
  for (const std::string& older : UsedMachines())
    if (CompareIgnoringCase(older, machine) != 0) machines.push_back(older);
  for (unsigned place = 0; place < kMachinesMax && place < machines.size(); ++place) {
    const std::string entry = MachineEntry(place);
    if (NtRegGet(HKEY_CURRENT_USER, MachineKey(), entry, "") != machines[place])
      NtRegPut(HKEY_CURRENT_USER, MachineKey(), entry, machines[place]);
  }
}
