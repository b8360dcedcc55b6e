#include "usage.h"

#include "near_word.h"

namespace {

class PlainHelp final : public CLI::Formatter {
 public:
  PlainHelp() {
    label("Positionals", "Arguments");
    label("SUBCOMMAND", "COMMAND");
  }
  std::string make_subcommands(const CLI::App* app, CLI::AppFormatMode mode) const override {
    return CLI::detail::find_and_replace(CLI::Formatter::make_subcommands(app, mode),
                                         "\nSubcommands:\n", "\nCommands:\n");
  }
  std::string make_option_name(const CLI::Option* option, bool isPositional) const override {
    if (isPositional && !option->get_option_text().empty()) return option->get_option_text();
    return CLI::Formatter::make_option_name(option, isPositional);
  }
  // The kind of value, without how often it may come: the text beside it says that.
  std::string make_option_opts(const CLI::Option* option) const override {
    const bool valued = !option->get_positional() && option->get_type_size() != 0;
    return valued && !option->get_type_name().empty() ? " " + option->get_type_name() : "";
  }
  std::string make_option_desc(const CLI::Option* option) const override {
    const bool told = option->nonpositional() && option->get_required();
    return option->get_description() + (told ? " (required)" : "");
  }
  std::string make_option_usage(const CLI::Option* option) const override {
    if (!option->get_option_text().empty()) return option->get_option_text();
    const bool many = option->get_expected_max() >= CLI::detail::expected_max_vector_size;
    const std::string name = make_option_name(option, true) + (many ? "..." : "");
    return option->get_required() ? name : "[" + name + "]";
  }
};

std::string Quoted(const std::string& word) {
  return "\"" + word + "\"";
}

bool IsOption(const std::string& word) {
  return word.size() > 1 && word.front() == '-';
}

std::string NoSuchOption(const CLI::App& app, const std::string& word) {
  std::vector<std::string> known;
  for (const CLI::Option* const option : app.get_options()) {
    for (const std::string& name : option->get_lnames()) known.push_back("--" + name);
    for (const std::string& name : option->get_snames()) known.push_back("-" + name);
  }
  const std::string option = word.substr(0, word.find('='));
  return "there is no option " + Quoted(option) + DidYouMean(option, known);
}

std::string NoSuchCommand(const CLI::App& app, const std::string& word) {
  std::vector<std::string> known;
  for (const CLI::App* const command : app.get_subcommands({}))
    known.push_back(command->get_name());
  return "there is no command " + Quoted(word) + DidYouMean(word, known);
}

// What stands in the line and is not known; "" when all is. A mistyped option is told before an
// argument that is missing because of it.
std::string Unknown(const CLI::App& app, bool surplus) {
  const bool choosing = app.get_subcommands().empty() && !app.get_subcommands({}).empty();
  for (const std::string& word : app.remaining()) {
    if (IsOption(word)) return NoSuchOption(app, word);
    if (choosing) return NoSuchCommand(app, word);
    if (surplus) return Quoted(word) + " is one argument too many";
  }
  return {};
}

// "--columns: 1 required LIST missing", as the library says it.
std::string Missing(const std::string& words) {
  if (words.find(": At Most ") != words.npos) return "that is one argument too many";
  const std::string middle = ": 1 required ", end = " missing";
  const std::size_t at = words.find(middle), stop = words.rfind(end);
  if (at == words.npos || stop == words.npos || stop < at + middle.size()) return words;
  const std::size_t type = at + middle.size();
  return words.substr(0, at) + " needs " + words.substr(type, stop - type);
}

// "WORDS is required", when the help calls it otherwise.
std::string Required(const CLI::App& app, const std::string& words) {
  if (words == "A subcommand is required") return "a command is needed";
  for (const CLI::Option* const option : app.get_options())
    if (!option->get_option_text().empty() && words == option->get_name() + " is required")
      return option->get_option_text() + " is required";
  return words;
}

}  // namespace

void UsePlainHelp(CLI::App& app) {
  app.formatter(std::make_shared<PlainHelp>());
}

CLI::Validator OneOf(std::vector<std::string> words) {
  return CLI::Validator(
      [words = std::move(words)](std::string& word) -> std::string {
        std::string list;
        for (const std::string& known : words) {
          if (word == known) return {};
          list.append(list.empty() ? "" : ", ").append(known);
        }
        return Quoted(word) + " is none of " + list + DidYouMean(word, words);
      },
      "");
}

std::string WordsFor(const CLI::App& app, const CLI::ParseError& error) {
  const bool required = dynamic_cast<const CLI::RequiredError*>(&error) != nullptr;
  const bool surplus = dynamic_cast<const CLI::ExtrasError*>(&error) != nullptr;
  std::string words, line;
  const CLI::App* at = &app;
  for (const CLI::App* next = at; next != nullptr;) {
    at = next;
    line.append(line.empty() ? "" : " ").append(at->get_name());
    if (words.empty() && (required || surplus)) words = Unknown(*at, surplus);
    const auto chosen = at->get_subcommands();
    next = chosen.empty() ? nullptr : chosen.front();
  }
  if (words.empty()) words = required ? Required(*at, error.what()) : Missing(error.what());
  return words + "\nTry '" + line + " --help'.";
}
