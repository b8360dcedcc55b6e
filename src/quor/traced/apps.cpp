#include "quor/traced/apps.h"

#include <sys/stat.h>

#include <algorithm>

#include "base/fail_with.h"
#include "quor/log/log.h"

namespace {

bool Identify(int segment, std::pair<std::uint64_t, std::uint64_t>* key) {
  struct stat status {};
  const bool identified = fstat(segment, &status) == 0;
  *key = {status.st_dev, status.st_ino};
  return identified;
}

}  // namespace

bool Apps::Arrive(AppArrival arrival, std::string* why) {
  Key key;
  if (!Identify(arrival.segment.Descriptor(), &key))
    return FailWith(why, "the segment cannot be looked at");
  if (const auto known = m_running.find(key); known != m_running.end()) {
    if (known->second->IsEnding()) return FailWith(why, "its last instance is just ending");
    known->second->Relink(std::move(arrival));
    return true;
  }
  const std::string name = arrival.hello.app;
  const std::shared_ptr<RunningApp> app = Add(key, arrival, why);
  if (!app) return false;
  Log(LogLevel::Info, "application " + name + " (" + std::to_string(app->Pid()) + ") is here");
  app->Start(std::move(arrival));
  app->HoldIn(m_keeper);
  return true;
}

std::shared_ptr<RunningApp> Apps::Add(const Key& key, AppArrival& arrival, std::string* why) {
  CatalogueApp* const entry =
      m_running.size() < kInstancesMax ? m_catalogue.Enter(arrival.hello.app) : nullptr;
  if (!entry) {
    *why = m_running.size() < kInstancesMax ? "the application's name cannot be entered"
                                            : "too many applications";
    return nullptr;
  }
  m_catalogue.BeginInstance(*entry, arrival.pid);
  auto app = std::make_shared<RunningApp>(m_io, *this, *entry, m_machine, arrival);
  m_running[key] = app;
  return app;
}

void Apps::Adopt(std::vector<KeptApp> held) {
  for (KeptApp& kept : held)
    if (!Adopt(kept)) m_keeper.Forget(kept.id);
  if (!held.empty())
    Log(LogLevel::Info, std::to_string(held.size()) + " applications of an earlier service");
}

bool Apps::Adopt(KeptApp& kept) {
  SegmentMap segment;
  const char* reason = "";
  Key key;
  if (!segment.Open(kept.segment.Release(), &reason) || !Identify(segment.Descriptor(), &key) ||
      m_running.contains(key))
    return false;
  OwnedDescriptor event(m_io), process(m_io);
  std::error_code error;
  event.assign(kept.event.Release(), error);
  process.assign(kept.process.Release(), error);
  LinkHello hello;
  hello.app = kept.app;
  AppArrival arrival{std::move(hello), std::move(segment), OwnedDescriptor(m_io),
                     std::move(event), kept.pid,           {}};
  std::string why;
  const std::shared_ptr<RunningApp> app = Add(key, arrival, &why);
  if (app) app->Adopt(std::move(arrival), std::move(process), kept.id);
  return app != nullptr;
}

void Apps::LetGo() {
  const auto running = m_running;  // ending one takes it out of the map
  for (const auto& [key, app] : running) app->LetGo();
}

std::uint32_t Apps::EnterTrace(CatalogueApp& entry, const TracedPoint& point) {
  return m_catalogue.EnterTrace(entry, point.component, point.category);
}

Hub& Apps::HubFor(const LinkSink& sink) {
  return m_router.HubForMachine(sink.kind == SinkKind::Socket ? sink.name : std::string());
}

void Apps::OnRenamed(RunningApp& app, CatalogueApp& from, CatalogueApp& to) {
  m_catalogue.BeginInstance(to, app.Pid());
  m_catalogue.EndInstance(from, app.Pid());
  app.HoldIn(m_keeper);
}

void Apps::OnEnded(RunningApp& app) {
  Log(LogLevel::Info,
      "application " + app.Entry().name + " (" + std::to_string(app.Pid()) + ") has ended");
  app.Forget(m_keeper);
  m_catalogue.EndInstance(app.Entry(), app.Pid());
  std::erase_if(m_running, [&app](const auto& entry) { return entry.second.get() == &app; });
}

void Apps::Apply(const CatalogueApp& app, bool sink) {
  const auto running = m_running;  // ending one takes it out of the map
  for (const auto& [key, instance] : running) {
    if (&instance->Entry() != &app) continue;
    instance->ApplySettings();
    if (sink) instance->ApplySink();
  }
}

void Apps::Submit(CatalogueApp& app, const Catalogue::Submitted& what) {
  m_catalogue.Submit(app, what);
  Apply(app, what.sink.has_value());
}

void Apps::CloseHandle(CatalogueApp& app, std::uint32_t pid) {
  m_catalogue.CloseHandle(app, pid);
}

void Apps::EndGrace() {
  m_catalogue.EndGrace();
}

void Apps::Stop() {
  for (const auto& [key, instance] : m_running) instance->Stop();
  m_running.clear();
}
