// What the name of a process says: its number and, in traces from the service of a whole machine,
// the account that it runs under: "4711 alice".
//
// Owner    Both are parts of the name.
// Threads  Pure.
#pragma once

#include <algorithm>
#include <string_view>

struct ProcessName {
  std::string_view process, account;  // account empty: the name has none

  // Imported names may be any text. Only a number with a word behind it names an account.
  static ProcessName Of(std::string_view name) {
    const std::size_t blank = name.rfind(' ');
    const std::string_view none = name.substr(name.size());
    if (blank == name.npos || blank == 0 || blank + 1 == name.size()) return {name, none};
    const std::string_view number = name.substr(0, blank);
    const bool digits =
        std::all_of(number.begin(), number.end(), [](char c) { return c >= '0' && c <= '9'; });
    return digits ? ProcessName{number, name.substr(blank + 1)} : ProcessName{name, none};
  }
};
