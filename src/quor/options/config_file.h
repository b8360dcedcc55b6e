// The configuration file of the service.
//
// Shape    Lines of WORD = VALUE, with the words of the options without their dashes. A "#" at the
//          beginning of a line or after a blank begins a comment. A value may stand in double
//          quotes. A repeatable word may stand on several lines, another one only once. Paths are
//          absolute, because the service does not know where it will be started.
// Errors   All faults are listed, each with its line, up to kFaultsMax.
// Threads  Any; Read is pure.
#pragma once

#include "quor/options/service_words.h"

struct ConfigFile {
  static constexpr std::size_t kBytesMax = 64u << 10, kFaultsMax = 20;

  std::vector<GivenOption> options;  // the good ones, in their order
  std::vector<std::string> faults;   // "line 3: ..."

  static ConfigFile Read(std::string_view text);
  // Nothing and a reason when it cannot be read, or when others than root and this user may change
  // it.
  static std::optional<ConfigFile> Open(const std::string& path, std::string* why);
};

// What a service reads without --config, if it is there: $QUOR_CONFIG; for root
// /etc/quor/quord.conf; for other users quor/quord.conf in $XDG_CONFIG_HOME or ~/.config.
std::string UsualConfigPath();
