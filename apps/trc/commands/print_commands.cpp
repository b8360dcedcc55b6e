// What the commands that print a file's traces take from the command line.
#include <algorithm>

#include "commands/colour_option.h"
#include "commands/columns_option.h"
#include "commands/commands.h"
#include "commands/dump.h"
#include "commands/find.h"
#include "commands/profile_option.h"
#include "commands/shared_options.h"
#include "commands/tree.h"
#include "usage.h"

namespace {

// Text or jsonl: one trace a line.
class LineCommand : public Command {
 protected:
  using Command::Command;

  void AddLines(DumpOptions& dump) {
    AddLineFormat(m_format);
    AddColour(m_colour);
    AddColourRules(App(), m_colourRules);
    m_profile.Add(App());
    m_shared.emplace(App(), dump.traces);
    m_shared->Add();
    App()
        .add_option("--since-row", dump.traces.sinceRow,
                    "Index in the file of the trace that the column Since counts from")
        ->type_name("N");
  }
  void CompleteLines(DumpOptions& dump, bool choosesItself) {
    m_profile.TakeFilter(dump.traces);
    m_shared->Complete(choosesItself);
    dump.format = m_format == "text" ? DumpFormat::Text : DumpFormat::Jsonl;
    dump.coloured = IsColoured(m_colour);
    dump.colours = ReadColourOption(m_colourRules, dump.format, dump.coloured);
    m_profile.TakeLook(dump, m_colourRules.has_value());
    RefuseColumnsOf(dump.format, dump.traces);
    if (!dump.traces.follow) return;
    if (dump.files.size() > 1)
      throw CLI::ValidationError("--follow",
                                 "goes with one file: what is appended to several has "
                                 "no order yet");
    m_shared->RefuseHopelessPaths();
  }

 private:
  std::optional<SharedOptions> m_shared;
  std::string m_format = "text", m_colour = "auto";
  std::optional<std::string> m_colourRules;
  ProfileOption m_profile;
};

class DumpCommand final : public LineCommand {
 public:
  explicit DumpCommand(CLI::App& program)
      : LineCommand(program, "dump", "Print the traces of a file") {
    AddFiles(m_dump.files);
    AddLines(m_dump);
    App().footer(
        "Examples:\n"
        "  trc dump web.trc --utc --columns \"Time,PID,Trace\"\n"
        "  trc dump web.trc --from 1000 --count 50\n"
        "  trc dump web.trc --severity warn+ --tail 20\n"
        "  trc dump web.trc --component Sql --severity error --context 5\n"
        "  trc dump web.trc --since \"2026-11-23 09:41\" --until \"2026-11-23 09:45\"\n"
        "  trc dump web.trc --uncheck \"All Severities/Info\" --count 20\n"
        "  trc dump web.trc db.trc --severity error --count 20\n"
        "  gzip -c web.trc | trc dump - --tail 3\n"
        "  trc dump --follow web.trc --tail 10 --severity warn+\n"
        "  trc dump web.trc --profile slow.profile --count 20\n"
        "  trc dump web.trc --format jsonl > web.jsonl");
  }
  void Complete() override { CompleteLines(m_dump, false); }
  int Run() const override { return RunDump(m_dump); }

 private:
  DumpOptions m_dump;
};

class FindCommand final : public LineCommand {
 public:
  explicit FindCommand(CLI::App& program)
      : LineCommand(program, "find", "Print the traces of a file whose text matches") {
    App().add_option("PATTERN", m_find.pattern, "The text to look for")->required()->type_name("");
    AddFiles(m_find.output.files);
    App().add_flag("-e,--regex", m_find.expression, "PATTERN is a regular expression");
    App().add_flag("-P,--perl-regex", m_find.perl, "PATTERN is a Perl expression (PCRE2)");
    App().add_flag("-i,--ignore-case", m_find.ignoreCase, "Capital and small letters are the same");
    App().add_flag("-w,--word", m_find.wordSearch, "Whole words only");
    App().add_flag("--total", m_find.totalOnly, "Print only how many traces match");
    AddLines(m_find.output);
    App().footer(
        "An expression has . [set] * + ? ^ $ and, with backslashes, \\( \\) \\1 and \\{2,3\\}.\n"
        "Exit status: 0 some match, 1 none does, 2 a wrong pattern or file.\n"
        "\n"
        "Examples:\n"
        "  trc find 'slow query' web.trc\n"
        "  trc find -e 'after [0-9]\\{4,\\} ms' web.trc --format jsonl | jq .text\n"
        "  trc find -P 'order (?!17\\b)\\d+|cart' web.trc --count 20\n"
        "  trc find -iw DEADLOCK web.trc --total\n"
        "  trc find deadlock web.trc --component Lock --context 3\n"
        "  trc find -- -1 web.trc        # a pattern that begins with -");
  }
  void Complete() override {
    CompleteLines(m_find.output, true);
    if (m_find.expression && m_find.perl)
      throw CLI::ValidationError("--perl-regex", "goes with no --regex");
    if (m_find.totalOnly && m_find.output.traces.follow)
      throw CLI::ValidationError("--total", "goes with no --follow: the number is not known yet");
    std::swap(m_find.invert, m_find.output.traces.choice.invert);
  }
  int Run() const override { return RunFind(m_find); }

 private:
  FindOptions m_find;
};

class TreeCommand final : public Command {
 public:
  explicit TreeCommand(CLI::App& program)
      : Command(program, "tree", "Print the traces of a file as a procedure tree") {
    AddFiles(m_tree.files, ". With --export the last is the text file OUT, which is replaced");
    App().add_flag(
        "-x,--export", m_export,
        "Write the first machine to OUT, as the desktop's Export writes it with all open");
    App()
        .add_option_function<std::string>(
            "-d,--depth",
            [this](const std::string& text) {
              m_tree.depth = static_cast<int>(
                  std::min<std::uint64_t>(ReadNumber("--depth", text), kAllLevels));
            },
            "Open so many levels only; 0 leaves the machines closed [default: all]")
        ->type_name("N");
    App().add_flag("-j,--json", m_tree.json,
                   "One JSON object per node, with its parent, and durations in nanoseconds");
    m_shared.Add({.columns = "a tree has no columns", .follow = kNotFollowed});
    App().footer(
        "A line for each machine, application, process, thread, block (from \"Begin: \" to\n"
        "\"End: \") and trace, with the time that passed in processes, threads and blocks.\n"
        "A closed item with items below it begins with \"+- \".\n"
        "\n"
        "Examples:\n"
        "  trc tree web.trc --depth 4\n"
        "  trc tree web.trc --machine web-01 --uncheck \"All Severities/Info\"\n"
        "  trc tree web.trc --json | jq -c 'select(.durationNs > 1e9)'\n"
        "  trc tree --export web.trc tree.txt");
  }
  void Complete() override {
    m_shared.Complete();
    if (m_export && m_tree.files.size() < 2)
      throw CLI::ValidationError("--export", "needs OUT, the file to write");
    if (m_export) m_tree.out = TakeOut(m_tree.files, "OUT");
    if (m_export && m_tree.json) throw CLI::ValidationError("--json", "goes with no --export");
    if (m_export && m_tree.depth != kAllLevels)
      throw CLI::ValidationError("--export", "writes the first machine whole");
  }
  int Run() const override { return RunTree(m_tree); }

 private:
  TreeOptions m_tree;
  SharedOptions m_shared{App(), m_tree.traces};
  bool m_export = false;
};

}  // namespace

std::unique_ptr<Command> MakeDump(CLI::App& program) {
  return std::make_unique<DumpCommand>(program);
}

std::unique_ptr<Command> MakeFind(CLI::App& program) {
  return std::make_unique<FindCommand>(program);
}

std::unique_ptr<Command> MakeTree(CLI::App& program) {
  return std::make_unique<TreeCommand>(program);
}
