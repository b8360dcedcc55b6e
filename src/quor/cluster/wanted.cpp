#include "quor/cluster/wanted.h"

#include "base/fail_with.h"
#include "quor/envelope/envelope.h"

namespace {

// Without the word that subjects of traces begin with.
std::string Tokens(const std::string& machine, const std::string& app) {
  const std::string subject = EnvelopeSubject(machine, app);
  return subject.substr(subject.find('.') + 1);
}

const quor::wire::Category* CategoryOf(const quor::wire::App& known, std::uint32_t traceId,
                                       Wanted::Trace& name) {
  for (const auto& component : known.components()) {
    for (const auto& category : component.categories()) {
      if (category.trace_id() != traceId) continue;
      name = {component.name(), category.name()};
      return &category;
    }
  }
  return nullptr;
}

}  // namespace

bool Wanted::Add(const quor::wire::Submit& submit, const quor::wire::App& known, std::string* why) {
  auto together = settings;
  for (const auto& setting : submit.settings()) {
    Trace name;
    if (!CategoryOf(known, setting.trace_id(), name))
      return FailWith(why, "the application has no such trace: read it again");
    together[name] = setting.settings();
  }
  if (together.size() > kWantedSettingsMax)
    return FailWith(why, "that are more settings than are kept for an application");
  settings = std::move(together);
  if (submit.has_sink()) sink = submit.sink();
  return true;
}

std::vector<std::uint8_t> WriteQuestion(const quor::cluster::QuestionMessage& question) {
  quor::cluster::QuestionMessage formed = question;
  formed.set_format(1);
  std::vector<std::uint8_t> bytes(formed.ByteSizeLong());
  formed.SerializeToArray(bytes.data(), static_cast<int>(bytes.size()));
  return bytes;
}

bool ReadQuestion(Bytes bytes, quor::cluster::QuestionMessage& question) {
  return bytes.size() <= kEnvelopeBytes &&
         question.ParseFromArray(bytes.data(), static_cast<int>(bytes.size())) &&
         question.format() == 1;
}

bool WriteWanted(const Wanted& wanted, std::vector<std::uint8_t>& value, std::string* why) {
  quor::cluster::WantedMessage message;
  message.set_format(1);
  message.set_machine(wanted.machine);
  message.set_app(wanted.app);
  message.set_who(wanted.who);
  for (const auto& [trace, settings] : wanted.settings) {
    auto& setting = *message.add_settings();
    setting.set_component(trace.first);
    setting.set_category(trace.second);
    setting.set_settings(settings);
  }
  if (wanted.sink) *message.mutable_sink() = *wanted.sink;
  const std::size_t size = message.ByteSizeLong();
  if (size > kWantedBytes)
    return FailWith(why, "the settings are larger than the cluster keeps for an application");
  value.resize(size);
  return message.SerializeToArray(value.data(), static_cast<int>(size)) ||
         FailWith(why, "the settings cannot be written");
}

bool ReadWanted(Bytes value, Wanted& wanted, std::string* why) {
  quor::cluster::WantedMessage message;
  if (value.size() > kWantedBytes) return FailWith(why, "the settings are too large");
  if (!message.ParseFromArray(value.data(), static_cast<int>(value.size())))
    return FailWith(why, "the settings are malformed");
  if (message.format() != 1)
    return FailWith(why, "the settings are of a newer form, " + std::to_string(message.format()));
  if (static_cast<std::size_t>(message.settings_size()) > kWantedSettingsMax)
    return FailWith(why, "there are too many settings");
  Wanted read;
  read.machine = message.machine();
  read.app = message.app();
  read.who = message.who();
  for (const auto& setting : message.settings())
    read.settings[{setting.component(), setting.category()}] = setting.settings();
  if (message.has_sink()) read.sink = message.sink();
  wanted = std::move(read);
  return true;
}

std::vector<std::uint8_t> WriteWantedState(const WantedState& state) {
  quor::cluster::StateMessage message;
  message.set_format(1);
  message.set_revision(state.revision);
  message.set_waiting(state.waiting);
  message.set_trouble(state.trouble);
  std::vector<std::uint8_t> value(message.ByteSizeLong());
  message.SerializeToArray(value.data(), static_cast<int>(value.size()));
  return value;
}

bool ReadWantedState(Bytes value, WantedState& state, std::string* why) {
  quor::cluster::StateMessage message;
  if (value.size() > kWantedBytes ||
      !message.ParseFromArray(value.data(), static_cast<int>(value.size())) ||
      message.format() != 1)
    return FailWith(why, "the state of the settings is malformed");
  state = {message.revision(), message.waiting(), message.trouble()};
  return true;
}

std::string WantedKey(const std::string& machine, const std::string& app) {
  return Tokens(machine, app);
}
std::string WantedStateKey(const std::string& machine, const std::string& app) {
  return Tokens(machine, app) + ".state";
}
std::string WantedKeys(const std::string& machine) {
  const std::string tokens = Tokens(machine, "x");
  return tokens.substr(0, tokens.size() - 1) + "*";
}
std::string MachineSubject(const std::string& machine, bool changes) {
  const std::string tokens = Tokens(machine, "x");
  return (changes ? "quor1-set." : "quor1-cfg.") + tokens.substr(0, tokens.size() - 2);
}
