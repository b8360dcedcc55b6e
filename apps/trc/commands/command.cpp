#include "commands/command.h"

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
