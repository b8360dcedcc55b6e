// The options --uncheck PATH, --check PATH and --user NAME of a command.
#pragma once

#include <CLI/CLI.hpp>

#include "filter/account.h"
#include "filter/filter_paths.h"

// The steps are in the order of the command line, also when the two options are mixed.
inline void AddFilterOptions(CLI::App* app, FilterPaths& paths) {
  const auto add = [&](const char* name, bool check, const char* help) {
    app->add_option_function<std::string>(
           name, [&paths, check](const std::string& path) { paths.Add(path, check); }, help)
        ->trigger_on_parse()
        ->type_name("PATH");
  };
  add("--uncheck", false,
      "Hide a node of the filter and all below it, as a click in the Filter dialog does: "
      "\"All Severities/Info\", \"All Threads/web-1/PID:812\"; \"\" is all");
  add("--check", true, "Show a node and all below it; any number of both, in their order");
  app->add_option_function<std::string>(
         "--user", [&paths](const std::string& user) { paths.OnlyOf(AccountOf(user)); },
         "Only processes of this account, where the service traces a whole machine; a number "
         "is an account of this machine")
      ->type_name("NAME|UID");
}
