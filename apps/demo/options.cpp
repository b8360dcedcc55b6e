#include "options.h"

#include <charconv>

namespace {

constexpr unsigned kThreadsMax = 256;
constexpr double kRateMax = 100e6;
constexpr double kSecondsMax = 365.0 * 24 * 3600;

bool ParseNumber(const std::string& text, double most, double& number) {
  const char* const end = text.data() + text.size();
  const auto parsed = std::from_chars(text.data(), end, number, std::chars_format::fixed);
  return parsed.ec == std::errc() && parsed.ptr == end && number >= 0 && number <= most;
}

void TakeValue(DemoOptions& options, const std::string& name, const std::string& value) {
  double number = 0;
  if (name == "--name") {
    options.name = value;
    if (value.empty()) options.wrong = "--name wants a name";
  } else if (name == "--rate") {
    if (!ParseNumber(value, kRateMax, options.rate))
      options.wrong = "--rate wants a number of traces a second, or 0";
  } else if (name == "--for") {
    if (!ParseNumber(value, kSecondsMax, options.seconds))
      options.wrong = "--for wants a number of seconds";
  } else {
    if (ParseNumber(value, kThreadsMax, number) && number >= 1 &&
        number == static_cast<unsigned>(number))
      options.threads = static_cast<unsigned>(number);
    else
      options.wrong = "--threads wants a number from 1 to 256";
  }
}

std::string LongName(const std::string& name) {
  if (name == "-r") return "--rate";
  if (name == "-f") return "--for";
  if (name == "-n") return "--name";
  if (name == "-t") return "--threads";
  return name;
}

}  // namespace

DemoOptions ParseDemoOptions(const std::vector<std::string>& arguments) {
  DemoOptions options;
  for (std::size_t i = 0; i < arguments.size() && options.wrong.empty(); ++i) {
    const std::string& argument = arguments[i];
    const std::size_t equals = argument.find('=');
    const std::string name = LongName(argument.substr(0, equals));
    if (argument == "--help" || argument == "-h") {
      options.help = true;
    } else if (argument == "--version") {
      options.version = true;
    } else if (name == "--rate" || name == "--for" || name == "--name" || name == "--threads") {
      if (equals != std::string::npos)
        TakeValue(options, name, argument.substr(equals + 1));
      else if (i + 1 < arguments.size())
        TakeValue(options, name, arguments[++i]);
      else
        options.wrong = name + " needs a value";
    } else {
      options.wrong = "unknown argument " + argument;
    }
  }
  return options;
}

const char* DemoUsage() {
  return "usage: quor-demo [OPTION...]\n"
         "\n"
         "A traced application to look at: a small shop that takes orders. Its workers\n"
         "trace requests, database queries and payments, with blocks, warnings and errors.\n"
         "\n"
         "  -r, --rate N      traces a second of all threads together, 0 for no pause [20]\n"
         "  -f, --for N       leave after N seconds [until interrupted]\n"
         "  -n, --name NAME   the application's name in the monitor [orders]\n"
         "  -t, --threads N   workers, 1 to 256 [3]\n"
         "      --version     print the version and leave\n"
         "  -h, --help        print this and leave\n"
         "\n"
         "The rate counts what is on by default. Developer and verbose traces come on top\n"
         "of it once they are switched on, as with: trc set orders --all max\n"
         "\n"
         "examples:\n"
         "  quor-demo\n"
         "  quor-demo --rate 1000 --for 10 --name load\n"
         "\n"
         "Exit status: 0 success, 1 traces were lost, 2 wrong use.\n";
}
