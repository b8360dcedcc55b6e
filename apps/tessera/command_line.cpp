#include "command_line.h"

#include <charconv>
#include <filesystem>
#include "settings/registry.h"
#include "symbols/symbol_reader.h"

namespace {

// "1200x800"
bool ParseSize(const std::string& text, QSize& size) {
  int width = 0, height = 0;
  const char* const end = text.data() + text.size();
  const auto first = std::from_chars(text.data(), end, width);
  if (first.ec != std::errc() || first.ptr == end || *first.ptr != 'x') return false;
  const auto second = std::from_chars(first.ptr + 1, end, height);
  if (second.ec != std::errc() || second.ptr != end) return false;
  size = QSize(width, height);
  return width >= 100 && height >= 100 && width <= 32767 && height <= 32767;
}

void TakeValue(ProgramOptions& options, const std::string& name, const std::string& value) {
  if (value.empty()) {
    options.wrong = name + " needs a value";
  } else if (name == "--settings") {
    options.settings = value;
  } else if (name == "--render") {
    options.render = value;
  } else if (name == "--monitor") {
    options.monitor = value;
  } else if (!ParseSize(value, options.size)) {
    options.wrong = "--size wants WIDTHxHEIGHT, as in 1200x800";
  }
}

}  // namespace

ProgramOptions ParseProgramOptions(const std::vector<std::string>& arguments) {
  ProgramOptions options;
  for (std::size_t i = 0; i < arguments.size(); ++i) {
    const std::string& argument = arguments[i];
    const std::size_t equals = argument.find('=');
    const std::string name = argument.substr(0, equals);
    if (argument == "--") {
      options.rest.insert(options.rest.end(), arguments.begin() + static_cast<std::ptrdiff_t>(i),
                          arguments.end());
      break;
    } else if (argument == "--help" || argument == "-h") {
      options.help = true;
    } else if (argument == "--version") {
      options.version = true;
    } else if (argument == "--dark") {
      options.dark = true;
    } else if (name == "--settings" || name == "--render" || name == "--size" ||
               name == "--monitor") {
      const bool next = equals == std::string::npos && i + 1 < arguments.size();
      TakeValue(options, name,
                next                          ? arguments[++i]
                : equals == std::string::npos ? std::string()
                                              : argument.substr(equals + 1));
    } else {
      options.rest.push_back(argument);
    }
  }
  return options;
}

std::string WrongRest(const std::vector<std::string>& rest) {
  int files = 0;
  bool optionsEnded = false;
  for (const std::string& argument : rest) {
    if (!optionsEnded && argument == "--") {
      optionsEnded = true;
    } else if (!optionsEnded && !argument.empty() && argument[0] == '-') {
      return "unknown option " + argument;
    } else if (!argument.empty()) {
      ++files;
    }
  }
  return files > 1 ? "one FILE at a time; the window opens more" : "";
}

std::string UnusableSettings(const std::string& path) {
  namespace fs = std::filesystem;
  std::error_code error;
  const fs::file_status status = fs::status(path, error);
  if (!fs::exists(status) || fs::is_regular_file(status)) return {};
  return "--settings wants a file: " + path;
}

const char* UsageText() {
  return "usage: tessera [OPTION...] [FILE]\n"
         "\n"
         "Shows traces: opens the trace file FILE, or a window with the Trace Wizard.\n"
         "\n"
         "  --monitor MACHINE open a monitor on MACHINE; localhost is this one\n"
         "  --settings FILE   keep the settings in FILE\n"
         "  --size WxH        open the main window at this size, as in 1200x800\n"
         "  --dark            dark colours, whatever the system says\n"
         "  --render OUT.png  open FILE or monitor, write the window's picture and leave\n"
         "  --version         print the version and leave\n"
         "  -h, --help        print this and leave\n"
         "\n"
         "examples:\n"
         "  tessera web.trc\n"
         "  tessera --monitor localhost\n"
         "  QT_QPA_PLATFORM=offscreen tessera --render web.png --size 1400x900 web.trc\n"
         "\n"
         "Exit status: 0 success, 2 wrong use, no display, or what was named cannot be\n"
         "opened.\n";
}

std::vector<std::string> SymbolFolders() {
  std::vector<std::string> folders =
      SymbolReader::Folders(NtRegGet(HKEY_CURRENT_USER, kRegSettings, "Symbol Folders", ""));
  for (const std::string& folder : SymbolReader::FoldersOfEnvironment()) folders.push_back(folder);
  return folders;
}
