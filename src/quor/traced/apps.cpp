#include "quor/traced/apps.h"

#include <sys/stat.h>

#include <algorithm>

#include "quor/log/log.h"

bool Apps::Arrive(AppArrival arrival, std::string* why) {
  struct stat status {};
  if (fstat(arrival.segment.Descriptor(), &status) != 0) {
    *why = "the segment cannot be looked at";
    return false;
  }
  const Key key{status.st_dev, status.st_ino};
  if (const auto known = m_running.find(key); known != m_running.end()) {
    if (known->second->IsEnding()) {
      *why = "its last instance is just ending";
      return false;
    }
    known->second->Relink(std::move(arrival));
    return true;
  }
  if (m_running.size() >= kInstancesMax) {
    *why = "too many applications";
    return false;
  }
  CatalogueApp* const entry = m_catalogue.Enter(arrival.hello.app);
  if (!entry) {
    *why = "the application's name cannot be entered";
    return false;
  }
  m_catalogue.BeginInstance(*entry, arrival.pid);
  const std::string name = arrival.hello.app;
  const auto app = std::make_shared<RunningApp>(m_io, *this, *entry, m_machine, arrival);
  m_running[key] = app;
  Log(LogLevel::Info, "application " + name + " (" + std::to_string(app->Pid()) + ") is here");
  app->Start(std::move(arrival));
  return true;
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
}

void Apps::OnEnded(RunningApp& app) {
  Log(LogLevel::Info,
      "application " + app.Entry().name + " (" + std::to_string(app.Pid()) + ") has ended");
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
