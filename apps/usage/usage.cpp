#include "usage.h"

#include <charconv>
#include <sstream>

#include "base/near/near_word.h"

namespace {

constexpr std::size_t kHelpColumns = 80;
constexpr std::size_t kHelpIndent = 26;  // of the text beside an option

// Replaces blanks by line ends, for the column beside the options.
std::string Wrapped(const std::string& text) {
  std::string wrapped;
  std::size_t used = 0;
  std::istringstream words(text);
  for (std::string word; words >> word; used += word.size()) {
    if (used + 1 + word.size() > kHelpColumns - kHelpIndent) {
      wrapped.push_back('\n');
      used = 0;
    } else if (!wrapped.empty()) {
      wrapped.push_back(' ');
      ++used;
    }
    wrapped.append(word);
  }
  return wrapped;
}

class PlainHelp final : public CLI::Formatter {
 public:
  PlainHelp() {
    column_width(kHelpIndent);
    label("Positionals", "Arguments");
    label("SUBCOMMAND", "COMMAND");
  }
  std::string make_subcommands(const CLI::App* app, CLI::AppFormatMode mode) const override {
    return CLI::detail::find_and_replace(CLI::Formatter::make_subcommands(app, mode),
                                         "\nSubcommands:\n", "\nCommands:\n");
  }
  std::string make_subcommand(const CLI::App* app) const override {
    std::ostringstream out;
    CLI::detail::format_help(out, app->get_name(), Wrapped(app->get_description()),
                             get_column_width());
    return out.str();
  }
  std::string make_option_name(const CLI::Option* option, bool isPositional) const override {
    if (isPositional && !option->get_option_text().empty()) return option->get_option_text();
    return CLI::Formatter::make_option_name(option, isPositional);
  }
  // The kind of value, without its number: the text beside it says that.
  std::string make_option_opts(const CLI::Option* option) const override {
    const bool valued = !option->get_positional() && option->get_type_size() != 0;
    return valued && !option->get_type_name().empty() ? " " + option->get_type_name() : "";
  }
  std::string make_option_desc(const CLI::Option* option) const override {
    const bool required = option->nonpositional() && option->get_required();
    return Wrapped(option->get_description() + (required ? " (required)" : ""));
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

// The unknown word of the command line; "" when there is none. A mistyped option is reported rather
// than an argument that is missing because of it.
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
std::string Missing(const std::string& message) {
  if (const std::size_t at = message.find(": At Most "); at != message.npos)
    return IsOption(message) ? message.substr(0, at) + " is given more than once"
                             : "that is one argument too many";
  const std::string middle = ": 1 required ", end = " missing";
  const std::size_t at = message.find(middle), stop = message.rfind(end);
  if (at == message.npos || stop == message.npos || stop < at + middle.size()) return message;
  const std::size_t type = at + middle.size();
  return message.substr(0, at) + " needs " + message.substr(type, stop - type);
}

// "WORDS is required", with the name that the help uses.
std::string Required(const CLI::App& app, const std::string& message) {
  if (message == "A subcommand is required") return "a command is needed";
  for (const CLI::Option* const option : app.get_options())
    if (!option->get_option_text().empty() && message == option->get_name() + " is required")
      return option->get_option_text() + " is required";
  return message;
}

}  // namespace

void UsePlainHelp(CLI::App& app) {
  app.formatter(std::make_shared<PlainHelp>());
}

std::uint64_t ReadNumber(const std::string& option, const std::string& text) {
  std::uint64_t number = 0;
  const char* const end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, number);
  if (text.empty() || stop != end || error != std::errc())
    throw CLI::ValidationError(option, Quoted(text) + " is not a whole number");
  return number;
}

void RefuseOutside(const std::string& option, std::uint64_t value, std::uint64_t least,
                   std::uint64_t most) {
  if (value < least || value > most)
    throw CLI::ValidationError(option,
                               "takes " + std::to_string(least) + " to " + std::to_string(most));
}

std::string FlagWithValue(const CLI::App& app, int argc, const char* const* argv) {
  std::string line = app.get_name();
  const CLI::App* at = &app;
  for (int i = 1; i < argc; ++i) {
    const std::string word = argv[i], name = word.substr(0, word.find('='));
    if (word == "--") break;
    for (const CLI::App* const command : at->get_subcommands({})) {
      if (command->get_name() != word) continue;
      line.append(" ").append(word);
      at = command;
      break;
    }
    if (name.rfind("--", 0) != 0 || name.size() == word.size()) continue;
    const CLI::Option* const option = at->get_option_no_throw(name);
    if (option != nullptr && option->get_items_expected_max() == 0)
      return std::string(name).append(" takes no value\nTry '").append(line).append(" --help'.");
  }
  return {};
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

std::string ErrorText(const CLI::App& app, const CLI::ParseError& error) {
  const bool required = dynamic_cast<const CLI::RequiredError*>(&error) != nullptr;
  const bool surplus = dynamic_cast<const CLI::ExtrasError*>(&error) != nullptr;
  std::string message, line;
  const CLI::App* at = &app;
  for (const CLI::App* next = at; next != nullptr;) {
    at = next;
    line.append(line.empty() ? "" : " ").append(at->get_name());
    if (message.empty() && (required || surplus)) message = Unknown(*at, surplus);
    const auto chosen = at->get_subcommands();
    next = chosen.empty() ? nullptr : chosen.front();
  }
  if (message.empty()) message = required ? Required(*at, error.what()) : Missing(error.what());
  return message + "\nTry '" + line + " --help'.";
}
