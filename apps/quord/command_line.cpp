#include "command_line.h"

#include <CLI/CLI.hpp>
#include <iostream>

#include "usage.h"

namespace {

constexpr std::uint64_t kDaysMax = 36500;

class Parser {
 public:
  Parser() {
    UsePlainHelp(m_app);
    m_app.set_version_flag("-V,--version", "quord " TESSERA_VERSION, "Print the version and exit");
    m_app.require_subcommand(0, 1);
    m_app.footer(
        "Examples:\n"
        "  quord                                  start the service of this user\n"
        "  quord --foreground --log-level debug   in the foreground, with a long log\n"
        "  quord --listen 0.0.0.0:7447            accept other machines, by TLS\n"
        "  quord --machine                        by root: one service for all accounts\n"
        "  quord keys init                        make the certificates for that\n"
        "  quord status                           does it run? which applications?\n"
        "  quord reload                           read certificates and options again\n"
        "\n"
        "Exit status: 0 success, 1 the answer is no or the service could not start,\n"
        "2 wrong use or a faulty configuration file, 3 the service does not run.");
    AddServe();
    AddKeys();
    AddStatus();
    AddControl();
  }

  ParsedCommandLine Parse(int argc, const char* const* argv) {
    if (const std::string wrong = FlagWithValue(m_app, argc, argv); !wrong.empty()) {
      std::cerr << "quord: " << wrong << "\n";
      return {std::nullopt, kExitWrongUse};
    }
    try {
      m_app.parse(argc, argv);
      if (const std::string wrong = MisplacedOption(); !wrong.empty()) {
        std::cerr << "quord: " << wrong << "\n";
        return {std::nullopt, kExitWrongUse};
      }
      return {Chosen(), kExitGood};
    } catch (const CLI::ParseError& error) {
      if (error.get_exit_code() != static_cast<int>(CLI::ExitCodes::Success)) {
        std::cerr << "quord: " << ErrorText(m_app, error) << "\n";
        return {std::nullopt, kExitWrongUse};
      }
      m_app.exit(error);
      return {std::nullopt, kExitGood};
    }
  }

 private:
  void AddServe() {
    m_app.add_flag("-f,--foreground", m_serve.foreground, "Do not go into the background");
    m_app.add_option("-c,--config", m_serve.config, "Read this configuration file")
        ->type_name("FILE");
    for (const ServiceWord& word : ServiceWords()) AddWord(word);
  }

  void AddWord(const ServiceWord& known) {
    const std::string word(known.word);
    const std::string names = (word == "log-level" ? "-l,--" : "--") + word;
    const auto take = [this, word](const std::string& value) {
      m_serve.given.push_back({word, value});
    };
    if (known.isSwitch) {
      m_app.add_flag_callback(
          names, [take] { take("yes"); }, std::string(known.help));
      return;
    }
    CLI::Option* const option =
        known.isRepeatable
            ? m_app.add_option_function<std::vector<std::string>>(
                  names,
                  [take](const std::vector<std::string>& values) {
                    for (const std::string& value : values) take(value);
                  },
                  std::string(known.help))
            : m_app.add_option_function<std::string>(names, take, std::string(known.help));
    option->type_name(std::string(known.type))->allow_extra_args(false);
    option->check([word](const std::string& value) { return WhyNotOption(word, value); });
  }

  void AddKeys() {
    m_keys = m_app.add_subcommand("keys", "Make certificates for other machines");
    m_keys->require_subcommand(1);
    m_keys->footer(
        "Examples:\n"
        "  quord keys init\n"
        "  quord keys issue alice --role monitor");
    m_init = m_keys->add_subcommand("init", "Make an authority and this service's certificate");
    m_init
        ->add_option("--host", m_initCommand.hosts,
                     "A further name or address by which this machine is reached; repeatable")
        ->type_name("NAME")
        ->allow_extra_args(false);
    AddDays(m_init, m_initCommand.days);
    AddFolder(m_init, m_initCommand.keysFolder);
    m_init->footer("Example:\n  quord keys init --host orders1.example.org --host 10.0.0.5");
    m_issue = m_keys->add_subcommand("issue", "Make a certificate for a client");
    m_issue->add_option("NAME", m_issueCommand.name, "The name of the client")
        ->required()
        ->type_name("");
    m_issue->add_option("-r,--role", m_issueCommand.role, "What it allows")
        ->required()
        ->check(OneOf({"monitor", "configure", "forward"}))
        ->type_name("monitor|configure|forward");
    m_issue->add_option("-o,--out", m_issueCommand.to, "The folder to make [default: ./NAME]")
        ->type_name("DIR");
    m_issue
        ->add_option("--host", m_issueCommand.hosts,
                     "A name or address of that machine, whose service is to listen; repeatable")
        ->type_name("NAME")
        ->allow_extra_args(false);
    AddDays(m_issue, m_issueCommand.days);
    AddFolder(m_issue, m_issueCommand.keysFolder);
    m_issue->footer(
        "Examples:\n"
        "  quord keys issue alice --role configure --days 90\n"
        "  quord keys issue shop1 --role forward --host shop1.example.org   a server too");
  }
  static void AddDays(CLI::App* app, int& days) {
    app->add_option_function<std::string>(
           "-d,--days",
           [&days](const std::string& text) {
             const std::uint64_t number = ReadNumber("--days", text);
             RefuseOutside("--days", number, 1, kDaysMax);
             days = static_cast<int>(number);
           },
           "How many days it is good, at most 36500 [default: 825]")
        ->type_name("N");
  }
  static void AddFolder(CLI::App* app, std::string& folder) {
    app->add_option("--keys-dir", folder, "Where the authority is")->type_name("DIR");
  }

  void AddStatus() {
    m_status =
        m_app.add_subcommand("status", "Show whether the service runs, and its applications");
    m_status->add_flag("--json", m_statusCommand.json, "For programs");
    AddSocketFolder(m_status, m_statusCommand.socketFolder);
    m_status->footer(
        "Exit status: 0 it runs, 3 it does not.\n"
        "\n"
        "Example:\n"
        "  quord status --json");
  }

  void AddControl() {
    m_stop = m_app.add_subcommand("stop", "End the service and wait for its end");
    AddSocketFolder(m_stop, m_stopCommand.socketFolder);
    m_stop->footer(
        "Exit status: 0 it has ended, 1 it has not, 3 it did not run.\n"
        "\n"
        "Example:\n"
        "  quord stop");
    m_reload = m_app.add_subcommand(
        "reload", "Let the service read certificates and its configuration file again");
    AddSocketFolder(m_reload, m_reloadCommand.socketFolder);
    m_reload->footer(
        "Exit status: 0 done, 1 not possible and nothing has changed, 3 it does not run.\n"
        "\n"
        "Example:\n"
        "  quord reload");
    m_check = m_app.add_subcommand("check-config",
                                   "Check a configuration file and the files that it names");
    m_check->add_option("FILE", m_checkCommand.config, "The file [default: the usual one]")
        ->type_name("");
    m_check->footer(
        "Example:\n"
        "  quord check-config");
  }
  static void AddSocketFolder(CLI::App* app, std::string& folder) {
    app->add_option("--socket-dir", folder, "Where its socket is")->type_name("DIR");
  }

  // Before a command an option of the service would have no effect: "--socket-dir DIR stop" would
  // end another service.
  std::string MisplacedOption() const {
    const std::vector<CLI::App*> commands = m_app.get_subcommands();
    if (commands.empty()) return {};
    for (const CLI::Option* const option : m_app.get_options())
      if (option->count() != 0)
        return option->get_name() + ": it is for the service, and has no effect before \"" +
               commands[0]->get_name() + "\"; what that takes stands behind it";
    return {};
  }

  Command Chosen() const {
    if (m_init->parsed()) return m_initCommand;
    if (m_issue->parsed()) return m_issueCommand;
    if (m_status->parsed()) return m_statusCommand;
    if (m_stop->parsed()) return m_stopCommand;
    if (m_reload->parsed()) return m_reloadCommand;
    if (m_check->parsed()) return m_checkCommand;
    return m_serve;
  }

  CLI::App m_app{
      "The trace service of this machine: receives the traces of applications, sends\n"
      "them to monitors, and stores settings.",
      "quord"};
  CLI::App *m_keys = nullptr, *m_init = nullptr, *m_issue = nullptr, *m_status = nullptr;
  CLI::App *m_stop = nullptr, *m_reload = nullptr, *m_check = nullptr;
  ServeCommand m_serve;
  KeysInitCommand m_initCommand;
  KeysIssueCommand m_issueCommand;
  StatusCommand m_statusCommand;
  StopCommand m_stopCommand;
  ReloadCommand m_reloadCommand;
  CheckConfigCommand m_checkCommand;
};

}  // namespace

ParsedCommandLine ParseCommandLine(int argc, const char* const* argv) {
  return Parser().Parse(argc, argv);
}
