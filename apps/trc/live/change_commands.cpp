// What trc set and trc sink take from the command line.
#include <algorithm>

#include "commands/commands.h"
#include "live/app_words.h"
#include "live/live.h"
#include "quor/settings/settings_words.h"
#include "quor/settings/written_sink.h"
#include "usage.h"

namespace {

using Words = std::vector<std::string>;

bool IsSettings(const std::string& word) {
  return SettingsOf(word).has_value();
}

// "Net=max", and several of them in one word or in several.
bool IsRules(const std::string& word) {
  return word.find('=') != std::string::npos;
}

class SetCommand final : public Command {
 public:
  explicit SetCommand(CLI::App& program)
      : Command(program, "set", "Switch an application's traces") {
    App().footer(
        "SETTINGS is off, support, developer or max, or any of Info Warn Error Developer\n"
        "Verbose Location Stack, also joined by \"+\". RULES is any number of\n"
        "COMPONENT[/CATEGORY]=SETTINGS or *=SETTINGS, with blanks or \";\" between. The\n"
        "most exact rule for a trace holds. Capitals do not matter.\n"
        "It is in force as long as the application runs; when it does not run, the next\n"
        "instance that starts receives it. With --persist all later instances begin with\n"
        "it, until trc forget takes it back.\n"
        "\n"
        "Examples:\n"
        "  trc set orders --all support\n"
        "  trc set orders Database/Query Info Warn Error Developer\n"
        "  trc set orders1:7447 orders Database off\n"
        "  trc set orders 'Database=max;Database/Query=Info+Stack;*=off'");
    App()
        .add_option("WORDS", m_words,
                    "The application's traces of a component or a category, or all")
        ->required()
        ->option_text("[MACHINE] APP COMPONENT[/CATEGORY] SETTINGS...|RULES");
    App().add_flag("-a,--all", m_all, "All traces of the application, instead of a COMPONENT");
    App().add_flag("-p,--persist", m_set.persist,
                   "Keep it for all later instances, from their first trace on");
  }
  void Complete() override {
    if (!m_all && m_words.size() > 1 && !IsSettings(m_words.back()) && IsRules(m_words.back()))
      TakeRules();
    else
      TakeSettings();
    TakeMachineAndApp(m_words, m_set.machine, m_set.app);
    if (m_set.persist) MakeRules();
  }
  int Run() const override { return RunSet(m_set); }

 private:
  void TakeRules();
  void TakeSettings();
  void MakeRules();

  SetOptions m_set;
  Words m_words;
  std::string m_settings;
  bool m_all = false;
};

// What is kept is kept as rules.
void SetCommand::MakeRules() {
  if (!m_set.rules.IsEmpty()) return;
  std::vector<std::string> faults;
  m_set.rules = SettingsText::Read((m_all ? "*" : m_set.target) + "=" + m_settings, &faults);
  if (!faults.empty() || m_set.rules.Rules().size() != 1)
    throw CLI::ValidationError("set", "this name cannot be kept, because it contains a \";\"");
}

void SetCommand::TakeRules() {
  std::string text;
  std::size_t head = m_words.size();
  while (head > 1 && IsRules(m_words[head - 1])) --head;
  for (std::size_t i = head; i < m_words.size(); ++i) text += m_words[i] + ";";
  std::vector<std::string> faults;
  m_set.rules = SettingsText::Read(text, &faults);
  if (!faults.empty()) throw CLI::ValidationError("set", faults.front());
  if (m_set.rules.IsEmpty()) throw CLI::ValidationError("set", "names no traces");
  m_words.resize(head);
  if (head > 2)
    throw CLI::ValidationError("set", "takes [MACHINE] APP, then COMPONENT[/CATEGORY]=SETTINGS");
}

// The settings come last. Before them are [MACHINE] APP and, without --all, the target.
void SetCommand::TakeSettings() {
  const std::size_t least = m_all ? 1 : 2;
  std::size_t head = m_words.size();
  while (head > least && IsSettings(m_words[head - 1])) --head;
  const bool machine = head == least + 1;
  if (head == m_words.size() || head > least + 1) {
    for (std::size_t i = head; i > least; --i)
      if (const std::string near = NearSetting(m_words[i - 1]); !near.empty())
        throw CLI::ValidationError("set", near);
    throw CLI::ValidationError("set",
                               "takes [MACHINE] APP, then COMPONENT[/CATEGORY] or --all, then "
                               "the settings");
  }
  // If the first setting is mistyped, the application looks like a machine.
  if (machine) m_set.doubt = NearSetting(m_words[head - 1]);
  for (std::size_t i = head; i < m_words.size(); ++i)
    m_settings += (m_settings.empty() ? "" : "+") + m_words[i];
  m_set.settings = SettingsOf(m_settings).value_or(0);
  m_words.resize(head);
  if (m_all) return;
  m_set.target = m_words.back();
  m_words.pop_back();
}

class SinkCommand final : public Command {
 public:
  explicit SinkCommand(CLI::App& program)
      : Command(program, "sink", "Choose where an application's traces go") {
    App().footer(
        "SINK is the same as one word: socket:NAME, or file:PATH and options behind \"?\".\n"
        "\n"
        "Examples:\n"
        "  trc sink orders --server localhost\n"
        "  trc sink orders --file orders.trc --flush --max-size 100 --max-files 5\n"
        "  trc sink orders 'file:orders.trc?flush=1&maxsize=100&maxfiles=5'");
    App()
        .add_option("WORDS", m_words, kAppHelp)
        ->required()
        ->expected(1, 3)
        ->option_text("[MACHINE] APP [SINK]");
    CLI::Option* const server = App().add_option(
        "-s,--server", m_sink.server, "The machine whose trace service takes the traces");
    server->type_name("NAME");
    CLI::Option* const file =
        App().add_option("-o,--file", m_sink.file, "The application writes them to this file");
    file->type_name("PATH")->excludes(server);
    App().add_flag("--flush", m_flush, "Hand over each trace before the call returns")->needs(file);
    AddNumber("--max-files", m_maxFiles, "Keep so many full files [default: all]");
    AddNumber("--max-size", m_maxMegabytes,
              "A full file is numbered NAME.1.trc and a new one begun", "MB");
  }
  void Complete() override {
    const bool options = !m_sink.server.empty() || !m_sink.file.empty();
    if (options && m_words.size() < 3)
      TakeOptions();
    else if (!options && m_words.size() > 1)
      TakeSink();
    else
      throw CLI::ValidationError("sink", "takes --server NAME, --file PATH or a SINK");
    TakeMachineAndApp(m_words, m_sink.machine, m_sink.app);
  }
  int Run() const override { return RunSink(m_sink); }

 private:
  void TakeOptions();
  void TakeSink();

  SinkChange m_sink;
  Words m_words;
  bool m_flush = false;
  std::uint64_t m_maxFiles = 0, m_maxMegabytes = 0;
};

void SinkCommand::TakeOptions() {
  if (m_sink.server.empty() == m_sink.file.empty())
    throw CLI::ValidationError("sink", "takes --server NAME or --file PATH");
  if (!m_sink.file.empty())
    m_sink.options = "flush=" + std::to_string(m_flush ? 1 : 0) +
                     ";maxfiles=" + std::to_string(m_maxFiles) +
                     ";maxsize=" + std::to_string(m_maxMegabytes) + ";";
  else if (m_maxFiles != 0 || m_maxMegabytes != 0)
    throw CLI::ValidationError("sink", "--max-files and --max-size go with --file");
}

void SinkCommand::TakeSink() {
  std::string why;
  const std::optional<WrittenSink> sink = WrittenSink::Read(m_words.back(), &why);
  if (!sink) throw CLI::ValidationError("sink", why);
  if (m_flush || m_maxFiles != 0 || m_maxMegabytes != 0)
    throw CLI::ValidationError("sink", "the options of a SINK stand in it");
  (sink->file ? m_sink.file : m_sink.server) = sink->name;
  m_sink.options = sink->options;
  m_words.pop_back();
}

class ForgetCommand final : public Command {
 public:
  explicit ForgetCommand(CLI::App& program)
      : Command(program, "forget", "Take back what is kept for an application") {
    App().footer(
        "What trc set --persist keeps, and what was set while the application did not\n"
        "run. What is in force in running instances stays so until they end.\n"
        "Exit status 1: nothing was kept.\n"
        "\n"
        "Examples:\n"
        "  trc forget orders");
    App()
        .add_option("WORDS", m_words, kAppHelp)
        ->required()
        ->expected(1, 2)
        ->option_text("[MACHINE] APP");
  }
  void Complete() override { TakeMachineAndApp(m_words, m_forget.machine, m_forget.app); }
  int Run() const override { return RunForget(m_forget); }

 private:
  ForgetOptions m_forget;
  Words m_words;
};

}  // namespace

std::unique_ptr<Command> MakeSet(CLI::App& program) {
  return std::make_unique<SetCommand>(program);
}

std::unique_ptr<Command> MakeSink(CLI::App& program) {
  return std::make_unique<SinkCommand>(program);
}

std::unique_ptr<Command> MakeForget(CLI::App& program) {
  return std::make_unique<ForgetCommand>(program);
}
