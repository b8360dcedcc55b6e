#include "command_line.h"

#include <iostream>

#include "usage.h"
#include "verbs.h"

namespace {

// In the order of the help.
constexpr std::unique_ptr<Verb> (*kMakers[])(CLI::App&) = {MakeInit, MakeConf,   MakePublish,
                                                           MakeRead, MakeOtlpIn, MakeOtlpOut};

}  // namespace

CommandLine::CommandLine() {
  UsePlainHelp(m_app);
  m_app.require_subcommand(0, 1);  // a missing command gets a better message than the library's
  m_app.set_version_flag("-V,--version", "quor-bridge " TESSERA_VERSION,
                         "Print the version and exit");
  m_app.footer(
      "Examples:\n"
      "  quor-bridge conf --forward web1 --forward web2 --monitor alice\n"
      "  quor-bridge publish --engine n1.example.org,n2.example.org\n"
      "  quor-bridge otlp-in                   receive logs and spans of OpenTelemetry\n"
      "  quor-bridge otlp-out http://127.0.0.1:4318\n"
      "\n"
      "'quor-bridge COMMAND --help' describes a command. Exit status: 0 success,\n"
      "1 the answer is no or it failed, 2 wrong use, 3 the engine or the service of\n"
      "this machine could not be reached.");
  for (const auto make : kMakers) m_verbs.push_back(make(m_app));
}

Verb* CommandLine::Read(int argc, const char* const* argv) {
  m_status = kExitWrongUse;
  if (const std::string wrong = FlagWithValue(m_app, argc, argv); !wrong.empty()) {
    Fail(wrong);
    return nullptr;
  }
  try {
    m_app.parse(argc, argv);
    return &Named();
  } catch (const CLI::ParseError& error) {
    m_status = Answer(error);
    return nullptr;
  }
}

Verb& CommandLine::Named() {
  std::string known;
  for (const auto& verb : m_verbs) {
    if (verb->IsNamed()) {
      verb->Complete();
      return *verb;
    }
  }
  for (const CLI::App* const app : m_app.get_subcommands({}))
    known.append(known.empty() ? "" : ", ").append(app->get_name());
  throw CLI::RequiredError("a command is needed: " + known, CLI::ExitCodes::RequiredError);
}

int CommandLine::Answer(const CLI::ParseError& error) {
  if (error.get_exit_code() != static_cast<int>(CLI::ExitCodes::Success))
    return Fail(ErrorText(m_app, error), kExitWrongUse);
  m_app.exit(error);
  std::cout.flush();
  return std::cout ? kExitGood : kExitNo;
}
