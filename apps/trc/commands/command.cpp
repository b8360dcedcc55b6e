#include "commands/command.h"

#include <stdlib.h>
#include <unistd.h>

#include <string_view>

#include "usage.h"

CLI::Option* Command::AddNumber(const std::string& names, std::uint64_t& number, const char* help,
                                const char* type) {
  const std::string option = names.substr(names.rfind(',') + 1);
  return m_app
      .add_option_function<std::string>(
          names, [option, &number](const std::string& text) { number = ReadNumber(option, text); },
          help)
      ->type_name(type);
}

void Command::AddLineFormat(std::string& format) {
  m_app
      .add_option("-f,--format", format,
                  "text: aligned columns (the default); jsonl: one JSON object per trace")
      ->check(OneOf({"text", "jsonl"}))
      ->type_name("FORMAT");
}

void Command::AddColour(std::string& when) {
  m_app
      .add_option("--color", when,
                  "Severities of the text format in colour: auto (on a terminal, unless NO_COLOR "
                  "is set; the default), always or never")
      ->check(OneOf({"auto", "always", "never"}))
      ->type_name("WHEN");
}

// An empty NO_COLOR counts as none.
bool Command::IsColoured(const std::string& when) {
  if (when != "auto") return when == "always";
  const char* const no = getenv("NO_COLOR");
  const char* const terminal = getenv("TERM");
  return isatty(STDOUT_FILENO) != 0 && (!no || *no == '\0') &&
         !(terminal && std::string_view(terminal) == "dumb");
}

void Command::AddFiles(std::vector<std::string>& files, const char* help) {
  const std::string text =
      "Trace files, also packed with gzip or zstd; - is standard input. Several are put together "
      "in the order of time";
  m_app.add_option("FILE", files, text + help)->required()->type_name("");
}

void Command::AddFilesAndOut(std::vector<std::string>& files, const char* shown, const char* help) {
  m_app.add_option("FILES", files, help)->required()->option_text(shown);
}

std::string Command::TakeOut(std::vector<std::string>& files, const char* shown) {
  if (files.size() < 2) throw CLI::RequiredError(shown);
  std::string out = std::move(files.back());
  files.pop_back();
  return out;
}
