#include "command_line.h"

#include <CLI/CLI.hpp>
#include <sstream>

#include "commands/tree_command_line.h"
#include "filter/filter_options.h"
#include "listview/columns/columns.h"
#include "live/live_command_line.h"
#include "near_word.h"
#include "terminal/exit_status.h"
#include "usage.h"

namespace {

CLI::Option* AddNumber(CLI::App* app, const char* names, const char* option, std::uint64_t& number,
                       const char* help) {
  return app
      ->add_option_function<std::string>(
          names, [option, &number](const std::string& text) { number = ReadNumber(option, text); },
          help)
      ->type_name("N");
}

std::vector<std::string> HeaderList() {
  std::vector<std::string> headers;
  headers.reserve(std::size(kColumns));
  for (const ColumnInfo& column : kColumns) headers.emplace_back(column.header);
  return headers;
}

std::string AllHeaders() {
  std::string list;
  for (const std::string& header : HeaderList())
    list.append(list.empty() ? "" : ", ").append(header);
  return list;
}

std::string Trimmed(std::string_view text) {
  while (!text.empty() && text.front() == ' ') text.remove_prefix(1);
  while (!text.empty() && text.back() == ' ') text.remove_suffix(1);
  return std::string(text);
}

std::vector<Column> ReadColumns(const std::string& list) {
  std::vector<Column> columns;
  std::istringstream parts(list + ",");
  for (std::string part; std::getline(parts, part, ',');) {
    const std::string header = Trimmed(part);
    const std::optional<Column> column = ColumnByHeader(header);
    if (!column) {
      throw CLI::ValidationError("--columns", "there is no column \"" + header + "\"" +
                                                  DidYouMean(header, HeaderList()) +
                                                  "; the columns are " + AllHeaders());
    }
    columns.push_back(*column);
  }
  return columns;
}

// The columns that a list shows at first, and the time.
std::vector<Column> DefaultColumns() {
  std::vector<Column> columns;
  for (const std::int32_t index : kDefaultColumnOrder) {
    const auto column = static_cast<Column>(index);
    if (column == Column::Time || kDefaultActiveColumns[static_cast<std::size_t>(index)] == 1) {
      columns.push_back(column);
    }
  }
  return columns;
}

class Parser {
 public:
  Parser() {
    UsePlainHelp(m_app);
    m_app.require_subcommand(0, 1);  // a missing command gets a better message than the library's
    m_app.set_version_flag("-V,--version", "trc " TESSERA_VERSION, "Print the version and exit");
    m_app.footer(
        "Examples:\n"
        "  trc gen --records 100000 sample.trc\n"
        "  trc info sample.trc\n"
        "  trc dump sample.trc --columns Time,Component,Trace --count 20\n"
        "  trc dump sample.trc --format jsonl | jq .text\n"
        "  trc find 'slow query' sample.trc\n"
        "  trc tree sample.trc --depth 4\n"
        "  trc tail\n"
        "  trc set orders Database/Query support\n"
        "\n"
        "'trc COMMAND --help' describes a command. Exit status: 0 success, 1 the\n"
        "answer is no or traces were lost, 2 wrong use or bad input, 3 the file is\n"
        "damaged, 130 interrupted.");
    AddGen();
    AddInfo();
    AddDump();
    AddSave();
    AddConvert();
    AddExport();
    AddFind();
    m_tree.emplace(m_app);
    m_live.emplace(m_app, ReadColumns, DefaultColumns());
  }

  ParsedCommandLine Parse(int argc, const char* const* argv) {
    if (const std::string wrong = FlagWithValue(m_app, argc, argv); !wrong.empty()) {
      Complain(wrong);
      return {std::nullopt, kExitBad};
    }
    try {
      m_app.parse(argc, argv);
      return {Chosen(), kExitGood};
    } catch (const CLI::ParseError& error) {
      return {std::nullopt, Answer(error)};
    }
  }

 private:
  void AddGen() {
    m_genApp = m_app.add_subcommand("gen", "Make a sample trace file");
    AddNumber(m_genApp, "-n,--records", "--records", m_gen.records, "How many traces to write")
        ->required();
    AddNumber(m_genApp, "-s,--seed", "--seed", m_gen.seed,
              "Another number gives other traces [default: 1]");
    m_genApp->add_flag("--old", m_gen.old,
                       "The older format, which has no stacks, as a file to convert");
    m_genApp->add_option("OUT", m_gen.out, "The file; an existing one is replaced")
        ->required()
        ->type_name("");
    m_genApp->footer(
        "Examples:\n"
        "  trc gen --records 5000000 big.trc\n"
        "  trc gen -n 1000 -s 42 small.trc");
  }

  void AddInfo() {
    m_infoApp = m_app.add_subcommand("info", "Print a summary of trace files");
    m_infoApp->add_option("FILE", m_info.files, "Trace files")->required()->type_name("");
    m_infoApp->add_flag("-j,--json", m_info.json, "One JSON object per file, each on its line");
    m_infoApp->footer(
        "Examples:\n"
        "  trc info web.trc db.trc\n"
        "  trc info --json web.trc | jq .names");
  }

  void AddDump() {
    m_dumpApp = m_app.add_subcommand("dump", "Print the traces of a file");
    m_dumpApp->add_option("FILE", m_dump.file, "A trace file")->required()->type_name("");
    m_dumpApp
        ->add_option("-f,--format", m_format,
                     "text: aligned columns (the default); jsonl: one JSON object per trace")
        ->check(OneOf({"text", "jsonl"}))
        ->type_name("FORMAT");
    m_columnsOption = m_dumpApp->add_option(
        "-c,--columns", m_columns, "Columns of the text format, by their headers: " + AllHeaders());
    m_columnsOption->type_name("LIST");
    m_dumpApp->add_flag("-u,--utc", m_dump.utc,
                        "Times of the text format in UTC, not local time; jsonl has them as "
                        "stored, which is UTC");
    AddNumber(m_dumpApp, "-b,--from", "--from", m_dump.from,
              "Index in the file of the first trace [default: 0]");
    AddNumber(m_dumpApp, "-n,--count", "--count", m_dump.count, "At most so many traces");
    AddFilterOptions(m_dumpApp, m_dump.filter);
    m_dumpApp->footer(
        "Examples:\n"
        "  trc dump web.trc --utc --columns \"Time,PID,Trace\"\n"
        "  trc dump web.trc --from 1000 --count 50\n"
        "  trc dump web.trc --uncheck \"All Severities/Info\" --count 20\n"
        "  trc dump web.trc --format jsonl > web.jsonl");
  }

  void AddSave() {
    m_saveApp = m_app.add_subcommand("save", "Write the traces of a file to a new one");
    m_saveApp->add_option("IN", m_save.in, "A trace file")->required()->type_name("");
    m_saveApp->add_option("OUT", m_save.out, "The new file; an existing one is replaced")
        ->required()
        ->type_name("");
    AddFilterOptions(m_saveApp, m_save.filter);
    m_saveApp->footer(
        "All traces are written, or those that pass the filter, with just the names that\n"
        "they need and without what was skipped in the old file.\n"
        "\n"
        "Examples:\n"
        "  trc save web.trc clean.trc\n"
        "  trc save web.trc errors.trc --uncheck \"All Severities\" \\\n"
        "    --check \"All Severities/Error\"");
  }

  void AddConvert() {
    m_convertApp =
        m_app.add_subcommand("convert", "Write a file of the older format in the current one");
    m_convertApp->add_option("OLD", m_convert.in, "A trace file of the older format; it stays")
        ->required()
        ->type_name("");
    m_convertApp->add_option("NEW", m_convert.out, "The new file; an existing one is replaced")
        ->required()
        ->type_name("");
    m_convertApp->footer(
        "The desktop converts an older file in its place when it opens it; this command\n"
        "leaves it untouched.\n"
        "\n"
        "Example:\n"
        "  trc convert old.trc new.trc");
  }

  void AddExport() {
    m_exportApp = m_app.add_subcommand("export", "Write the traces of a file as text");
    m_exportApp->add_option("FILE", m_export.file, "A trace file")->required()->type_name("");
    m_exportApp
        ->add_option("OUT", m_export.out,
                     "The text file, an existing one is replaced; - is standard output")
        ->required()
        ->type_name("");
    m_exportApp
        ->add_option("-f,--format", m_exportFormat,
                     "csv: as the desktop's Export writes it (the default); csv-rfc4180, jsonl: "
                     "clean data for other programs")
        ->check(OneOf({"csv", "csv-rfc4180", "jsonl"}))
        ->type_name("FORMAT");
    m_exportColumnsOption = m_exportApp->add_option(
        "-c,--columns", m_columns, "The shown columns, by their headers: " + AllHeaders());
    m_exportColumnsOption->type_name("LIST");
    m_exportApp->add_flag("--hidden", m_export.hidden, "The hidden columns too");
    m_exportApp->add_flag("-u,--utc", m_export.utc, "Times in UTC, not local time");
    AddFilterOptions(m_exportApp, m_export.filter);
    m_exportApp->footer(
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

  ExportOptions ChosenExport() {
    if (m_exportFormat == "csv-rfc4180") m_export.format = ExportFormat::CsvRfc4180;
    if (m_exportFormat == "jsonl") m_export.format = ExportFormat::Jsonl;
    if (m_exportColumnsOption->count() != 0) m_export.columns = ReadColumns(m_columns);
    return m_export;
  }

  void AddFind() {
    m_findApp = m_app.add_subcommand("find", "Print the traces of a file whose text matches");
    m_findApp->add_option("PATTERN", m_find.pattern, "The text to look for")
        ->required()
        ->type_name("");
    m_findApp->add_option("FILE", m_find.output.file, "A trace file")->required()->type_name("");
    m_findApp->add_flag("-e,--regex", m_find.expression, "PATTERN is a regular expression");
    m_findApp->add_flag("-i,--ignore-case", m_find.ignoreCase,
                        "Capital and small letters are the same");
    m_findApp->add_flag("-w,--word", m_find.wordSearch, "Whole words only");
    m_findApp->add_flag("--count", m_find.countOnly, "Print only how many traces match");
    m_findApp
        ->add_option("-f,--format", m_format,
                     "text: aligned columns (the default); jsonl: one JSON object per trace")
        ->check(OneOf({"text", "jsonl"}))
        ->type_name("FORMAT");
    AddFilterOptions(m_findApp, m_find.output.filter);
    m_findApp->footer(
        "An expression has . [set] * + ? ^ $ and, with backslashes, \\( \\) \\1 and \\{2,3\\}.\n"
        "Exit status: 0 some match, 1 none does, 2 a wrong pattern or file.\n"
        "\n"
        "Examples:\n"
        "  trc find 'slow query' web.trc\n"
        "  trc find -e 'after [0-9]\\{4,\\} ms' web.trc --format jsonl | jq .text\n"
        "  trc find -iw DEADLOCK web.trc --count\n"
        "  trc find -- -1 web.trc        # a pattern that begins with -");
  }

  FindOptions ChosenFind() {
    m_find.output.format = m_format == "text" ? DumpFormat::Text : DumpFormat::Jsonl;
    m_find.output.columns = DefaultColumns();
    return m_find;
  }

  TrcCommand Chosen() {
    if (m_genApp->parsed()) return m_gen;
    if (m_infoApp->parsed()) return m_info;
    if (m_saveApp->parsed()) return m_save;
    if (m_convertApp->parsed()) return m_convert;
    if (m_exportApp->parsed()) return ChosenExport();
    if (m_findApp->parsed()) return ChosenFind();
    if (std::optional<TreeOptions> tree = m_tree->Chosen()) return *std::move(tree);
    if (std::optional<LiveCommand> live = m_live->Chosen()) return *std::move(live);
    if (!m_dumpApp->parsed()) {
      throw CLI::RequiredError(
          "a command is needed: gen, info, dump, find, tree, save, convert, export, tail, capture, "
          "apps, show, set, sink or emit",
          CLI::ExitCodes::RequiredError);
    }
    const bool text = m_format == "text";
    if (!text && m_columnsOption->count() != 0) {
      throw CLI::ValidationError("--columns", "goes with the text format only");
    }
    m_dump.format = text ? DumpFormat::Text : DumpFormat::Jsonl;
    m_dump.columns = m_columnsOption->count() != 0 ? ReadColumns(m_columns) : DefaultColumns();
    return m_dump;
  }

  int Answer(const CLI::ParseError& error) {
    if (error.get_exit_code() == static_cast<int>(CLI::ExitCodes::Success)) {
      std::ostringstream answer, nothing;
      m_app.exit(error, answer, nothing);
      Output output;
      output.Buffer() = answer.str();
      return output.Finish();
    }
    Complain(WordsFor(m_app, error));
    return kExitBad;
  }

  CLI::App m_app{"Looks into trace files and live traces, and switches traces on and off.", "trc"};
  CLI::App *m_genApp = nullptr, *m_infoApp = nullptr, *m_dumpApp = nullptr, *m_saveApp = nullptr,
           *m_convertApp = nullptr, *m_exportApp = nullptr, *m_findApp = nullptr;
  CLI::Option *m_columnsOption = nullptr, *m_exportColumnsOption = nullptr;
  std::optional<TreeParser> m_tree;
  std::optional<LiveParser> m_live;
  GenOptions m_gen;
  InfoOptions m_info;
  DumpOptions m_dump;
  SaveOptions m_save;
  ConvertOptions m_convert;
  ExportOptions m_export;
  FindOptions m_find;
  std::string m_format = "text", m_exportFormat = "csv", m_columns;
};

}  // namespace

ParsedCommandLine ParseCommandLine(int argc, const char* const* argv) {
  return Parser().Parse(argc, argv);
}
