#include "command_line.h"

#include <CLI/CLI.hpp>
#include <iostream>

#include "base/near/near_word.h"
#include "quor/protocol/tls.h"
#include "quor/service/service.h"
#include "quor/settings/settings_words.h"
#include "usage.h"

namespace {

constexpr std::uint64_t kDaysMax = 36500;

// "" or the reason why not, as CLI11 wants it.
std::string WhyNoSettings(const std::string& words) {
  std::string why;
  return SettingsOf(words, &why) ? "" : why;
}

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
        "  quord keys init                        make the certificates for that\n"
        "  quord status                           does it run? which applications?\n"
        "\n"
        "Exit status: 0 success, 1 the answer is no or the service could not start,\n"
        "2 wrong use.");
    AddServe();
    AddKeys();
    AddStatus();
  }

  ParsedCommandLine Parse(int argc, const char* const* argv) {
    if (const std::string wrong = FlagWithValue(m_app, argc, argv); !wrong.empty()) {
      std::cerr << "quord: " << wrong << "\n";
      return {std::nullopt, kExitWrongUse};
    }
    try {
      m_app.parse(argc, argv);
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
    m_app
        .add_option_function<std::string>(
            "-l,--log-level",
            [this](const std::string& word) {
              const auto level = LogLevelOf(word);
              if (!level)
                throw CLI::ValidationError(
                    "--log-level", "\"" + word + "\" is no level" +
                                       DidYouMean(word, {"error", "warning", "info", "debug"}));
              m_serve.logLevel = *level;
            },
            "error, warning, info or debug [default: info]")
        ->type_name("LEVEL");
    m_app
        .add_option("--listen", m_serve.listen,
                    "Accept other machines at this address, by mutual TLS; repeatable")
        ->type_name("ADDRESS:PORT")
        ->check([](const std::string& text) {
          return EndpointOf(text) ? "" : "\"" + text + "\" is not ADDRESS:PORT";
        })
        ->allow_extra_args(false);
    m_app.add_option("--state-dir", m_serve.stateFolder, "Where settings are kept")
        ->type_name("DIR");
    m_app.add_option("--socket-dir", m_serve.socketFolder, "Where the local socket is made")
        ->type_name("DIR");
    m_app.add_option("--keys-dir", m_serve.keysFolder, "Where the certificates are")
        ->type_name("DIR");
    m_app
        .add_option_function<std::string>(
            "--default-settings",
            [this](const std::string& words) {
              m_serve.defaultSettings = SettingsOf(words).value_or(0);
            },
            "What a new application traces: off, support, developer, max, or words as "
            "Info+Stack [default: support]")
        ->check(WhyNoSettings)
        ->type_name("SETTINGS");
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
    m_status->add_option("--socket-dir", m_statusCommand.socketFolder, "Where its socket is")
        ->type_name("DIR");
    m_status->footer(
        "Exit status: 0 it runs, 1 it does not.\n"
        "\n"
        "Example:\n"
        "  quord status --json");
  }

  Command Chosen() const {
    if (m_init->parsed()) return m_initCommand;
    if (m_issue->parsed()) return m_issueCommand;
    if (m_status->parsed()) return m_statusCommand;
    return m_serve;
  }

  CLI::App m_app{
      "The trace service of this machine: receives the traces of applications, sends\n"
      "them to monitors, and stores settings.",
      "quord"};
  CLI::App *m_keys = nullptr, *m_init = nullptr, *m_issue = nullptr, *m_status = nullptr;
  ServeCommand m_serve;
  KeysInitCommand m_initCommand;
  KeysIssueCommand m_issueCommand;
  StatusCommand m_statusCommand;
};

}  // namespace

ParsedCommandLine ParseCommandLine(int argc, const char* const* argv) {
  return Parser().Parse(argc, argv);
}
