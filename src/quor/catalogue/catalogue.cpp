#include "quor/catalogue/catalogue.h"

#include <signal.h>

#include <algorithm>
#include <cerrno>
#include <utility>

#include "quor/catalogue/catalogue_store.h"

namespace {

bool Lives(std::uint32_t pid) {
  // 0: a holder on another machine, about which nothing is known here.
  return pid == 0 || kill(static_cast<pid_t>(pid), 0) == 0 || errno == EPERM;
}

bool EraseOne(std::multiset<std::uint32_t>& pids, std::uint32_t pid) {
  const auto found = pids.find(pid);
  if (found == pids.end()) return false;
  pids.erase(found);
  return true;
}

}  // namespace

LinkSink DefaultSink() {
  return {SinkKind::Socket, "localhost", ""};
}

Catalogue::Catalogue(std::unique_ptr<CatalogueStore> store, std::uint32_t defaultSettings)
    : m_store(std::move(store)), m_defaultSettings(defaultSettings & kSettingsBits) {
  if (!m_store) return;
  for (StoredApp& stored : m_store->ReadAll()) {
    CatalogueApp& app = stored.app;
    for (std::uint32_t id = 0; id < app.traces.size(); ++id) {
      const CatalogueTrace& trace = app.traces[id];
      app.ids[{trace.component, trace.category}] = id;
      app.mapBytes += trace.component.size() + trace.category.size() + 32;
    }
    m_mapBytes += app.mapBytes;
    const bool held = std::any_of(stored.holders.begin(), stored.holders.end(), Lives);
    app.used = ++m_uses;
    CatalogueApp& kept = m_apps[app.name] = std::move(app);
    kept.awaited = kept.submitted && held;
    if (kept.submitted && !held && !kept.prepared) Forget(kept);
  }
}

Catalogue::~Catalogue() = default;

CatalogueApp* Catalogue::Find(const std::string& name) {
  const auto known = m_apps.find(name);
  return known == m_apps.end() ? nullptr : &known->second;
}

CatalogueApp* Catalogue::Enter(const std::string& name) {
  if (const auto known = m_apps.find(name); known != m_apps.end()) {
    known->second.used = ++m_uses;
    return &known->second;
  }
  if (name.size() > kNameBytesMax || name.empty()) return nullptr;
  const std::string begin = BeginOf(name);
  if (!begin.empty() && CountOf(begin) >= kAppsOfAccountMax && !ForgetOldest(begin)) return nullptr;
  if (m_apps.size() >= kAppsMax && !ForgetOldest()) return nullptr;
  CatalogueApp& app = m_apps[name];
  app.name = name;
  app.used = ++m_uses;
  app.sink = DefaultSink();
  if (m_store) m_store->WriteApp(app);
  return &app;
}

std::uint32_t Catalogue::EnterTrace(CatalogueApp& app, const std::string& component,
                                    const std::string& category) {
  const auto from = static_cast<std::uint32_t>(app.traces.size());
  const std::uint32_t id = AddTrace(app, component, category);
  StoreTraces(app, from);
  return id;
}

void Catalogue::StoreTraces(CatalogueApp& app, std::uint32_t from) {
  if (m_store && from < app.traces.size()) m_store->WriteTraces(app, from);
}

std::uint32_t Catalogue::AddTrace(CatalogueApp& app, const std::string& component,
                                  const std::string& category) {
  const auto known = app.ids.find({component, category});
  if (known != app.ids.end()) return known->second;
  const std::size_t bytes = component.size() + category.size() + 32;
  if (app.traces.size() >= kNoTraceId || app.mapBytes + bytes > kMapBytesMax) return kNoTraceId;
  app.mapBytes += bytes;
  m_mapBytes += bytes;
  const auto id = static_cast<std::uint32_t>(app.traces.size());
  app.traces.push_back({component, category});
  app.traces.back().settings = FirstSettings(app, app.traces.back());
  app.ids[{component, category}] = id;
  return id;
}

void Catalogue::FindInstance(CatalogueApp& app, std::uint32_t pid) {
  app.found.insert(pid);
  StoreHolders(app);
}

void Catalogue::BeginInstance(CatalogueApp& app, std::uint32_t pid) {
  EraseOne(app.found, pid);
  app.instances.insert(pid);
  if (std::exchange(app.prepared, false) && m_store) m_store->WriteSettings(app);
  StoreHolders(app);
}

void Catalogue::OpenHandle(CatalogueApp& app, std::uint32_t pid) {
  app.handles.insert(pid);
  StoreHolders(app);
}

void Catalogue::EndInstance(CatalogueApp& app, std::uint32_t pid) {
  if (EraseOne(app.instances, pid)) Release(app);
}

void Catalogue::EndFound(CatalogueApp& app, std::uint32_t pid) {
  if (EraseOne(app.found, pid)) Release(app);
}

void Catalogue::CloseHandle(CatalogueApp& app, std::uint32_t pid) {
  if (EraseOne(app.handles, pid)) Release(app);
}

void Catalogue::Release(CatalogueApp& app) {
  if (app.IsHeld() || app.prepared) return StoreHolders(app);
  if (app.awaited) return;
  if (app.submitted) Forget(app);
  app.used = ++m_uses;
  const std::string begin = BeginOf(app.name);
  if (app.traces.empty() && app.kept.IsEmpty()) Erase(app);
  while (m_mapBytes > kAllMapsBytesMax && (ForgetOldest(begin) || ForgetOldest())) {
  }
}

// An account makes room for its own before that of others.
std::string Catalogue::BeginOf(const std::string& name) const {
  return m_boundsAccounts ? name.substr(0, name.find('/') + 1) : std::string();
}

std::size_t Catalogue::CountOf(const std::string& begin) const {
  std::size_t count = 0;
  for (auto at = m_apps.lower_bound(begin); at != m_apps.end() && at->first.starts_with(begin);
       ++at)
    ++count;
  return count;
}

void Catalogue::Erase(CatalogueApp& app) {
  if (m_store) m_store->EraseApp(app);
  m_mapBytes -= app.mapBytes;
  m_apps.erase(m_apps.find(app.name));
}

// Forgets applications whose settings nobody waits for. Programs that use a new name at each start
// would otherwise fill the catalogue, and then no new application could be added.
bool Catalogue::ForgetOldest(const std::string& begin) {
  CatalogueApp* oldest = nullptr;
  for (auto& [name, app] : m_apps)
    if (name.starts_with(begin) && !app.IsHeld() && !app.prepared && !app.awaited &&
        app.kept.IsEmpty() && (!oldest || app.used < oldest->used))
      oldest = &app;
  if (oldest) Erase(*oldest);
  return oldest != nullptr;
}

void Catalogue::EndGrace() {
  for (auto& [name, app] : m_apps) {
    app.awaited = false;
    if (app.submitted && !app.IsHeld() && !app.prepared) Forget(app);
  }
}

void Catalogue::Forget(CatalogueApp& app) {
  app.submitted = false;
  app.sink = DefaultSink();
  for (CatalogueTrace& trace : app.traces) trace.settings = FirstSettings(app, trace);
  if (m_store) m_store->WriteSettings(app);
}

void Catalogue::Submit(CatalogueApp& app, const Submitted& what) {
  for (const auto& [id, word] : what.settings)
    if (id < app.traces.size()) app.traces[id].settings = word & 0xFFFF;
  if (what.sink) app.sink = *what.sink;
  app.submitted = true;
  app.prepared = app.instances.empty();
  if (m_store) m_store->WriteSettings(app);
  StoreHolders(app);
}

void Catalogue::StoreHolders(CatalogueApp& app) {
  if (!m_store || !app.submitted) return;
  std::set<std::uint32_t> pids(app.instances.begin(), app.instances.end());
  pids.insert(app.found.begin(), app.found.end());
  pids.insert(app.handles.begin(), app.handles.end());
  m_store->WriteHolders(app, pids);
}

std::vector<std::string> Catalogue::Registered() const {
  std::vector<std::string> names;
  for (const auto& [name, app] : m_apps)
    if (app.IsHeld()) names.push_back(name);
  return names;
}

std::vector<std::string> Catalogue::Names() const {
  std::vector<std::string> names;
  for (const auto& [name, app] : m_apps) names.push_back(name);
  return names;
}
