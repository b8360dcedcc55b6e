#include "quor/cluster/settings_desk.h"

#include "base/fail_with.h"

using namespace quor::wire;

Response SettingsDesk::Answer(const Request& request) {
  Response response;
  response.set_id(request.id());
  {
    const std::lock_guard lock(m_mutex);
    m_refused.clear();
  }
  switch (request.what_case()) {
    case Request::kOpenApp:
      Read(request.open_app().name(), true, response);
      break;
    case Request::kGetApp:
      Read(request.get_app().name(), false, response);
      break;
    case Request::kCloseApp:
      m_seen.erase(request.close_app().name());
      break;
    case Request::kSubmit:
      Submit(request.submit(), response);
      break;
    case Request::kListApps:
    case Request::kKeep:
    case Request::kForgetApp:
      AskMachine(request, response);
      break;
    default:
      Fail(response, "a machine of a cluster does not answer this");
  }
  response.set_id(request.id());
  return response;
}

void SettingsDesk::OnRefused(const std::string& what) {
  const std::lock_guard lock(m_mutex);
  m_refused = what;
}

std::string SettingsDesk::Reason(const std::string& why) {
  const std::lock_guard lock(m_mutex);
  return m_refused.empty() ? why : "the cluster does not allow it: " + m_refused;
}

bool SettingsDesk::Fail(Response& response, const std::string& text, ErrorCode code) {
  response.Clear();
  response.set_error(code);
  response.set_text(text);
  return false;
}

bool SettingsDesk::AskMachine(const Request& request, Response& response) {
  quor::cluster::QuestionMessage question;
  *question.mutable_request() = request;
  return AskMachine(question, response);
}

bool SettingsDesk::AskMachine(const quor::cluster::QuestionMessage& question, Response& response) {
  const Request& request = question.request();
  const bool changes = request.has_keep() || request.has_forget_app() || request.has_submit();
  const std::vector<std::uint8_t> bytes = WriteQuestion(question);
  std::string why;
  const auto answer = m_engine.Ask(MachineSubject(m_machine, changes), bytes, m_deadline, &why);
  if (!answer)
    return Fail(response, m_machine + " does not answer over the cluster: " + Reason(why));
  if (!response.ParseFromArray(answer->data(), static_cast<int>(answer->size())))
    return Fail(response, m_machine + " has given a malformed answer");
  return response.error() == ERROR_NONE;
}

// The revision is read before the state: a change between the two is then noticed at the submit.
bool SettingsDesk::Read(const std::string& app, bool opens, Response& response) {
  std::string why;
  const auto value = m_engine.Get(kSettingsBucket, WantedKey(m_machine, app), m_deadline, &why);
  if (!value)
    return Fail(response, "the settings of " + m_machine + " cannot be read: " + Reason(why));
  Request request;
  request.mutable_get_app()->set_name(app);
  if (!AskMachine(request, response)) {
    if (!opens || response.error() != ERROR_UNKNOWN_APP) return false;
    // Like a machine's own service, which knows an application from the first handle on.
    response.Clear();
    response.mutable_app()->set_name(app);
    response.mutable_app()->mutable_sink()->set_type(1);
    response.mutable_app()->mutable_sink()->set_name("localhost");
  }
  if (m_seen.size() >= kAppsMax && !m_seen.contains(app))
    return Fail(response, "too many handles", ERROR_LIMIT);
  m_seen[app] = {response.app(), value->revision};
  return true;
}

bool SettingsDesk::Submit(const quor::wire::Submit& submit, Response& response) {
  const auto seen = m_seen.find(submit.app());
  if (seen == m_seen.end()) return Fail(response, "nobody holds the application: open it first");
  if (submit.settings().empty() && !submit.has_sink()) return true;
  std::vector<std::uint8_t> value;
  if (!Store(submit, seen->second, value, response)) return false;
  quor::cluster::QuestionMessage question;
  question.mutable_request()->mutable_submit()->set_app(submit.app());
  question.set_revision(seen->second.revision);
  question.set_wanted(value.data(), value.size());
  if (AskMachine(question, response)) return true;
  const std::string text = response.text();
  return Fail(response, "The settings are kept, and are not in force yet: " + text);
}

bool SettingsDesk::Store(const quor::wire::Submit& submit, Seen& seen,
                         std::vector<std::uint8_t>& bytes, Response& response) {
  const std::string key = WantedKey(m_machine, submit.app());
  std::string why;
  const auto value = m_engine.Get(kSettingsBucket, key, m_deadline, &why);
  if (!value)
    return Fail(response, "the settings of " + m_machine + " cannot be read: " + Reason(why));
  Wanted wanted{m_machine, submit.app(), {}, {}, {}};
  if (value->revision != 0 && !value->value.empty() && !ReadWanted(value->value, wanted, &why))
    return Fail(response, "what is kept for " + submit.app() + " cannot be read: " + why);
  if (value->revision != seen.revision) return FailChanged(submit.app(), wanted.who, response);
  wanted.machine = m_machine;
  wanted.app = submit.app();
  wanted.who = m_who;
  if (!wanted.Add(submit, seen.app, &why) || !WriteWanted(wanted, bytes, &why))
    return Fail(response, why);
  switch (m_engine.PutValue(kSettingsBucket, key, bytes, seen.revision, m_deadline, &why)) {
    case Engine::Put::Done:
      return true;
    case Engine::Put::Changed:
      return FailChanged(submit.app(), {}, response);
    case Engine::Put::Failed:
      break;
  }
  return Fail(response, "the settings of " + m_machine + " cannot be changed: " + Reason(why));
}

bool SettingsDesk::FailChanged(const std::string& app, const std::string& who, Response& response) {
  return Fail(response, (who.empty() ? "Someone else" : who) + " has changed the settings of " +
                            app + " on " + m_machine +
                            " since they were read here. Read them again and repeat the change.");
}
