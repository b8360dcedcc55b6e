// The options --uncheck PATH and --check PATH of a command.
#pragma once

#include <CLI/CLI.hpp>

#include "filter_paths.h"

// The steps come in the order of the command line, however the two options mix.
inline void AddFilterOptions(CLI::App* app, FilterPaths& paths) {
  const auto add = [&](const char* name, bool check, const char* help) {
    app->add_option_function<std::string>(
           name, [&paths, check](const std::string& path) { paths.Add(path, check); }, help)
        ->trigger_on_parse()
        ->type_name("PATH");
  };
  add("--uncheck", false,
      "Hide what is below this node of the filter, for example \"All Severities/Info\" or "
      "\"All Threads/web-1/PID:812\"; \"\" is all. Any number, together with --check, in order");
  add("--check", true, "Show it again");
}
