#include "quor/cluster/settings_follower.h"

#include "base/fail_with.h"
#include "quor/envelope/envelope.h"

using namespace quor::wire;

namespace {

constexpr std::chrono::seconds kDeadline{2};
constexpr std::size_t kSaidMax = 256;

std::vector<std::uint8_t> Written(const Response& response) {
  std::vector<std::uint8_t> bytes(response.ByteSizeLong());
  response.SerializeToArray(bytes.data(), static_cast<int>(bytes.size()));
  return bytes;
}

void FailRequest(Response& response, ErrorCode code, const std::string& text) {
  response.Clear();
  response.set_error(code);
  response.set_text(text);
}

bool IsSame(const Sink& one, const Sink& other) {
  return one.type() == other.type() && one.name() == other.name() &&
         one.options() == other.options();
}

}  // namespace

bool SettingsFollower::Start(std::string* why) {
  auto reader = m_engine.Watch(kSettingsBucket, WantedKeys(m_machine), why);
  if (!reader) return false;
  {
    const std::lock_guard lock(m_mutex);
    m_reader = std::move(reader);
  }
  const auto serve = [&](bool changes) {
    return m_engine.Serve(
        MachineSubject(m_machine, changes),
        [this, changes](Bytes question) { return Answer(question, changes); }, why);
  };
  return serve(false) && serve(true);
}

void SettingsFollower::Wake() {
  const std::lock_guard lock(m_mutex);
  if (m_reader) m_reader->Wake();
}

void SettingsFollower::Stop() {
  const std::lock_guard lock(m_mutex);
  m_reader.reset();
}

void SettingsFollower::Step(std::chrono::milliseconds deadline) {
  std::vector<EngineMessage> messages;
  std::string why;
  const EngineReader::State state = m_reader->Next(deadline, messages, &why);
  if (state == EngineReader::State::Broken) SayOnce("settings of the cluster: " + why);
  if (state == EngineReader::State::BegunAnew) BeginAnew();
  for (const EngineMessage& message : messages) TakeValue(message);
  LookAgain();
}

// Revisions count from 1 again.
void SettingsFollower::BeginAnew() {
  const std::lock_guard lock(m_mutex);
  for (auto& [key, entry] : m_entries) entry.revision = 0;
}

void SettingsFollower::LookAgain() {
  const auto now = std::chrono::steady_clock::now();
  const bool isTime = now - m_looked >= m_pause;
  if (isTime) m_looked = now;
  std::vector<Entry> told;
  {
    const std::lock_guard lock(m_mutex);
    for (auto& [key, entry] : m_entries) {
      const bool waits = !entry.waiting.empty() || entry.sinkWaits || !entry.held;
      if (waits && isTime) Apply(entry);
      if (!entry.isTold) told.push_back(entry);
      entry.isTold = true;
    }
  }
  for (const Entry& entry : told) TellState(entry);
}

// What was in force stays so, but nobody holds it any more.
void SettingsFollower::Remove(const std::string& key) {
  const std::lock_guard lock(m_mutex);
  const auto entry = m_entries.find(key);
  if (entry == m_entries.end()) return;
  Request request;
  Response response;
  request.mutable_close_app()->set_name(entry->second.wanted.app);
  if (entry->second.held) m_local(request, &response, nullptr);
  m_entries.erase(entry);
}

void SettingsFollower::TakeValue(const EngineMessage& message) {
  if (message.body.empty()) return Remove(message.subject);
  std::string why;
  Wanted wanted;
  if (!ReadWanted(message.body, wanted, &why))
    return SayOnce("settings of the cluster, key " + message.subject + ": " + why);
  const bool wasTaken = WasTaken(wanted.app, message.sequence);
  const std::lock_guard lock(m_mutex);
  if (!Take(message.subject, std::move(wanted), message.sequence, wasTaken, &why))
    SayOnce("settings of the cluster, key " + message.subject + ": " + why);
}

// Asks the engine, so it is not for its own threads.
bool SettingsFollower::WasTaken(const std::string& app, std::uint64_t revision) const {
  const auto value =
      m_engine.Get(kSettingsBucket, WantedStateKey(m_machine, app), kDeadline, nullptr);
  WantedState state;
  return value && !value->value.empty() && ReadWantedState(value->value, state, nullptr) &&
         state.revision == revision && state.waiting == 0 && state.trouble.empty();
}

bool SettingsFollower::Take(const std::string& key, Wanted wanted, std::uint64_t revision,
                            bool wasTaken, std::string* why) {
  if (wanted.machine != m_machine || WantedKey(m_machine, wanted.app) != key)
    return FailWith(why, "its value is of another application or machine");
  const auto known = m_entries.find(key);
  if (known == m_entries.end() && m_entries.size() >= kAppsMax)
    return FailWith(why, "there are too many applications");
  const bool isFirst = known == m_entries.end();
  Entry& entry = m_entries[key];
  // The other way has brought it, or one that is newer.
  if (revision <= entry.revision) return true;
  for (const auto& [trace, settings] : wanted.settings) {
    const auto before = entry.wanted.settings.find(trace);
    const bool isNew = before == entry.wanted.settings.end() || before->second != settings;
    if (isNew && !(isFirst && wasTaken)) entry.waiting.insert(trace);
  }
  const bool sinkIsNew =
      wanted.sink && !(entry.wanted.sink && IsSame(*entry.wanted.sink, *wanted.sink));
  entry.sinkWaits |= sinkIsNew && !(isFirst && wasTaken);
  std::erase_if(entry.waiting, [&](const auto& t) { return !wanted.settings.contains(t); });
  entry.wanted = std::move(wanted);
  entry.revision = revision;
  entry.isTold = false;
  Apply(entry);
  return true;
}

bool SettingsFollower::Ask(const Request& request, Response& response, Entry& entry) const {
  std::string why;
  if (m_local(request, &response, &why)) return true;
  entry.isTold &= entry.trouble == why;
  entry.trouble = why;
  return false;
}

bool SettingsFollower::ReadApp(Entry& entry, Response& response) const {
  Request request;
  if (entry.held) {
    request.mutable_get_app()->set_name(entry.wanted.app);
  } else {
    request.mutable_open_app()->set_name(entry.wanted.app);
  }
  if (!Ask(request, response, entry)) return false;
  entry.held = true;
  return true;
}

void SettingsFollower::Apply(Entry& entry) {
  Response response;
  if (!ReadApp(entry, response)) return;
  Request request;
  Submit& submit = *request.mutable_submit();
  submit.set_app(entry.wanted.app);
  std::set<Wanted::Trace> found;
  for (const auto& component : response.app().components()) {
    for (const auto& category : component.categories()) {
      const Wanted::Trace trace{component.name(), category.name()};
      if (!entry.waiting.contains(trace)) continue;
      found.insert(trace);
      auto& setting = *submit.add_settings();
      setting.set_trace_id(category.trace_id());
      setting.set_settings(entry.wanted.settings.at(trace));
    }
  }
  if (entry.sinkWaits) *submit.mutable_sink() = *entry.wanted.sink;
  if (!found.empty() || entry.sinkWaits) {
    if (!Ask(request, response, entry)) return;
    entry.isTold = false;
  }
  entry.isTold &= entry.trouble.empty();
  entry.trouble.clear();
  entry.sinkWaits = false;
  for (const auto& trace : found) entry.waiting.erase(trace);
}

void SettingsFollower::TellState(const Entry& entry) {
  const std::string key = WantedStateKey(m_machine, entry.wanted.app);
  const WantedState state{entry.revision, static_cast<std::uint32_t>(entry.waiting.size()),
                          entry.trouble};
  if (!entry.trouble.empty())
    SayOnce("settings of " + entry.wanted.app + " from the cluster: " + entry.trouble);
  std::string why;
  const auto before = m_engine.Get(kSettingsBucket, key, kDeadline, &why);
  std::uint64_t revision = before ? before->revision : 0;
  if (!before || m_engine.PutValue(kSettingsBucket, key, WriteWantedState(state), revision,
                                   kDeadline, &why) != Engine::Put::Done)
    SayOnce("the state of the settings cannot be told to the cluster: " + why);
}

std::vector<std::uint8_t> SettingsFollower::Answer(Bytes bytes, bool mayChange) {
  quor::cluster::QuestionMessage question;
  Response response;
  if (!ReadQuestion(bytes, question)) {
    FailRequest(response, ERROR_BAD_REQUEST, "a malformed question");
    return Written(response);
  }
  const Request& request = question.request();
  const bool changes = request.has_keep() || request.has_forget_app() || request.has_submit();
  const bool reads = request.has_list_apps() || request.has_get_app();
  std::string why;
  const std::lock_guard lock(m_mutex);
  if (!(mayChange ? changes : reads)) {
    FailRequest(response, ERROR_BAD_REQUEST, "this is not asked here");
  } else if (request.has_submit()) {
    if (!TakeNow(question, &why)) FailRequest(response, ERROR_BAD_REQUEST, why);
  } else if (!m_local(request, &response, &why) && response.error() == ERROR_NONE) {
    FailRequest(response, ERROR_BAD_REQUEST, m_machine + ": " + why);
  }
  if (response.ByteSizeLong() > kEnvelopeBytes)
    FailRequest(response, ERROR_LIMIT, "the answer is too large for a message of the cluster");
  return Written(response);
}

bool SettingsFollower::TakeNow(const quor::cluster::QuestionMessage& question, std::string* why) {
  const std::string key = WantedKey(m_machine, question.request().submit().app());
  const std::string& value = question.wanted();
  Wanted wanted;
  if (!ReadWanted({reinterpret_cast<const std::uint8_t*>(value.data()), value.size()}, wanted,
                  why) ||
      !Take(key, std::move(wanted), question.revision(), false, why))
    return false;
  const Entry& entry = m_entries.at(key);
  if (!entry.trouble.empty()) return FailWith(why, entry.trouble);
  if (entry.revision > question.revision())
    return FailWith(why, "someone else has changed them again meanwhile");
  if (m_reader) m_reader->Wake();
  return true;
}

void SettingsFollower::SayOnce(const std::string& line) {
  if (m_said.size() < kSaidMax && m_said.insert(line).second) m_say(line);
}
