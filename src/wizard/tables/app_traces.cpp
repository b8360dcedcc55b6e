#include "wizard/tables/app_traces.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace {

// A service gives a program 1,024 handles. One that has refused so many more gives none.
constexpr int kRefusalsMax = 8;

}  // namespace

void CollectTraces(WizApp& entry) {
  for (const trace_Component_t& component : entry.m_app->GetTraceMap())
    for (const trace_Category_t& category : component.categories) {
      const WizTrace found{static_cast<std::uint16_t>(category.traceId), WizTrace::kNotRead};
      const auto place = entry.m_traces.try_emplace({component.name, category.name}, found).first;
      place->second.m_nSettings = WizTrace::kNotRead;
    }
}

void ReadSettings(WizApp& entry) {
  for (auto& [name, trace] : entry.m_traces) {
    if (trace.m_nSettings != WizTrace::kNotRead) continue;
    if (trace.m_nId == WizTrace::kNotLookedUp)
      trace.m_nId = static_cast<std::uint16_t>(entry.m_app->GetTraceId(name.first, name.second));
    trace.m_nSettings = entry.m_app->GetSettings(trace.m_nId);
  }
}

SelectedReading::SelectedReading(WizMachine& machine, WizOpenApp open)
    : m_machine(machine),
      m_open(std::move(open)),
      m_count(static_cast<std::size_t>(
          std::count_if(machine.m_apps.begin(), machine.m_apps.end(),
                        [](const auto& app) { return app.second.m_bSelected; }))),
      m_next(NextSelected(machine.m_apps, machine.m_apps.begin())) {}

// After a question without an answer the machine is asked again only if it is up: that question was
// refused, or the machine has come back.
bool SelectedReading::MayAsk(const WizApp& entry) const {
  if (!m_answers && !m_machine.m_pConfig->IsUp()) return false;
  return entry.m_app || m_refusals < kRefusalsMax;
}

// A handle that is there keeps its last state when there is no answer. False: there is no handle.
bool SelectedReading::Read(const std::string& name, WizApp& entry) {
  if (!MayAsk(entry)) return static_cast<bool>(entry.m_app);
  if (entry.m_app) {
    // Reading it anew would drop what its window shows and has still to send.
    if (!entry.m_bUnsent) m_answers = entry.m_app->Refresh();
    return true;
  }
  entry.m_app = m_open(m_machine.m_pConfig->GetHostName(), name);
  m_answers = static_cast<bool>(entry.m_app);
  m_refusals += !m_answers;
  return m_answers;
}

// Kept: what a file or the user has set is replaced by what the machine has. Only traces that the
// application does not know keep their settings. Safe: the next page shows what is there.
void SelectedReading::ReadOne() {
  auto& [name, entry] = *m_next;
  if (Read(name, entry)) {
    CollectTraces(entry);
    ReadSettings(entry);
  } else {
    entry.m_bSelected = m_all = false;
  }
  ++m_done;
  m_next = NextSelected(m_machine.m_apps, std::next(m_next));
}

// A machine that is not asked any more needs no box for the rest.
bool SelectedReading::ReadNext() {
  const auto end = m_machine.m_apps.end();
  if (m_next != end) ReadOne();
  while (m_next != end && !MayAsk(m_next->second)) ReadOne();
  return m_next == end;
}

bool ReadSelected(WizMachine& machine, const WizOpenApp& open) {
  SelectedReading reading(machine, open);
  while (!reading.ReadNext()) {
  }
  return reading.All();
}

WizApps::iterator NextSelected(WizApps& apps, WizApps::iterator from) {
  return std::find_if(from, apps.end(), [](const auto& app) { return app.second.m_bSelected; });
}

// Kept: also the connection is copied, so another machine is then read through that of `from`.
// Safe: the next start from the page of machines gives each that is worked on its own again.
void CopyToOthers(WizMachines& machines, WizMachines::const_iterator from) {
  for (auto machine = machines.begin(); machine != machines.end(); ++machine)
    if (machine != from) machine->second = from->second;
}
