#include "live/live_command_line.h"

#include <sstream>

#include "filter/filter_options.h"
#include "near_word.h"
#include "quor/client/trace_config.h"
#include "terminal/terminal_host.h"
#include "usage.h"

namespace {

constexpr struct {
  const char* word;
  unsigned settings;
} kWords[] = {{"off", 0},
              {"support", 7},
              {"developer", 15},
              {"max", 799},
              {"Info", TRC_SET_INFO},
              {"Warn", TRC_SET_WARN},
              {"Error", TRC_SET_ERROR},
              {"Developer", TRC_SET_DEVELOPER},
              {"Verbose", TRC_SET_VERBOSE},
              {"Location", TRC_SET_LOCATION},
              {"Stack", TRC_SET_STACK}};

constexpr const char* kAppHelp =
    "The application, of this machine or of MACHINE, which is name or name:port";
constexpr std::uint64_t kMostThreads = 256;
constexpr std::uint64_t kMostTextBytes = 65535;

std::vector<std::string> SplitAtCommas(const std::string& list) {
  std::vector<std::string> parts;
  std::istringstream stream(list);
  for (std::string part; std::getline(stream, part, ',');)
    if (!part.empty()) parts.push_back(part);
  return parts;
}

// The setting that a mistyped word may mean; "" when none is near.
std::string NearSetting(const std::string& word) {
  std::vector<std::string> known;
  for (const auto& setting : kWords) known.emplace_back(setting.word);
  const std::string meant = DidYouMean(word, known);
  return meant.empty() ? "" : "\"" + word + "\" is no setting" + meant;
}

// A path that no future name can complete is a mistake; any other waits for its names.
void RefuseHopeless(const FilterPaths& paths) {
  TerminalHost host;
  if (std::string why; paths.HasHopeless(host, &why)) throw CLI::ValidationError(why);
}

}  // namespace

bool IsSettingsWord(const std::string& word) {
  for (const auto& known : kWords)
    if (word == known.word) return true;
  return false;
}

unsigned SettingsOf(const std::vector<std::string>& words) {
  unsigned settings = 0;
  for (const std::string& word : words)
    for (const auto& known : kWords)
      if (word == known.word) settings |= known.settings;
  return settings;
}

LiveParser::LiveParser(CLI::App& app, ReadColumns readColumns, std::vector<Column> defaultColumns)
    : m_app(app),
      m_readColumns(std::move(readColumns)),
      m_defaultColumns(std::move(defaultColumns)) {
  AddTail();
  AddCapture();
  AddConfig();
  AddSet();
  AddSink();
  AddEmit();
}

CLI::App* LiveParser::Add(const char* name, const char* help, const char* footer) {
  CLI::App* const app = m_app.add_subcommand(name, help);
  app->footer(footer);
  return app;
}

void LiveParser::AddNumber(CLI::App* app, const char* names, const char* option,
                           std::uint64_t& number, const char* help, const char* type) {
  app->add_option_function<std::string>(
         names,
         [this, option, &number](const std::string& text) { number = ReadNumber(option, text); },
         help)
      ->type_name(type);
}

void LiveParser::AddLimits(CLI::App* app, LiveLimits& limits) {
  AddNumber(app, "-n,--count", "--count", limits.count, "End after so many traces");
  app->add_option_function<std::string>(
         "--for",
         [this, &limits](const std::string& text) { limits.seconds = ReadNumber("--for", text); },
         "End after so many seconds")
      ->type_name("SECONDS");
  AddFilterOptions(app, limits.filter);
}

void LiveParser::AddTail() {
  m_tailApp = Add("tail", "Print live traces as they come",
                  "Without MACHINE the traces of this machine, whose service is started if none\n"
                  "runs. SIGINT ends it.\n"
                  "\n"
                  "Examples:\n"
                  "  trc tail\n"
                  "  trc tail --columns Time,Component,Trace --count 100\n"
                  "  trc tail orders1:7447 --format jsonl --for 60 | jq .text");
  m_tailApp->add_option("MACHINE", m_tail.machine, "name or name:port")->type_name("");
  m_tailApp
      ->add_option("-f,--format", m_format,
                   "text: aligned columns (the default); jsonl: one JSON object per trace")
      ->check(OneOf({"text", "jsonl"}))
      ->type_name("FORMAT");
  m_columnsOption =
      m_tailApp->add_option("-c,--columns", m_columns, "Columns of the text format, as for dump");
  m_columnsOption->type_name("LIST");
  m_tailApp->add_flag("-u,--utc", m_tail.utc, "Times of the text format in UTC, not local time");
  AddLimits(m_tailApp, m_tail.limits);
}

void LiveParser::AddCapture() {
  m_captureApp = Add("capture", "Write live traces to a file",
                     "SIGINT ends it and keeps what was captured. Prints how many traces were\n"
                     "taken and how many were lost; exit status 1 if any were lost.\n"
                     "\n"
                     "Examples:\n"
                     "  trc capture -o now.trc --for 60\n"
                     "  trc capture orders1 -o orders.trc --max-size 100 --max-files 5");
  m_captureApp->add_option("MACHINE", m_capture.machine, "name or name:port")->type_name("");
  m_captureApp->add_option("-o,--out", m_capture.out, "The file; an existing one is replaced")
      ->required()
      ->type_name("FILE");
  AddLimits(m_captureApp, m_capture.limits);
  AddNumber(m_captureApp, "--max-size", "--max-size", m_capture.maxMegabytes,
            "A full file is numbered NAME.1.trc and a new one begun", "MB");
  AddNumber(m_captureApp, "--max-files", "--max-files", m_capture.maxFiles,
            "Keep so many full files [default: all]");
}

void LiveParser::AddConfig() {
  m_appsApp = Add("apps", "List the traced applications of a machine",
                  "Example:\n"
                  "  trc apps --json");
  m_appsApp->add_option("MACHINE", m_apps.machine, "name or name:port")->type_name("");
  m_appsApp->add_flag("-j,--json", m_apps.json, "One JSON array: application, running, instances");
  m_showApp = Add("show", "Show an application's traces, their settings and its sink",
                  "Examples:\n"
                  "  trc show orders\n"
                  "  trc show orders1:7447 orders --json");
  m_showApp->add_option("WORDS", m_words, kAppHelp)
      ->required()
      ->expected(1, 2)
      ->option_text("[MACHINE] APP");
  m_showApp->add_flag("-j,--json", m_show.json, "One JSON object");
}

void LiveParser::AddSet() {
  m_setApp = Add("set", "Switch an application's traces",
                 "SETTINGS is off, support, developer or max, or any of Info Warn Error Developer\n"
                 "Verbose Location Stack. It is in force as long as the application runs; when it\n"
                 "does not run, the next instance that starts receives it.\n"
                 "\n"
                 "Examples:\n"
                 "  trc set orders --all support\n"
                 "  trc set orders Database/Query Info Warn Error Developer\n"
                 "  trc set orders1:7447 orders Database off");
  m_setApp
      ->add_option("WORDS", m_words,
                   "The application's traces of a component or a category, or all")
      ->required()
      ->option_text("[MACHINE] APP COMPONENT[/CATEGORY]|--all SETTINGS...");
  m_setApp->add_flag("-a,--all", m_all, "All traces of the application");
}

void LiveParser::AddSink() {
  m_sinkApp = Add("sink", "Choose where an application's traces go",
                  "Examples:\n"
                  "  trc sink orders --server localhost\n"
                  "  trc sink orders --file orders.trc --flush --max-size 100 --max-files 5");
  m_sinkApp->add_option("WORDS", m_words, kAppHelp)
      ->required()
      ->expected(1, 2)
      ->option_text("[MACHINE] APP");
  CLI::Option* const server = m_sinkApp->add_option(
      "-s,--server", m_sink.server, "The machine whose trace service takes the traces");
  server->type_name("NAME");
  CLI::Option* const file =
      m_sinkApp->add_option("-o,--file", m_sink.file, "The application writes them to this file");
  file->type_name("PATH")->excludes(server);
  m_sinkApp->add_flag("--flush", m_sink.flush, "Hand over each trace before the call returns")
      ->needs(file);
  AddNumber(m_sinkApp, "--max-files", "--max-files", m_sink.maxFiles,
            "Keep so many full files [default: all]");
  AddNumber(m_sinkApp, "--max-size", "--max-size", m_sink.maxMegabytes,
            "A full file is numbered NAME.1.trc and a new one begun", "MB");
}

void LiveParser::AddEmit() {
  m_emitApp =
      Add("emit", "Act as a traced application, for tests and load",
          "Without --rate and --count 10 traces a second until SIGINT; with --count alone\n"
          "as fast as they go. Prints how many were traced and how many lost; exit status 1\n"
          "if any were lost.\n"
          "\n"
          "Examples:\n"
          "  trc emit --app orders\n"
          "  trc emit --app load --count 1000000 --threads 4 --text-bytes 100\n"
          "  trc emit --app orders --components Net,Db --rate 100 --blocks --seed 7");
  m_emitApp->add_option("-a,--app", m_emit.app, "The application's name")
      ->required()
      ->type_name("NAME");
  m_emitApp->add_option("-c,--components", m_components, "Its components [default: Net,Db]")
      ->type_name("A,B");
  AddNumber(m_emitApp, "-r,--rate", "--rate", m_emit.rate, "Traces a second, all threads together");
  AddNumber(m_emitApp, "-n,--count", "--count", m_emit.count, "End after so many traces");
  AddNumber(m_emitApp, "--text-bytes", "--text-bytes", m_emit.textBytes,
            "Bytes of a text [default: 40]");
  AddNumber(m_emitApp, "-t,--threads", "--threads", m_emit.threads,
            "Threads that trace [default: 1]");
  m_emitApp->add_flag("-b,--blocks", m_emit.blocks,
                      "Nested \"Begin: ...\" and \"End: ...\" traces");
  AddNumber(m_emitApp, "-s,--seed", "--seed", m_emit.seed,
            "Another number, other texts [default: 1]");
}

std::optional<LiveCommand> LiveParser::Chosen() {
  if (m_tailApp->parsed()) return ChosenTail();
  if (m_captureApp->parsed()) {
    RefuseHopeless(m_capture.limits.filter);
    return LiveCommand([options = m_capture] { return RunCapture(options); });
  }
  if (m_appsApp->parsed()) return LiveCommand([options = m_apps] { return RunApps(options); });
  if (m_showApp->parsed()) {
    TakeMachineAndApp(m_words, m_show.machine, m_show.app);
    return LiveCommand([options = m_show] { return RunShow(options); });
  }
  if (m_setApp->parsed()) return ChosenSet();
  if (m_sinkApp->parsed()) return ChosenSink();
  if (m_emitApp->parsed()) return ChosenEmit();
  return std::nullopt;
}

LiveCommand LiveParser::ChosenTail() {
  RefuseHopeless(m_tail.limits.filter);
  const bool text = m_format == "text";
  if (!text && m_columnsOption->count() != 0)
    throw CLI::ValidationError("--columns", "goes with the text format only");
  m_tail.format = text ? DumpFormat::Text : DumpFormat::Jsonl;
  m_tail.columns = m_columnsOption->count() != 0 ? m_readColumns(m_columns) : m_defaultColumns;
  return [options = m_tail] { return RunTail(options); };
}

void LiveParser::TakeMachineAndApp(std::vector<std::string> words, std::string& machine,
                                   std::string& app) const {
  app = words.back();
  if (words.size() == 2) machine = words.front();
}

// The settings come last. Before them are [MACHINE] APP and, without --all, the target.
LiveCommand LiveParser::ChosenSet() {
  const std::size_t least = m_all ? 1 : 2;
  std::size_t head = m_words.size();
  while (head > least && IsSettingsWord(m_words[head - 1])) --head;
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
  m_set.settings = SettingsOf({m_words.begin() + static_cast<std::ptrdiff_t>(head), m_words.end()});
  m_words.resize(head);
  if (!m_all) {
    m_set.target = m_words.back();
    m_words.pop_back();
  }
  TakeMachineAndApp(m_words, m_set.machine, m_set.app);
  return [options = m_set] { return RunSet(options); };
}

LiveCommand LiveParser::ChosenSink() {
  if (m_sink.server.empty() == m_sink.file.empty())
    throw CLI::ValidationError("sink", "takes --server NAME or --file PATH");
  if (m_sink.file.empty() && (m_sink.maxFiles != 0 || m_sink.maxMegabytes != 0))
    throw CLI::ValidationError("sink", "--max-files and --max-size go with --file");
  TakeMachineAndApp(m_words, m_sink.machine, m_sink.app);
  return [command = m_sink] { return RunSink(command); };
}

LiveCommand LiveParser::ChosenEmit() {
  RefuseOutside("--threads", m_emit.threads, 1, kMostThreads);
  RefuseOutside("--text-bytes", m_emit.textBytes, 0, kMostTextBytes);
  if (!m_components.empty()) m_emit.components = SplitAtCommas(m_components);
  if (m_emit.components.empty()) throw CLI::ValidationError("--components", "names no component");
  if (m_emit.rate == 0 && m_emit.count == 0) m_emit.rate = 10;
  return [options = m_emit] { return RunEmit(options); };
}
