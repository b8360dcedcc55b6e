// What trc import takes from the command line.
#include "base/near/near_word.h"
#include "commands/commands.h"
#include "commands/import.h"
#include "usage.h"

namespace {

class ImportCommand final : public Command {
 public:
  explicit ImportCommand(CLI::App& program)
      : Command(program, "import", "Write another log, or other events, as traces") {
    App()
        .add_option("FILES", m_files,
                    "Logs, - is standard input; then the trace file, an existing one is replaced")
        ->required()
        ->option_text("IN... OUT");
    AddForms();
    AddRules();
    App().footer(
        "FIELD, and the name of a group (?<FIELD>...): time level logger text component\n"
        "category location file line pid tid application machine stack attributes.\n"
        "A line that is not understood becomes a trace with the whole line as its text.\n"
        "Without a form, inputs are --otlp or --chrome by their first bytes.\n"
        "Exit status: 0 all was understood, 3 something was not, or was cut.\n"
        "\n"
        "Examples:\n"
        "  journalctl --all -o json -n 1000 | trc import --journal - journal.trc\n"
        "  trc import --syslog syslog.1 syslog system.trc\n"
        "  trc import --jsonl --map svc=application app.jsonl app.trc\n"
        "  trc import --regex '^(?<time>\\S+ \\S+) (?<level>\\w+) (?<text>.*)' \\\n"
        "    app.log app.trc\n"
        "  trc import --chrome trace.json trace.trc");
  }
  void Complete() override {
    TakeForm();
    if (m_files.size() < 2) throw CLI::RequiredError("IN... OUT");
    m_import.out = m_files.back();
    m_import.in.assign(m_files.begin(), m_files.end() - 1);
    if (m_import.out == "-") throw CLI::ValidationError("OUT", "is a file, not standard output");
    TakeKeys();
    TakeWords();
  }
  int Run() const override { return RunImport(m_import); }

 private:
  void AddForms();
  void AddRules();
  void AddText(const char* name, std::string& text, const char* type, const char* help) {
    App().add_option(name, text, help)->type_name(type);
  }
  void AddText(const char* name, std::optional<std::string>& text, const char* type,
               const char* help) {
    App().add_option(name, text, help)->type_name(type);
  }
  void TakeForm();
  void TakeKeys();
  void TakeWords();
  bool IsLines() const {
    return m_import.form == ImportForm::Syslog || m_import.form == ImportForm::Regex;
  }

  ImportOptions m_import;
  bool m_journal = false, m_syslog = false, m_jsonl = false, m_otlp = false, m_chrome = false;
  std::vector<std::string> m_files, m_keys;
  std::string m_levels, m_join;
  CLI::Option* m_regexOption = nullptr;
};

void ImportCommand::AddForms() {
  App().add_flag("--journal", m_journal, "Lines of journalctl -o json, or entries of -o export");
  App().add_flag("--syslog", m_syslog, "Lines of syslog, as sent and as written to files");
  App().add_flag("--jsonl", m_jsonl,
                 "One JSON object per line: of trc dump, or of a logging library");
  m_regexOption = App().add_option("--regex", m_import.expression,
                                   "Lines that match this Perl expression with named groups");
  m_regexOption->type_name("RE");
  App().add_flag("--otlp", m_otlp, "Logs and spans of OpenTelemetry: lines of JSON, or protobuf");
  App().add_flag("--chrome", m_chrome, "Events of Chrome's trace format, as JSON");
  App()
      .add_option("--map", m_keys, "With --jsonl: the field of a further key; may be repeated")
      ->type_name("KEY=FIELD")
      ->allow_extra_args(false);
}

void ImportCommand::AddRules() {
  AddText("--component", m_import.rules.component, "NAME",
          "The component of all traces; a logger is the category then");
  AddText("--application", m_import.rules.application, "NAME",
          "The application of traces that name none");
  AddText("--machine", m_import.rules.machine, "NAME", "The machine of traces that name none");
  App()
      .add_option("--levels", m_levels,
                  "What numbers of levels mean: syslog (0 to 7), pino (10 to 60), python (10 to "
                  "50) or otel (1 to 24) [default: syslog below 8, pino from 10 on]")
      ->check(OneOf({"syslog", "pino", "python", "otel"}))
      ->type_name("WHAT");
  AddText("--time-format", m_import.timeFormat, "FORMAT",
          "The form of times, as for strptime, with %f for a fraction [default: the usual ones]");
  AddText("--zone", m_import.zone, "ZONE",
          "Of times without one: UTC, +02:00, Europe/Berlin or local (the default)");
  App()
      .add_option("--join", m_join,
                  "With --syslog and --regex: which lines that are not understood belong to the "
                  "text before: indented (the default), all or none")
      ->check(OneOf({"indented", "all", "none"}))
      ->type_name("WHICH");
}

void ImportCommand::TakeForm() {
  const bool regex = m_regexOption->count() != 0;
  if (m_journal + m_syslog + m_jsonl + regex + m_otlp + m_chrome > 1)
    throw CLI::ValidationError(
        "import", "takes one of --journal, --syslog, --jsonl, --regex, --otlp and --chrome");
  if (m_journal) m_import.form = ImportForm::Journal;
  if (m_syslog) m_import.form = ImportForm::Syslog;
  if (m_jsonl) m_import.form = ImportForm::Jsonl;
  if (regex) m_import.form = ImportForm::Regex;
  if (m_otlp) m_import.form = ImportForm::Otlp;
  if (m_chrome) m_import.form = ImportForm::Chrome;
  if (!m_jsonl && !m_keys.empty()) throw CLI::ValidationError("--map", "goes with --jsonl only");
  if (!HasLines(m_import.form) && !m_levels.empty())
    throw CLI::ValidationError("--levels", "goes with the lines of a log only");
  if (!HasLines(m_import.form) && !m_import.timeFormat.empty())
    throw CLI::ValidationError("--time-format", "goes with the lines of a log only");
  if (!IsLines() && !m_join.empty())
    throw CLI::ValidationError("--join", "goes with --syslog and --regex only");
}

void ImportCommand::TakeKeys() {
  for (const std::string& mapped : m_keys) {
    const std::size_t sign = mapped.rfind('=');
    const std::string word = sign == std::string::npos ? mapped : mapped.substr(sign + 1);
    const auto field = FieldNamed(word);
    if (sign == std::string::npos || sign == 0)
      throw CLI::ValidationError("--map", "\"" + mapped + "\" is not KEY=FIELD");
    if (!field)
      throw CLI::ValidationError("--map",
                                 "\"" + word + "\" is no field" + DidYouMean(word, FieldWords()));
    m_import.keys.emplace_back(mapped.substr(0, sign), *field);
  }
}

void ImportCommand::TakeWords() {
  if (m_levels == "syslog") m_import.rules.levels = LevelNumbers::Syslog;
  if (m_levels == "pino") m_import.rules.levels = LevelNumbers::Pino;
  if (m_levels == "python") m_import.rules.levels = LevelNumbers::Python;
  if (m_levels == "otel") m_import.rules.levels = LevelNumbers::Otel;
  if (IsLines()) m_import.join = JoinLines::Indented;
  if (m_join == "all") m_import.join = JoinLines::All;
  if (m_join == "none") m_import.join = JoinLines::None;
}

}  // namespace

std::unique_ptr<Command> MakeImport(CLI::App& program) {
  return std::make_unique<ImportCommand>(program);
}
