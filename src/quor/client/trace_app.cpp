// trace_App_i: the last state that the machine sent, and the local changes until Submit.
#include <map>
#include <set>

#include "quor/client/config_link.h"
#include "quor/client/trace_config.h"

namespace {

class App final : public trace_App_i {
 public:
  App(std::string name, std::shared_ptr<ConfigLink> link)
      : m_name(std::move(name)), m_link(std::move(link)) {}
  ~App() override {
    if (m_open) m_link->Close(m_name);
  }

  bool Open(ConfigLink::Clock::time_point until, std::string* why) {
    quor::wire::Response response;
    m_open = m_link->Open(m_name, until, &response, why);
    if (m_open) Take(response.app());
    return m_open;
  }
  bool Read(ConfigLink::Clock::time_point until, std::string* why) {
    quor::wire::Request request;
    quor::wire::Response response;
    request.mutable_get_app()->set_name(m_name);
    const bool known = m_link->Ask(std::move(request), until, &response, why);
    if (known) Take(response.app());
    return known || response.error() == quor::wire::ERROR_UNKNOWN_APP;
  }

  const std::string& GetAppName() const override { return m_name; }
  const std::list<trace_Component_t>& GetTraceMap() const override { return m_map; }
  unsigned GetSettings(unsigned traceId) const override {
    const auto settings = m_settings.find(traceId);
    return settings == m_settings.end() ? 0 : settings->second;
  }
  void SetSettings(unsigned traceId, unsigned settings) override {
    const auto known = m_settings.find(traceId);
    if (known == m_settings.end()) return;
    known->second = settings;
    m_held.insert(traceId);
    m_fromStart.erase(traceId);
  }
  void SetAllTraces(unsigned settings) override {
    for (auto& [traceId, word] : m_settings) {
      word = settings;
      m_held.insert(traceId);
    }
    m_fromStart.clear();
  }
  unsigned GetTraceId(const std::string& component, const std::string& category) const override {
    const auto id = m_ids.find({component, category});
    return id == m_ids.end() ? TRC_NO_TRACE_ID : id->second;
  }
  void GetSink(trc_SinkTypes_e& type, std::string& name, std::string& options) const override {
    type = m_sinkType;
    name = m_sinkName;
    options = m_sinkOptions;
  }
  void SetSink(trc_SinkTypes_e type, const std::string& name, const std::string& options) override {
    m_sinkType = type;
    m_sinkName = name;
    m_sinkOptions = options;
    m_sinkHeld = true;
    m_sinkFromStart = false;
  }
  bool IsFromStart(unsigned traceId) const override { return m_fromStart.contains(traceId); }
  bool IsSinkFromStart() const override { return m_sinkFromStart; }
  std::string WhySinkFails() const override { return m_sinkTrouble; }
  std::vector<trace_StartNote_t> GetStartNotes() const override { return m_startNotes; }
  std::string GetKept() const override { return m_kept; }
  bool Submit() const override;
  bool Refresh() override;

 private:
  void Take(const quor::wire::App& app);

  const std::string m_name;
  const std::shared_ptr<ConfigLink> m_link;
  bool m_open = false;
  std::list<trace_Component_t> m_map;
  std::map<std::pair<std::string, std::string>, unsigned> m_ids;
  std::map<unsigned, unsigned> m_settings;  // by trace id
  trc_SinkTypes_e m_sinkType = trc_SinkSocket;
  std::string m_sinkName = "localhost", m_sinkOptions;
  std::set<unsigned> m_fromStart;
  bool m_sinkFromStart = false;
  std::string m_sinkTrouble, m_kept;
  std::vector<trace_StartNote_t> m_startNotes;
  // Submit sends only these: another program may have changed the rest meanwhile.
  mutable std::set<unsigned> m_held;
  mutable bool m_sinkHeld = false;
};

bool App::Submit() const {
  quor::wire::Request request;
  quor::wire::Submit& submit = *request.mutable_submit();
  submit.set_app(m_name);
  for (const unsigned traceId : m_held) {
    auto& setting = *submit.add_settings();
    setting.set_trace_id(traceId);
    setting.set_settings(GetSettings(traceId));
  }
  if (m_sinkHeld) {
    submit.mutable_sink()->set_type(static_cast<std::uint32_t>(m_sinkType));
    submit.mutable_sink()->set_name(m_sinkName);
    submit.mutable_sink()->set_options(m_sinkOptions);
  }
  if (!m_link->Ask(std::move(request), ConfigLink::Deadline(), nullptr)) return false;
  m_held.clear();
  m_sinkHeld = false;
  return true;
}

bool App::Refresh() {
  quor::wire::Request request;
  quor::wire::Response response;
  request.mutable_get_app()->set_name(m_name);
  if (!m_link->Ask(std::move(request), ConfigLink::Deadline(), &response)) return false;
  Take(response.app());
  return true;
}

void App::Take(const quor::wire::App& app) {
  m_map.clear();
  m_ids.clear();
  m_settings.clear();
  m_held.clear();
  m_sinkHeld = false;
  m_fromStart.clear();
  m_sinkFromStart = app.sink_from_start();
  m_sinkTrouble = app.sink_trouble();
  m_kept = app.kept();
  m_startNotes.clear();
  for (const auto& note : app.start_notes()) m_startNotes.push_back({note.pid(), note.text()});
  for (const auto& component : app.components()) {
    trace_Component_t& to = m_map.emplace_back(trace_Component_t{component.name(), {}});
    for (const auto& category : component.categories()) {
      // No trace has these ids: every id that means "none" has its low 16 bits set.
      if ((category.trace_id() & TRC_NO_TRACE_ID) == TRC_NO_TRACE_ID) continue;
      to.categories.push_back({category.name(), category.trace_id()});
      m_ids.emplace(std::pair(component.name(), category.name()), category.trace_id());
      m_settings.emplace(category.trace_id(), category.settings());
      if (category.from_start()) m_fromStart.insert(category.trace_id());
    }
  }
  m_sinkType = trc_SinkSocket;
  m_sinkName = "localhost";
  m_sinkOptions.clear();
  if (!app.has_sink()) return;
  // An unknown type is kept as it is: its window says that it is not supported.
  m_sinkType = static_cast<trc_SinkTypes_e>(app.sink().type());
  m_sinkName = app.sink().name();
  m_sinkOptions = app.sink().options();
}

}  // namespace

trace_App_i* trace_App_i::Create(const std::string& host, const std::string& app,
                                 std::string* why) {
  const auto until = ConfigLink::Deadline();
  auto link = ConfigLink::To(host, until, why);
  if (!link) return nullptr;
  auto made = std::make_unique<App>(app, std::move(link));
  return made->Open(until, why) ? made.release() : nullptr;
}

trace_App_i* trace_App_i::Look(const std::string& host, const std::string& app, std::string* why) {
  const auto until = ConfigLink::Deadline();
  auto link = ConfigLink::To(host, until, why);
  if (!link) return nullptr;
  auto made = std::make_unique<App>(app, std::move(link));
  return made->Read(until, why) ? made.release() : nullptr;
}
