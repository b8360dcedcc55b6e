#include "quor/service/app_requests.h"

#include "quor/protocol/tls.h"

namespace {

using namespace quor::wire;

void PutSink(const LinkSink& from, Sink* to) {
  to->set_type(static_cast<std::uint32_t>(from.kind));
  to->set_name(from.name);
  to->set_options(from.options);
}

}  // namespace

bool FailRequest(Response* response, ErrorCode code, const std::string& text) {
  response->set_error(code);
  response->set_text(text);
  return false;
}

void AppRequests::Close() {
  for (const auto& [name, key] : m_handles)
    if (CatalogueApp* const app = m_apps.Known().Find(key)) m_apps.CloseHandle(*app, m_pid);
  m_handles.clear();
}

bool AppRequests::Serve(const Request& request, Role role, Response* response) {
  switch (request.what_case()) {
    case Request::kListApps:
      List(response);
      if (RoleAllows(role, ROLE_CONFIGURE)) ListFailingSinks(response);
      return true;
    case Request::kOpenApp:
      return Open(request.open_app().name(), response);
    case Request::kCloseApp:
      return CloseOne(request.close_app().name(), response);
    case Request::kGetApp:
      return Fill(request.get_app().name(), response);
    case Request::kKeep:
      return Keep(request.keep(), response);
    case Request::kForgetApp:
      return Forget(request.forget_app().name(), response);
    default:
      return Submit(request.submit(), response);
  }
}

void AppRequests::List(Response* response) {
  for (const std::string& key : m_apps.Known().Registered()) {
    if (!m_view.Sees(key)) continue;
    response->add_app_names(m_view.NameOf(key));
    const CatalogueApp* const app = m_apps.Known().Find(key);
    response->add_app_instances(static_cast<std::uint32_t>(app->Instances()));
    if (const std::string account = m_view.AccountOf(key); !account.empty())
      response->add_accounts(account);
  }
  for (const CatalogueApp* const app : m_apps.Known().Waiting()) {
    if (!m_view.Sees(app->name)) continue;
    Waiting* const waiting = response->add_waiting();
    waiting->set_app(m_view.NameOf(app->name));
    waiting->set_kept(app->kept.Written());
    waiting->set_prepared(app->prepared);
  }
}

void AppRequests::ListFailingSinks(Response* response) {
  for (const auto& [key, failing] : m_apps.FailingSinks()) {
    if (!m_view.Sees(key)) continue;
    FailingSink* const sink = response->add_failing_sinks();
    sink->set_app(m_view.NameOf(key));
    sink->set_machine(failing.machine);
    sink->set_why(failing.why);
  }
}

std::optional<std::string> AppRequests::KeyOf(const std::string& name, bool isNew,
                                              Response* response) const {
  if (const auto handle = m_handles.find(name); handle != m_handles.end()) return handle->second;
  std::string why;
  auto key = m_view.KeyOf(name, isNew, &why);
  if (!key) FailRequest(response, ERROR_UNKNOWN_APP, why);
  return key;
}

CatalogueApp* AppRequests::Known(const std::string& name, Response* response) {
  const auto key = KeyOf(name, false, response);
  CatalogueApp* const app = key ? m_apps.Known().Find(*key) : nullptr;
  if (key && !app) FailRequest(response, ERROR_UNKNOWN_APP, "no such application is known");
  return app;
}

CatalogueApp* AppRequests::Enter(const std::string& name, Response* response) {
  const auto key = KeyOf(name, true, response);
  CatalogueApp* const app = key && !name.empty() ? m_apps.Known().Enter(*key) : nullptr;
  if (key && !app) FailRequest(response, ERROR_LIMIT, "the application cannot be entered");
  return app;
}

bool AppRequests::Keep(const quor::wire::Keep& keep, Response* response) {
  std::vector<std::string> faults;
  const SettingsText rules = SettingsText::Read(keep.rules(), &faults);
  if (!faults.empty()) return FailRequest(response, ERROR_BAD_REQUEST, faults.front());
  CatalogueApp* const app = Enter(keep.app(), response);
  if (!app) return false;
  if (m_apps.Keep(*app, rules)) return true;
  return FailRequest(response, ERROR_LIMIT,
                     "that are more settings than are kept for an application");
}

bool AppRequests::Forget(const std::string& name, Response* response) {
  const auto key = KeyOf(name, false, response);
  if (!key) return false;
  CatalogueApp* const app = m_apps.Known().Find(*key);
  if (app && m_apps.ForgetWaiting(*app)) return true;
  return FailRequest(response, ERROR_UNKNOWN_APP, "nothing is kept for such an application");
}

bool AppRequests::Open(const std::string& name, Response* response) {
  if (m_handles.size() >= kHandlesMax)
    return FailRequest(response, ERROR_LIMIT, "too many handles");
  CatalogueApp* const app = Enter(name, response);
  if (!app) return false;
  m_handles.emplace(name, app->name);
  m_apps.Known().OpenHandle(*app, m_pid);
  return Fill(name, response);
}

bool AppRequests::CloseOne(const std::string& name, Response* response) {
  const auto handle = m_handles.find(name);
  if (handle == m_handles.end())
    return FailRequest(response, ERROR_UNKNOWN_APP, "no handle is open on it");
  const std::string key = handle->second;
  m_handles.erase(handle);
  if (CatalogueApp* const app = m_apps.Known().Find(key)) m_apps.CloseHandle(*app, m_pid);
  return true;
}

bool AppRequests::Fill(const std::string& name, Response* response) {
  const CatalogueApp* const app = Known(name, response);
  if (!app) return false;
  App* const to = response->mutable_app();
  to->set_name(m_view.NameOf(app->name));
  const AppStart start = m_apps.StartOf(*app);
  const LinkSink& sink = start.sink ? *start.sink : app->sink;
  PutSink(sink, to->mutable_sink());
  to->set_sink_trouble(m_apps.WhySinkFails(sink));
  to->set_kept(app->kept.Written());
  to->set_sink_from_start(start.sink.has_value());
  for (const AppStart::Note& note : start.notes) {
    StartNote* const line = to->add_start_notes();
    line->set_pid(note.pid);
    line->set_text(note.text);
  }
  FillTraces(*app, start, to);
  return true;
}

void AppRequests::FillTraces(const CatalogueApp& app, const AppStart& start, App* to) {
  std::map<std::string, Component*> components;
  for (std::uint32_t id = 0; id < app.traces.size(); ++id) {
    const CatalogueTrace& trace = app.traces[id];
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
}

bool AppRequests::Submit(const quor::wire::Submit& submit, Response* response) {
  CatalogueApp* const app = Known(submit.app(), response);
  if (!app) return false;
  if (!app->IsHeld())
    return FailRequest(response, ERROR_BAD_REQUEST, "nobody holds the application: open it first");
  Catalogue::Submitted what;
  for (const auto& setting : submit.settings())
    what.settings.emplace_back(setting.trace_id(), setting.settings());
  if (submit.has_sink()) {
    const Sink& sink = submit.sink();
    if (sink.type() > 1) return FailRequest(response, ERROR_BAD_REQUEST, "a sink of unknown type");
    if (sink.name().size() > kLinkTextMax || sink.options().size() > kLinkTextMax)
      return FailRequest(response, ERROR_LIMIT, "the sink's name or options are too long");
    what.sink = LinkSink{static_cast<SinkKind>(sink.type()), sink.name(), sink.options()};
    if (what.sink->kind == SinkKind::File && !m_view.MayNameFile(app->name))
      return FailRequest(response, ERROR_ACCESS,
                         "the program writes its file with its own rights: only its account and "
                         "root may name one");
  }
  m_apps.Submit(*app, what);
  return true;
}
