#include "command_line.h"

#include <sstream>
#include <string_view>

#include "commands/commands.h"
#include "terminal/exit_status.h"
#include "terminal/output.h"
#include "usage.h"

namespace {

// In the order of the help.
constexpr std::unique_ptr<Command> (*kMakers[])(CLI::App&) = {
    MakeGen,  MakeInfo,  MakeDump,  MakeSave,   MakeConvert, MakeExport, MakeImport,  MakeFind,
    MakeTree, MakeStats, MakeStack, MakeFilter, MakeNotes,   MakeTail,   MakeCapture, MakeApps,
    MakeShow, MakeSet,   MakeSink,  MakeForget, MakeConfig,  MakeSetup,  MakeEmit};

// Kept: scripts say "trc find --count" without a number where it is --total today.
std::vector<const char*> WithTotal(int argc, const char* const* argv) {
  constexpr std::string_view kOld = "--count", kDigits = "0123456789";
  std::vector<const char*> words(argv, argv + argc);
  words.push_back(nullptr);
  if (argc < 2 || std::string_view(argv[1]) != "find") return words;
  for (int i = 2; i < argc && std::string_view(argv[i]) != "--"; ++i) {
    if (argv[i] != kOld) continue;
    const std::string_view next = i + 1 < argc ? argv[i + 1] : "";
    if (!next.empty() && next.find_first_not_of(kDigits) == next.npos) continue;
    words[static_cast<std::size_t>(i)] = "--total";
    PrintError("--count without a number is --total now");
  }
  return words;
}

}  // namespace

CommandLine::CommandLine() {
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
      "  trc import --syslog syslog system.trc\n"
      "  trc tree sample.trc --depth 4\n"
      "  trc stats sample.trc --by component,pattern\n"
      "  trc tail\n"
      "  trc set orders Database/Query support\n"
      "  trc config save orders.tcf orders\n"
      "  trc setup --preset support --monitor\n"
      "\n"
      "'trc COMMAND --help' describes a command. Exit status: 0 success, 1 the\n"
      "answer is no or traces were lost, 2 wrong use or bad input, 3 the file is\n"
      "damaged, 130 interrupted.");
  for (const auto make : kMakers) m_commands.push_back(make(m_app));
}

const Command* CommandLine::Read(int argc, const char* const* argv) {
  m_status = kExitBad;
  if (const std::string wrong = FlagWithValue(m_app, argc, argv); !wrong.empty()) {
    PrintError(wrong);
    return nullptr;
  }
  const std::vector<const char*> words = WithTotal(argc, argv);
  try {
    m_app.parse(argc, words.data());
    return &Named();
  } catch (const CLI::ParseError& error) {
    m_status = Answer(error);
    return nullptr;
  }
}

const Command& CommandLine::Named() {
  for (const auto& command : m_commands) {
    if (!command->IsNamed()) continue;
    command->Complete();
    return *command;
  }
  throw CLI::RequiredError(
      "a command is needed: gen, info, dump, find, tree, stats, stack, filter, notes, save, "
      "convert, "
      "export, "
      "import, "
      "tail, capture, apps, show, set, sink, config, setup or emit",
      CLI::ExitCodes::RequiredError);
}

int CommandLine::Answer(const CLI::ParseError& error) {
  if (error.get_exit_code() == static_cast<int>(CLI::ExitCodes::Success)) {
    std::ostringstream answer, nothing;
    m_app.exit(error, answer, nothing);
    Output output;
    output.Buffer() = answer.str();
    return output.Finish();
  }
  PrintError(ErrorText(m_app, error));
  return kExitBad;
}
