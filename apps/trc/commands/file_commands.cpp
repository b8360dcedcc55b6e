// What the commands for files take from the command line.
#include "commands/columns_option.h"
#include "commands/commands.h"
#include "commands/convert.h"
#include "commands/export.h"
#include "commands/gen.h"
#include "commands/info.h"
#include "commands/save.h"
#include "commands/shared_options.h"
#include "usage.h"

namespace {

class GenCommand final : public Command {
 public:
  explicit GenCommand(CLI::App& program) : Command(program, "gen", "Make a sample trace file") {
    AddNumber("-n,--records", m_gen.records, "How many traces to write")->required();
    AddNumber("-s,--seed", m_gen.seed, "Another number gives other traces [default: 1]");
    App().add_flag("--old", m_gen.old,
                   "The older format, which has no stacks, as a file to convert");
    App()
        .add_option("OUT", m_gen.out, "The file; an existing one is replaced")
        ->required()
        ->type_name("");
    App().footer(
        "Examples:\n"
        "  trc gen --records 5000000 big.trc\n"
        "  trc gen -n 1000 -s 42 small.trc");
  }
  int Run() const override { return RunGen(m_gen); }

 private:
  GenOptions m_gen;
};

class InfoCommand final : public Command {
 public:
  explicit InfoCommand(CLI::App& program)
      : Command(program, "info", "Print a summary of trace files") {
    App().add_option("FILE", m_info.files, "Trace files")->required()->type_name("");
    App().add_flag("-j,--json", m_info.json, "One JSON object per file, each on its line");
    App().footer(
        "Examples:\n"
        "  trc info web.trc db.trc\n"
        "  trc info --json web.trc | jq .names");
  }
  int Run() const override { return RunInfo(m_info); }

 private:
  InfoOptions m_info;
};

class SaveCommand final : public Command {
 public:
  explicit SaveCommand(CLI::App& program)
      : Command(program, "save", "Write the traces of a file to a new one") {
    AddFilesAndOut(m_save.in, "IN... OUT",
                   "Trace files, also packed ones, - is standard input; the last is the new file, "
                   "an existing one is replaced");
    m_shared.Add({.columns = kWholeTraces, .follow = kNotFollowed});
    App().add_flag("--replace-notes", m_save.replaceNotes,
                   "Replace the marks and notes that are beside OUT");
    App().footer(
        "All traces are written, or those that the options choose, with just the names\n"
        "that they need and without what was skipped in the old file. The marks and notes\n"
        "of a single file go along, beside the new file.\n"
        "\n"
        "Examples:\n"
        "  trc save web.trc clean.trc\n"
        "  trc save web.trc errors.trc --severity error --context 100");
  }
  void Complete() override {
    m_save.out = TakeOut(m_save.in, "OUT");
    m_shared.Complete();
  }
  int Run() const override { return RunSave(m_save); }

 private:
  SaveOptions m_save;
  SharedOptions m_shared{App(), m_save.traces};
};

class ConvertCommand final : public Command {
 public:
  explicit ConvertCommand(CLI::App& program)
      : Command(program, "convert", "Write a file of the older format in the current one") {
    App()
        .add_option("OLD", m_convert.in, "A trace file of the older format; it stays")
        ->required()
        ->type_name("");
    App()
        .add_option("NEW", m_convert.out, "The new file; an existing one is replaced")
        ->required()
        ->type_name("");
    App().footer(
        "The desktop converts an older file in its place when it opens it; this command\n"
        "leaves it untouched.\n"
        "\n"
        "Example:\n"
        "  trc convert old.trc new.trc");
  }
  int Run() const override { return RunConvert(m_convert); }

 private:
  ConvertOptions m_convert;
};

class ExportCommand final : public Command {
 public:
  explicit ExportCommand(CLI::App& program)
      : Command(program, "export", "Write the traces of a file as text") {
    AddFilesAndOut(m_export.files, "FILE... OUT",
                   "Trace files, also packed ones, - is standard input; the last is the text file, "
                   "an existing one is replaced; - is standard output");
    App()
        .add_option("-f,--format", m_exportFormat,
                    "csv: as the desktop's Export writes it (the default); csv-rfc4180, jsonl: "
                    "clean data for other programs; otlp: logs and spans of OpenTelemetry, in JSON "
                    "lines")
        ->check(OneOf({"csv", "csv-rfc4180", "jsonl", "otlp"}))
        ->type_name("FORMAT");
    App().add_flag("--hidden", m_export.hidden, "The hidden columns too");
    m_shared.Add({.follow = kNotFollowed});
    App().footer(
        "Columns stand in the list's default order. In the csv format \"Tic Count\", \"Tic\n"
        "Diff\" and \"Attributes\" have no values, and a quote in a text is written \\\";\n"
        "the clean formats have all values, and all columns unless --columns names some.\n"
        "\n"
        "Examples:\n"
        "  trc export web.trc web.csv --columns \"Sev,Time,Trace\"\n"
        "  trc export web.trc web.csv --format csv-rfc4180 --utc\n"
        "  trc export web.trc spans.jsonl --format otlp\n"
        "  trc export web.trc - --format jsonl --uncheck \"All Severities/Info\" \\\n"
        "    | jq .Trace");
  }
  void Complete() override {
    if (m_exportFormat == "csv-rfc4180") m_export.format = ExportFormat::CsvRfc4180;
    if (m_exportFormat == "jsonl") m_export.format = ExportFormat::Jsonl;
    if (m_exportFormat == "otlp") m_export.format = ExportFormat::Otlp;
    m_export.out = TakeOut(m_export.files, "OUT");
    m_shared.Complete();
    if (m_exportFormat == "otlp" && (m_export.hidden || m_export.traces.columns))
      throw CLI::ValidationError("--format otlp has no columns");
    if (m_export.traces.columns && HasTimeColumn(*m_export.traces.columns))
      throw CLI::ValidationError("--columns",
                                 "Delta, Since and Wall Time go with dump, find and tail");
  }
  int Run() const override { return RunExport(m_export); }

 private:
  ExportOptions m_export;
  SharedOptions m_shared{App(), m_export.traces};
  std::string m_exportFormat = "csv";
};

}  // namespace

std::unique_ptr<Command> MakeGen(CLI::App& program) {
  return std::make_unique<GenCommand>(program);
}

std::unique_ptr<Command> MakeInfo(CLI::App& program) {
  return std::make_unique<InfoCommand>(program);
}

std::unique_ptr<Command> MakeSave(CLI::App& program) {
  return std::make_unique<SaveCommand>(program);
}

std::unique_ptr<Command> MakeConvert(CLI::App& program) {
  return std::make_unique<ConvertCommand>(program);
}

std::unique_ptr<Command> MakeExport(CLI::App& program) {
  return std::make_unique<ExportCommand>(program);
}
