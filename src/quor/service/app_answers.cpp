// What a session answers about applications.
#include "quor/protocol/tls.h"
#include "quor/service/client_session.h"

namespace {

using namespace quor::wire;

}  // namespace

void ClientSession::ListApps(Response* response) {
  for (const std::string& name : m_context.apps.Known().Registered()) {
    response->add_app_names(name);
    const CatalogueApp* const app = m_context.apps.Known().Find(name);
    response->add_app_instances(static_cast<std::uint32_t>(app->Instances()));
  }
  for (const CatalogueApp* const app : m_context.apps.Known().Waiting()) {
    Waiting* const waiting = response->add_waiting();
    waiting->set_app(app->name);
    waiting->set_kept(app->kept.Written());
    waiting->set_prepared(app->prepared);
  }
  if (!RoleAllows(m_role, ROLE_CONFIGURE)) return;
  for (const auto& [app, failing] : m_context.apps.FailingSinks()) {
    FailingSink* const sink = response->add_failing_sinks();
    sink->set_app(app);
    sink->set_machine(failing.machine);
    sink->set_why(failing.why);
  }
}

bool ClientSession::FillApp(const std::string& name, Response* response) {
  const CatalogueApp* const app = m_context.apps.Known().Find(name);
  if (!app) return false;
  App* const to = response->mutable_app();
  to->set_name(app->name);
  const AppStart start = m_context.apps.StartOf(*app);
  const LinkSink& sink = start.sink ? *start.sink : app->sink;
  to->mutable_sink()->set_type(static_cast<std::uint32_t>(sink.kind));
  to->mutable_sink()->set_name(sink.name);
  to->mutable_sink()->set_options(sink.options);
  to->set_sink_trouble(m_context.apps.WhySinkFails(sink));
  to->set_kept(app->kept.Written());
  to->set_sink_from_start(start.sink.has_value());
  for (const AppStart::Note& note : start.notes) {
    StartNote* const line = to->add_start_notes();
    line->set_pid(note.pid);
    line->set_text(note.text);
  }
  std::map<std::string, Component*> components;
  for (std::uint32_t id = 0; id < app->traces.size(); ++id) {
    const CatalogueTrace& trace = app->traces[id];
    Component*& component = components[trace.component];
    if (!component) {
      component = to->add_components();
      component->set_name(trace.component);
    }
    Category* const category = component->add_categories();
    category->set_name(trace.category);
    category->set_trace_id(id);
    const auto given = start.settings.find(id);
    category->set_settings(given == start.settings.end() ? trace.settings : given->second);
    category->set_from_start(given != start.settings.end());
  }
  return true;
}
