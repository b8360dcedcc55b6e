// What the live commands take from the command line.
#include <sstream>

#include "commands/colour_option.h"
#include "commands/columns_option.h"
#include "commands/commands.h"
#include "commands/shared_options.h"
#include "filter/account.h"
#include "filter/where_option.h"
#include "live/app_words.h"
#include "live/live.h"
#include "usage.h"
#include "where/source/where_at_source.h"

namespace {

constexpr std::uint64_t kThreadsMax = 256;
constexpr std::uint64_t kTextBytesMax = 65535;

std::vector<std::string> SplitAtCommas(const std::string& list) {
  std::vector<std::string> parts;
  std::istringstream stream(list);
  for (std::string part; std::getline(stream, part, ',');)
    if (!part.empty()) parts.push_back(part);
  return parts;
}

// A command that listens to live traces.
class ListeningCommand : public Command {
 protected:
  using Command::Command;

  void AddLimits(LiveLimits& limits, const char* noColumns) {
    m_shared.emplace(App(), limits.traces);
    m_shared->Add(
        {.columns = noColumns, .from = kNoPlaces, .tail = kNoLastOnes, .follow = kFollowedAnyway});
    App()
        .add_option_function<std::string>(
            "--for",
            [&limits](const std::string& text) { limits.seconds = ReadNumber("--for", text); },
            "End after so many seconds")
        ->type_name("SECONDS");
    App().add_flag("--at-source", m_atSource,
                   "The service asks the text of --where, so that only matching traces come");
  }
  void CompleteLimits(LiveLimits& limits) {
    m_shared->Complete();
    m_shared->RefuseHopelessPaths();
    if (m_atSource) CompleteAtSource(limits);
  }

 private:
  static void CompleteAtSource(LiveLimits& limits) {
    constexpr const char* kName = "--at-source";
    const TraceOptions& traces = limits.traces;
    if (!traces.where) throw CLI::ValidationError(kName, "needs --where");
    if (traces.context > 0)
      throw CLI::ValidationError(kName, "withholds the traces that --context asks for");
    WhereError error;
    const std::optional<std::string> text = TextAtSource(traces.where->Expr(), traces.utc, error);
    if (!text) throw CLI::ValidationError(kName, WhereErrorText(traces.where->Text(), error));
    limits.atSource = *text;
  }

  bool m_atSource = false;
  std::optional<SharedOptions> m_shared;
};

class TailCommand final : public ListeningCommand {
 public:
  explicit TailCommand(CLI::App& program)
      : ListeningCommand(program, "tail", "Print live traces as they come") {
    App().footer(
        "Without MACHINE the traces of this machine, whose service is started if none\n"
        "runs. SIGINT ends it.\n"
        "\n"
        "Examples:\n"
        "  trc tail\n"
        "  trc tail --columns Time,Component,Trace --count 100\n"
        "  trc tail --severity error --context 5\n"
        "  trc tail --where 'severity >= warn' --at-source\n"
        "  trc tail orders1:7447 --format jsonl --for 60 | jq .text");
    App()
        .add_option("MACHINE", m_tail.machine, "name, name:port, or nats://HOST/STREAM")
        ->type_name("");
    AddLineFormat(m_format);
    AddColour(m_colour);
    AddColourRules(App(), m_colourRules);
    AddLimits(m_tail.limits, nullptr);
  }
  void Complete() override {
    CompleteLimits(m_tail.limits);
    m_tail.format = m_format == "text" ? DumpFormat::Text : DumpFormat::Jsonl;
    m_tail.coloured = IsColoured(m_colour);
    m_tail.colours = ReadColourOption(m_colourRules, m_tail.format, m_tail.coloured);
    RefuseColumnsOf(m_tail.format, m_tail.limits.traces);
  }
  int Run() const override { return RunTail(m_tail); }

 private:
  TailOptions m_tail;
  std::string m_format = "text", m_colour = "auto";
  std::optional<std::string> m_colourRules;
};

class CaptureCommand final : public ListeningCommand {
 public:
  explicit CaptureCommand(CLI::App& program)
      : ListeningCommand(program, "capture", "Write live traces to a file") {
    App().footer(
        "SIGINT ends it and keeps what was captured. Prints how many traces were\n"
        "taken and how many were lost; exit status 1 if any were lost.\n"
        "\n"
        "Examples:\n"
        "  trc capture -o now.trc --for 60\n"
        "  trc capture orders1 -o orders.trc --max-size 100 --max-files 5");
    App()
        .add_option("MACHINE", m_capture.machine, "name, name:port, or nats://HOST/STREAM")
        ->type_name("");
    App()
        .add_option("-o,--out", m_capture.out, "The file; an existing one is replaced")
        ->required()
        ->type_name("FILE");
    AddLimits(m_capture.limits, kWholeTraces);
    AddNumber("--max-size", m_capture.maxMegabytes,
              "A full file is numbered NAME.1.trc and a new one begun", "MB");
    AddNumber("--max-files", m_capture.maxFiles, "Keep so many full files [default: all]");
  }
  void Complete() override { CompleteLimits(m_capture.limits); }
  int Run() const override { return RunCapture(m_capture); }

 private:
  CaptureOptions m_capture;
};

class AppsCommand final : public Command {
 public:
  explicit AppsCommand(CLI::App& program)
      : Command(program, "apps", "List the traced applications of a machine") {
    App().footer(
        "Where one service traces a whole machine, a second column names the account, and\n"
        "an application's name begins with it: \"alice/shop\".\n"
        "\n"
        "Examples:\n"
        "  trc apps --json\n"
        "  trc apps --user alice");
    App().add_option("MACHINE", m_apps.machine, "name or name:port")->type_name("");
    App().add_flag("-j,--json", m_apps.json, "One JSON array: application, running, instances");
    App()
        .add_option("--user", m_user, "Only the applications of this account, a name or a number")
        ->type_name("NAME|UID");
  }
  void Complete() override { m_apps.account = AccountOf(m_user); }
  int Run() const override { return RunApps(m_apps); }

 private:
  AppsOptions m_apps;
  std::string m_user;
};

class ShowCommand final : public Command {
 public:
  explicit ShowCommand(CLI::App& program)
      : Command(program, "show", "Show an application's traces, their settings and its sink") {
    App().footer(
        "Examples:\n"
        "  trc show orders\n"
        "  trc show orders1:7447 orders --json");
    App()
        .add_option("WORDS", m_words, kAppHelp)
        ->required()
        ->expected(1, 2)
        ->option_text("[MACHINE] APP");
    App().add_flag("-j,--json", m_show.json, "One JSON object");
  }
  void Complete() override { TakeMachineAndApp(m_words, m_show.machine, m_show.app); }
  int Run() const override { return RunShow(m_show); }

 private:
  ShowOptions m_show;
  std::vector<std::string> m_words;
};

class EmitCommand final : public Command {
 public:
  explicit EmitCommand(CLI::App& program)
      : Command(program, "emit", "Act as a traced application, for tests and load") {
    App().footer(
        "Without --rate and --count 10 traces a second until SIGINT; with --count alone\n"
        "as fast as they go. Prints how many were traced and how many lost; exit status 1\n"
        "if any were lost.\n"
        "\n"
        "Examples:\n"
        "  trc emit --app orders\n"
        "  trc emit --app load --count 1000000 --threads 4 --text-bytes 100\n"
        "  trc emit --app orders --components Net,Db --rate 100 --blocks --seed 7");
    App()
        .add_option("-a,--app", m_emit.app, "The application's name")
        ->required()
        ->type_name("NAME");
    App()
        .add_option("-c,--components", m_components, "Its components [default: Net,Db]")
        ->type_name("A,B");
    AddNumber("-r,--rate", m_emit.rate, "Traces a second, all threads together");
    AddNumber("-n,--count", m_emit.count, "End after so many traces");
    AddNumber("--text-bytes", m_emit.textBytes, "Bytes of a text [default: 40]");
    AddNumber("-t,--threads", m_emit.threads, "Threads that trace [default: 1]");
    App().add_flag("-b,--blocks", m_emit.blocks, "Nested \"Begin: ...\" and \"End: ...\" traces");
    AddNumber("-s,--seed", m_emit.seed, "Another number, other texts [default: 1]");
  }
  void Complete() override {
    RefuseOutside("--threads", m_emit.threads, 1, kThreadsMax);
    RefuseOutside("--text-bytes", m_emit.textBytes, 0, kTextBytesMax);
    if (!m_components.empty()) m_emit.components = SplitAtCommas(m_components);
    if (m_emit.components.empty()) throw CLI::ValidationError("--components", "names no component");
    if (m_emit.rate == 0 && m_emit.count == 0) m_emit.rate = 10;
  }
  int Run() const override { return RunEmit(m_emit); }

 private:
  EmitOptions m_emit;
  std::string m_components;
};

}  // namespace

std::unique_ptr<Command> MakeTail(CLI::App& program) {
  return std::make_unique<TailCommand>(program);
}

std::unique_ptr<Command> MakeCapture(CLI::App& program) {
  return std::make_unique<CaptureCommand>(program);
}

std::unique_ptr<Command> MakeApps(CLI::App& program) {
  return std::make_unique<AppsCommand>(program);
}

std::unique_ptr<Command> MakeShow(CLI::App& program) {
  return std::make_unique<ShowCommand>(program);
}

std::unique_ptr<Command> MakeEmit(CLI::App& program) {
  return std::make_unique<EmitCommand>(program);
}
