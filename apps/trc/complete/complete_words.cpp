#include "complete/complete_words.h"

#include <algorithm>
#include <optional>
#include <set>
#include <utility>

#include "quor/settings/settings_words.h"
#include "records/process_name.h"
#include "text/visible_text.h"
#include "where/complete/where_complete.h"

namespace {

using Words = std::vector<std::string>;

constexpr std::size_t kAnswersMax = 2000;

// Options with a value behind them, of the commands below. None of them is a flag in another one.
const std::set<std::string_view> kWithValue = {
    "-s",         "--server",    "-o",         "--file",
    "--out",      "--max-files", "--max-size", "-m",
    "-f",         "--format",    "-c",         "-n",
    "--count",    "--for",       "--check",    "--uncheck",
    "-p",         "--preset",    "-a",         "--app",
    "-b",         "--from",      "--columns",  "--machine",
    "--user",     "--tail",      "--context",  "--since",
    "--color",    "--until",     "--severity", "--component",
    "--category", "--pid",       "--tid",      "--where",
    "--by",       "--sort",      "-t",         "--top",
    "--mark",     "--note",      "--profile",  "--colour-rules",
    "--since-row"};

// Options whose value is a name, of the commands that give traces.
constexpr std::pair<std::string_view, ChoiceField> kNameOptions[] = {
    {"--app", ChoiceField::App},
    {"--component", ChoiceField::Component},
    {"--category", ChoiceField::Category},
    {"--machine", ChoiceField::Machine},
    {"-m", ChoiceField::Machine},
    {"--pid", ChoiceField::Pid},
    {"--tid", ChoiceField::Tid}};
const std::set<std::string_view> kOfTraces = {"dump", "find",   "tree", "stats",   "stack",
                                              "save", "export", "tail", "capture", "filter"};

bool TakesValue(std::string_view command, std::string_view option) {
  // In these two they are flags: --all and --persist.
  if (command == "set" && (option == "-a" || option == "-p")) return false;
  return kWithValue.contains(option);
}

class Completion {
 public:
  Completion(const Words& words, CompletionNames& names)
      : m_words(words), m_names(names), m_current(words.back()) {
    for (std::size_t i = 1; i + 1 < words.size(); ++i) {
      const std::string& word = words[i];
      if (TakesValue(words[0], word))
        ++i;
      else if (!word.starts_with("-"))
        m_given.push_back(word);
    }
  }

  Words Answers() {
    Words all = Choices();
    std::set<std::string> fitting;
    for (std::string& one : all)
      if (IsTyped(one) && fitting.size() < kAnswersMax) fitting.insert(std::move(one));
    return {fitting.begin(), fitting.end()};
  }

 private:
  bool IsTyped(const std::string& word) const {
    return word.starts_with(m_current) && word.starts_with("-") == m_current.starts_with("-") &&
           VisibleText(word) == word;
  }
  std::string Before() const {
    return m_words.size() > 1 ? m_words[m_words.size() - 2] : std::string();
  }
  Words Choices();
  bool IsLive() const { return m_words[0] == "tail" || m_words[0] == "capture"; }
  std::string LiveMachine() const { return m_given.empty() ? std::string() : m_given.front(); }
  Words Paths(std::string_view prefix, const std::string& option);
  std::optional<Words> NamesOfOption(const std::string& before);
  std::optional<Words> NamesOfProfile(const std::string& before);
  Words NamesOfField(WhereField field);
  Words Texts(const std::string& text, const std::string& option);
  Words OfSet();
  Words OfRule(std::size_t equals);
  bool IsHere(const std::string& app) {
    const Words here = m_names.Apps("");
    return std::find(here.begin(), here.end(), app) != here.end();
  }
  std::string Machine() const {
    for (std::size_t i = 1; i + 1 < m_words.size(); ++i)
      if (m_words[i - 1] == "-m" || m_words[i - 1] == "--machine") return m_words[i];
    return {};
  }

  const Words& m_words;
  CompletionNames& m_names;
  const std::string& m_current;
  Words m_given;  // behind the command, without options
};

Words Completion::Paths(std::string_view prefix, const std::string& option) {
  Words paths =
      IsLive() ? m_names.LivePaths(LiveMachine(), prefix) : m_names.FilePaths(m_given, prefix);
  for (std::string& path : paths) path.insert(0, option);
  return paths;
}

// Behind "--component", and in "--component=Sq".
std::optional<Words> Completion::NamesOfOption(const std::string& before) {
  if (!kOfTraces.contains(m_words[0])) return std::nullopt;
  for (const auto& [option, field] : kNameOptions) {
    const std::string with = std::string(option) + "=";
    const bool joined = m_current.starts_with(with);
    if (before != option && !joined) continue;
    Words names =
        IsLive() ? m_names.LiveNames(LiveMachine(), field) : m_names.FileNames(m_given, field);
    if (joined)
      for (std::string& name : names) name.insert(0, with);
    return names;
  }
  return std::nullopt;
}

std::optional<Words> Completion::NamesOfProfile(const std::string& before) {
  const std::string with = "--profile=";
  const bool joined = m_current.starts_with(with);
  if ((m_words[0] != "dump" && m_words[0] != "find") || (before != "--profile" && !joined))
    return std::nullopt;
  Words names = m_names.Profiles();
  if (joined)
    for (std::string& name : names) name.insert(0, with);
  return names;
}

// "Net=ma": what is behind the last "=" or "+" is a setting.
Words Completion::OfRule(std::size_t equals) {
  const std::size_t plus = m_current.rfind('+');
  const std::size_t last = plus != std::string::npos && plus > equals ? plus : equals;
  Words rules;
  for (const auto& [bits, word] : kSettingsPresets)
    if (last == equals) rules.push_back(m_current.substr(0, last + 1) + std::string(word));
  for (const auto& [bit, word] : kSettingsWords)
    rules.push_back(m_current.substr(0, last + 1) + std::string(word));
  return rules;
}

// [MACHINE] APP COMPONENT[/CATEGORY] SETTINGS..., or rules in place of the last two.
Words Completion::OfSet() {
  if (m_given.empty()) return m_names.Apps("");
  const bool here = IsHere(m_given.front());
  const std::string machine = here ? "" : m_given.front();
  if (!here && m_given.size() == 1) return m_names.Apps(machine);
  const std::size_t behindApp = m_given.size() - (here ? 1 : 2);
  if (const std::size_t equals = m_current.rfind('='); equals != std::string::npos)
    return OfRule(equals);
  const bool all = std::any_of(m_words.begin(), m_words.end() - 1, [](const std::string& word) {
    return word == "-a" || word == "--all";
  });
  if (behindApp == 0 && !all) return m_names.Traces(machine, m_given[here ? 0 : 1]);
  Words words;
  for (const auto& [bits, word] : kSettingsPresets) words.emplace_back(word);
  for (const auto& [bit, word] : kSettingsWords) words.emplace_back(word);
  return words;
}

// The names of the traces, where a field has such.
Words Completion::NamesOfField(WhereField field) {
  constexpr std::pair<WhereField, ChoiceField> kFields[] = {
      {WhereField::Application, ChoiceField::App},
      {WhereField::Component, ChoiceField::Component},
      {WhereField::Category, ChoiceField::Category},
      {WhereField::Machine, ChoiceField::Machine},
      {WhereField::Pid, ChoiceField::Pid},
      {WhereField::Tid, ChoiceField::Tid}};
  for (const auto& [of, choice] : kFields) {
    if (of != field) continue;
    Words names =
        IsLive() ? m_names.LiveNames(LiveMachine(), choice) : m_names.FileNames(m_given, choice);
    if (field == WhereField::Pid)
      for (std::string& name : names) name = std::string(ProcessName::Of(name).process);
    return names;
  }
  return {};
}

// The text with each of the words that could end it.
Words Completion::Texts(const std::string& text, const std::string& option) {
  Words texts;
  const auto names = [this](WhereField field) { return NamesOfField(field); };
  for (const WhereCompletion& one : WhereCompletions(text, text.size(), names))
    texts.push_back(option + text.substr(0, one.replaceFrom) + one.insert);
  return texts;
}

Words Completion::Choices() {
  const std::string before = Before();
  if (kOfTraces.contains(m_words[0])) {
    const std::string with = "--where=";
    if (before == "--where") return Texts(m_current, "");
    if (m_current.starts_with(with)) return Texts(m_current.substr(with.size()), with);
  }
  for (const char* const option : {"--check", "--uncheck"}) {
    if (before == option) return Paths(m_current, "");
    const std::string with = std::string(option) + "=";
    if (m_current.starts_with(with))
      return Paths(std::string_view(m_current).substr(with.size()), with);
  }
  if (auto names = NamesOfOption(before)) return *std::move(names);
  if (auto profiles = NamesOfProfile(before)) return *std::move(profiles);
  const std::string& command = m_words[0];
  if (command == "setup")
    return before == "-a" || before == "--app" ? m_names.Apps(Machine()) : Words();
  if (m_words.size() < 2 || TakesValue(command, before)) return {};
  if (command == "set") return OfSet();
  if (command == "config") {
    const bool save = m_given.size() >= 2 && m_given.front() == "save";
    return save ? m_names.Apps(Machine()) : Words();
  }
  if (command != "show" && command != "forget" && command != "sink") return {};
  if (m_given.empty()) return m_names.Apps("");
  return m_given.size() == 1 && !IsHere(m_given.front()) ? m_names.Apps(m_given.front()) : Words();
}

}  // namespace

std::vector<std::string> CompleteWords(const std::vector<std::string>& words,
                                       CompletionNames& names) {
  if (words.empty()) return {};
  return Completion(words, names).Answers();
}
