#include "quor/traced/apps.h"

#include <malloc.h>

#include <algorithm>
#include <utility>

#include "base/fail_with.h"
#include "quor/log/log.h"

namespace {

constexpr std::size_t kBrokenMax = 1024;
constexpr int kEndedForMemory = 32;
constexpr std::chrono::seconds kMemoryAfter{2};  // by then all of it is free

}  // namespace

bool Apps::Arrive(AppArrival arrival, std::string* why) {
  const bool brought = static_cast<bool>(arrival.segment);
  if (m_accounts) arrival.account = m_accounts->Of(arrival.account.uid);
  if (brought && !IsOfAccount(arrival, why)) return false;
  const Key key = brought ? KeyOf(arrival.segment) : Key{arrival.hello.device, arrival.hello.inode};
  if (IsBroken(key)) return FailWith(why, "its segment is not read any more");
  if (!brought && !m_running.contains(key)) ReportSkipped();
  if (!brought && !m_running.contains(key)) m_watch.Read();
  if (const auto known = m_running.find(key); known != m_running.end()) {
    if (known->second->IsEnding()) return FailWith(why, "its last instance is just ending");
    if (m_accounts && known->second->Owner().uid != arrival.account.uid)
      return FailWith(why, "its segment is another account's");
    if (!brought && known->second->Pid() != arrival.pid)
      return FailWith(why, "its segment is another process's");
    known->second->Relink(std::move(arrival));
    return true;
  }
  if (!brought) return FailWith(why, "its segment is not known here");
  const std::shared_ptr<RunningApp> app = Add(key, arrival, why);
  if (!app) return false;
  app->Start(std::move(arrival));
  return true;
}

bool Apps::IsOfAccount(const AppArrival& arrival, std::string* why) const {
  return !m_accounts || AccountOf(arrival.segment.Descriptor()).uid == arrival.account.uid ||
         FailWith(why, "its segment is another account's");
}

bool Apps::IsBroken(const Key& key) const {
  return std::find(m_broken.begin(), m_broken.end(), key) != m_broken.end();
}

std::shared_ptr<RunningApp> Apps::Add(const Key& key, AppArrival& arrival, std::string* why) {
  if (m_running.size() >= kInstancesMax) return FailWith(why, "too many applications", nullptr);
  if (!m_bound.Take(arrival.account)) return FailWith(why, m_bound.Why(), nullptr);
  CatalogueApp* const entry = EntryFor(arrival.account, arrival.hello.app);
  if (!entry) {
    m_bound.Give(arrival.account);
    return FailWith(why, "the application's name cannot be entered", nullptr);
  }
  m_catalogue.FindInstance(*entry, arrival.pid);
  auto app = std::make_shared<RunningApp>(m_io, *this, *entry, m_machine, arrival);
  m_running[key] = app;
  Log(LogLevel::Info,
      "application " + entry->name + " (" + std::to_string(app->Pid()) + ") is here");
  return app;
}

void Apps::Watch(const std::string& socketPath) {
  m_holdsBack = true;
  WatchAnew(socketPath);
  m_holdsBack = false;
  if (!m_running.empty())
    Log(LogLevel::Info, std::to_string(m_running.size()) + " applications of an earlier service");
}

void Apps::WatchAnew(const std::string& socketPath) {
  std::string why;
  m_kept.Clear();
  if (!m_watch.Open(socketPath, &why))
    Log(LogLevel::Warning, why + "; what short-lived applications trace may be lost");
}

void Apps::LookAtFolder(const std::string& socketPath) {
  if (m_watch.IsInPlace(socketPath)) return;
  Log(LogLevel::Warning, "the folder of segments has been replaced and is watched again");
  m_watch.ReportAll();
  WatchAnew(socketPath);
}

void Apps::ReleaseHeld(std::optional<uid_t> only) {
  const auto running = m_running;  // an instance that ends removes itself from the map
  for (const auto& [key, app] : running)
    if (!only || app->Owner().uid == *only) app->ReleaseHeld();
}

// The id of each.
std::vector<std::uint32_t> Apps::EnterTraces(CatalogueApp& entry, const TracedPoints& points) {
  const auto from = static_cast<std::uint32_t>(entry.traces.size());
  std::vector<std::uint32_t> ids;
  ids.reserve(points.size());
  for (const TracedPoint& point : points)
    ids.push_back(m_catalogue.AddTrace(entry, point.component, point.category));
  m_catalogue.StoreTraces(entry, from);
  return ids;
}

Hub& Apps::HubFor(const Account& account, const LinkSink& sink) {
  return m_router.HubForMachine(sink.kind == SinkKind::Socket ? sink.name : std::string(), account);
}

// Memory that many applications took at the same time is fragmented: the heap keeps it until it is
// asked to give it back.
void Apps::GiveMemoryBack() {
  if (++m_endedSince < kEndedForMemory || std::exchange(m_trimsSoon, true)) return;
  m_trimTimer.expires_after(kMemoryAfter);
  m_trimTimer.async_wait([this](const std::error_code& error) {
    if (error) return;
    m_trimsSoon = false;
    m_endedSince = 0;
    malloc_trim(0);
  });
}

void Apps::OnBegan(RunningApp& app) {
  m_catalogue.BeginInstance(app.Entry(), app.Pid());
}

void Apps::OnRenamed(RunningApp& app, CatalogueApp& from, CatalogueApp& to) {
  if (app.HasBegun())
    m_catalogue.BeginInstance(to, app.Pid());
  else
    m_catalogue.FindInstance(to, app.Pid());
  EndIn(from, app);
}

void Apps::EndIn(CatalogueApp& entry, const RunningApp& app) {
  if (app.HasBegun())
    m_catalogue.EndInstance(entry, app.Pid());
  else
    m_catalogue.EndFound(entry, app.Pid());
}

void Apps::OnEnded(RunningApp& app) {
  Log(LogLevel::Info,
      "application " + app.Entry().name + " (" + std::to_string(app.Pid()) + ") has ended");
  // Its link may have come before the event about its file.
  if (app.File().empty()) m_watch.Read();
  if (!app.File().empty())
    m_kept.Keep(app.File(), KeyOf(app.Segment()), app.FinishedSource(), BoundOf(app.Owner()));
  EndIn(app.Entry(), app);
  m_bound.Give(app.Owner());
  // Its link comes again as long as the application lives.
  if (app.IsBroken()) m_broken.push_back(KeyOf(app.Segment()));
  if (m_broken.size() > kBrokenMax) m_broken.pop_front();
  std::erase_if(m_running, [&app](const auto& entry) { return entry.second.get() == &app; });
  GiveMemoryBack();
  ReportSkipped();
}

void Apps::Apply(const CatalogueApp& app, bool sink) {
  const auto running = m_running;  // an instance that ends removes itself from the map
  for (const auto& [key, instance] : running) {
    if (&instance->Entry() != &app) continue;
    instance->ApplySettings();
    if (sink) instance->ApplySink();
  }
}

void Apps::Submit(CatalogueApp& app, const Catalogue::Submitted& what) {
  m_catalogue.Submit(app, what);
  std::vector<bool> traces(app.traces.size());
  for (const auto& [trace, settings] : what.settings)
    if (trace < traces.size()) traces[trace] = true;
  for (const auto& [key, instance] : m_running)
    if (&instance->Entry() == &app) instance->DropStart(traces, what.sink.has_value());
  Apply(app, what.sink.has_value());
}

bool Apps::Keep(CatalogueApp& app, const SettingsText& rules) {
  std::vector<std::uint32_t> changed;
  if (!m_catalogue.Keep(app, rules, &changed)) return false;
  std::vector<bool> traces(app.traces.size());
  for (const std::uint32_t trace : changed) traces[trace] = true;
  for (const auto& [key, instance] : m_running)
    if (&instance->Entry() == &app) instance->DropStart(traces, false);
  SendKept(app);
  Apply(app, false);
  return true;
}

bool Apps::ForgetWaiting(CatalogueApp& app) {
  const bool runs = app.Instances() != 0;  // else it may be gone afterwards
  if (!m_catalogue.ForgetWaiting(app)) return false;
  if (runs) SendKept(app);
  return true;
}

void Apps::SendKept(const CatalogueApp& app) {
  for (const auto& [key, instance] : m_running)
    if (&instance->Entry() == &app) instance->SendKept();
}

AppStart Apps::StartOf(const CatalogueApp& app) const {
  AppStart start;
  bool first = true;
  for (const auto& [key, instance] : m_running) {
    if (&instance->Entry() != &app || instance->IsEnding()) continue;
    for (const std::string& note : instance->StartedWith().notes)
      if (start.notes.size() < AppStart::kNotesMax) start.notes.push_back({instance->Pid(), note});
    const auto settings = instance->StartSettings();
    if (std::exchange(first, false)) {
      start.settings = settings;
      start.sink = instance->StartedWith().sink;
      continue;
    }
    std::erase_if(start.settings, [&settings](const auto& one) {
      const auto other = settings.find(one.first);
      return other == settings.end() || other->second != one.second;
    });
    if (start.sink &&
        (!instance->StartedWith().sink || !(*instance->StartedWith().sink == *start.sink)))
      start.sink.reset();
  }
  return start;
}

std::map<std::string, Apps::FailingSink> Apps::FailingSinks() const {
  std::map<std::string, FailingSink> failing;
  for (const auto& [key, instance] : m_running) {
    if (instance->IsEnding()) continue;
    const CatalogueApp& entry = instance->Entry();
    const std::optional<LinkSink>& own = instance->StartedWith().sink;
    const LinkSink& sink = own ? *own : entry.sink;
    if (std::string why = WhySinkFails(sink); !why.empty())
      failing.try_emplace(entry.name, FailingSink{sink.name, std::move(why)});
  }
  return failing;
}

void Apps::CloseHandle(CatalogueApp& app, std::uint32_t pid) {
  m_catalogue.CloseHandle(app, pid);
}

void Apps::EndGrace() {
  m_catalogue.EndGrace();
}

void Apps::Stop() {
  // The next service removes the kept files: a monitor may not read until our end.
  m_watch.Close();
  for (const auto& [key, instance] : m_running) instance->Stop();
  m_running.clear();
}
