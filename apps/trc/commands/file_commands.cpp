// What the commands for files take from the command line.
#include <algorithm>

#include "commands/columns_option.h"
#include "commands/commands.h"
#include "commands/convert.h"
#include "commands/dump.h"
#include "commands/export.h"
#include "commands/find.h"
#include "commands/gen.h"
#include "commands/info.h"
#include "commands/save.h"
#include "commands/tree.h"
#include "filter/filter_options.h"
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

class DumpCommand final : public Command {
 public:
  explicit DumpCommand(CLI::App& program) : Command(program, "dump", "Print the traces of a file") {
    App().add_option("FILE", m_dump.file, "A trace file")->required()->type_name("");
    AddLineFormat(m_format);
    m_columnsOption = App().add_option(
        "-c,--columns", m_columns, "Columns of the text format, by their headers: " + AllHeaders());
    m_columnsOption->type_name("LIST");
    App().add_flag("-u,--utc", m_dump.utc,
                   "Times of the text format in UTC, not local time; jsonl has them as "
                   "stored, which is UTC");
    AddNumber("-b,--from", m_dump.from, "Index in the file of the first trace [default: 0]");
    AddNumber("-n,--count", m_dump.count, "At most so many traces");
    AddFilterOptions(&App(), m_dump.filter);
    App().footer(
        "Examples:\n"
        "  trc dump web.trc --utc --columns \"Time,PID,Trace\"\n"
        "  trc dump web.trc --from 1000 --count 50\n"
        "  trc dump web.trc --uncheck \"All Severities/Info\" --count 20\n"
        "  trc dump web.trc --format jsonl > web.jsonl");
  }
  void Complete() override {
    const bool text = m_format == "text";
    if (!text && m_columnsOption->count() != 0) {
      throw CLI::ValidationError("--columns", "goes with the text format only");
    }
    m_dump.format = text ? DumpFormat::Text : DumpFormat::Jsonl;
    m_dump.columns = m_columnsOption->count() != 0 ? ReadColumns(m_columns) : DefaultColumns();
  }
  int Run() const override { return RunDump(m_dump); }

 private:
  DumpOptions m_dump;
  CLI::Option* m_columnsOption = nullptr;
  std::string m_format = "text", m_columns;
};

class SaveCommand final : public Command {
 public:
  explicit SaveCommand(CLI::App& program)
      : Command(program, "save", "Write the traces of a file to a new one") {
    App().add_option("IN", m_save.in, "A trace file")->required()->type_name("");
    App()
        .add_option("OUT", m_save.out, "The new file; an existing one is replaced")
        ->required()
        ->type_name("");
    AddFilterOptions(&App(), m_save.filter);
    App().footer(
        "All traces are written, or those that pass the filter, with just the names that\n"
        "they need and without what was skipped in the old file.\n"
        "\n"
        "Examples:\n"
        "  trc save web.trc clean.trc\n"
        "  trc save web.trc errors.trc --uncheck \"All Severities\" \\\n"
        "    --check \"All Severities/Error\"");
  }
  int Run() const override { return RunSave(m_save); }

 private:
  SaveOptions m_save;
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
    App().add_option("FILE", m_export.file, "A trace file")->required()->type_name("");
    App()
        .add_option("OUT", m_export.out,
                    "The text file, an existing one is replaced; - is standard output")
        ->required()
        ->type_name("");
    App()
        .add_option("-f,--format", m_exportFormat,
                    "csv: as the desktop's Export writes it (the default); csv-rfc4180, jsonl: "
                    "clean data for other programs")
        ->check(OneOf({"csv", "csv-rfc4180", "jsonl"}))
        ->type_name("FORMAT");
    m_exportColumnsOption = App().add_option(
        "-c,--columns", m_columns, "The shown columns, by their headers: " + AllHeaders());
    m_exportColumnsOption->type_name("LIST");
    App().add_flag("--hidden", m_export.hidden, "The hidden columns too");
    App().add_flag("-u,--utc", m_export.utc, "Times in UTC, not local time");
    AddFilterOptions(&App(), m_export.filter);
    App().footer(
        "Columns stand in the list's default order. In the csv format \"Tic Count\", \"Tic\n"
        "Diff\" and \"Attributes\" have no values, and a quote in a text is written \\\";\n"
        "the clean formats have all values, and all columns unless --columns names some.\n"
        "\n"
        "Examples:\n"
        "  trc export web.trc web.csv --columns \"Sev,Time,Trace\"\n"
        "  trc export web.trc web.csv --format csv-rfc4180 --utc\n"
        "  trc export web.trc - --format jsonl --uncheck \"All Severities/Info\" \\\n"
        "    | jq .Trace");
  }
  void Complete() override {
    if (m_exportFormat == "csv-rfc4180") m_export.format = ExportFormat::CsvRfc4180;
    if (m_exportFormat == "jsonl") m_export.format = ExportFormat::Jsonl;
    if (m_exportColumnsOption->count() != 0) m_export.columns = ReadColumns(m_columns);
  }
  int Run() const override { return RunExport(m_export); }

 private:
  ExportOptions m_export;
  CLI::Option* m_exportColumnsOption = nullptr;
  std::string m_exportFormat = "csv", m_columns;
};

class FindCommand final : public Command {
 public:
  explicit FindCommand(CLI::App& program)
      : Command(program, "find", "Print the traces of a file whose text matches") {
    App().add_option("PATTERN", m_find.pattern, "The text to look for")->required()->type_name("");
    App().add_option("FILE", m_find.output.file, "A trace file")->required()->type_name("");
    App().add_flag("-e,--regex", m_find.expression, "PATTERN is a regular expression");
    App().add_flag("-i,--ignore-case", m_find.ignoreCase, "Capital and small letters are the same");
    App().add_flag("-w,--word", m_find.wordSearch, "Whole words only");
    App().add_flag("--count", m_find.countOnly, "Print only how many traces match");
    AddLineFormat(m_format);
    AddFilterOptions(&App(), m_find.output.filter);
    App().footer(
        "An expression has . [set] * + ? ^ $ and, with backslashes, \\( \\) \\1 and \\{2,3\\}.\n"
        "Exit status: 0 some match, 1 none does, 2 a wrong pattern or file.\n"
        "\n"
        "Examples:\n"
        "  trc find 'slow query' web.trc\n"
        "  trc find -e 'after [0-9]\\{4,\\} ms' web.trc --format jsonl | jq .text\n"
        "  trc find -iw DEADLOCK web.trc --count\n"
        "  trc find -- -1 web.trc        # a pattern that begins with -");
  }
  void Complete() override {
    m_find.output.format = m_format == "text" ? DumpFormat::Text : DumpFormat::Jsonl;
    m_find.output.columns = DefaultColumns();
  }
  int Run() const override { return RunFind(m_find); }

 private:
  FindOptions m_find;
  std::string m_format = "text";
};

class TreeCommand final : public Command {
 public:
  explicit TreeCommand(CLI::App& program)
      : Command(program, "tree", "Print the traces of a file as a procedure tree") {
    App().add_option("FILE", m_tree.file, "A trace file")->required()->type_name("");
    App()
        .add_option("OUT", m_tree.out, "With --export: the text file; an existing one is replaced")
        ->type_name("");
    App().add_flag(
        "-x,--export", m_export,
        "Write the first machine to OUT, as the desktop's Export writes it with all open");
    App()
        .add_option("-m,--machine", m_tree.machine, "Only the machine of this name")
        ->type_name("NAME");
    App()
        .add_option_function<std::string>(
            "-d,--depth",
            [this](const std::string& text) {
              m_tree.depth = static_cast<int>(
                  std::min<std::uint64_t>(ReadNumber("--depth", text), kAllLevels));
            },
            "Open so many levels only; 0 leaves the machines closed [default: all]")
        ->type_name("N");
    AddFilterOptions(&App(), m_tree.filter);
    App().footer(
        "A line for each machine, application, process, thread, block (from \"Begin: \" to\n"
        "\"End: \") and trace, with the time that passed in processes, threads and blocks.\n"
        "A closed item with items below it begins with \"+- \".\n"
        "\n"
        "Examples:\n"
        "  trc tree web.trc --depth 4\n"
        "  trc tree web.trc --machine web-01 --uncheck \"All Severities/Info\"\n"
        "  trc tree --export web.trc tree.txt");
  }
  void Complete() override {
    if (m_export && m_tree.out.empty())
      throw CLI::ValidationError("--export", "needs OUT, the file to write");
    if (!m_export && !m_tree.out.empty())
      throw CLI::ValidationError("OUT", "goes with --export only");
    if (m_export && (!m_tree.machine.empty() || m_tree.depth != kAllLevels))
      throw CLI::ValidationError("--export", "writes the first machine whole");
  }
  int Run() const override { return RunTree(m_tree); }

 private:
  TreeOptions m_tree;
  bool m_export = false;
};

}  // namespace

std::unique_ptr<Command> MakeGen(CLI::App& program) {
  return std::make_unique<GenCommand>(program);
}

std::unique_ptr<Command> MakeInfo(CLI::App& program) {
  return std::make_unique<InfoCommand>(program);
}

std::unique_ptr<Command> MakeDump(CLI::App& program) {
  return std::make_unique<DumpCommand>(program);
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

std::unique_ptr<Command> MakeFind(CLI::App& program) {
  return std::make_unique<FindCommand>(program);
}

std::unique_ptr<Command> MakeTree(CLI::App& program) {
  return std::make_unique<TreeCommand>(program);
}
