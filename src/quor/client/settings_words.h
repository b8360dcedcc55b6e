// The words for the bits of a settings word.
#pragma once

#include <string_view>

#include "quor/client/trace_config.h"

struct SettingsWord {
  unsigned bit;
  std::string_view word;
};
// In the order in which labels and .tcf files have them.
inline constexpr SettingsWord kSettingsWords[] = {
    {TRC_SET_INFO, "Info"},           {TRC_SET_WARN, "Warn"},       {TRC_SET_ERROR, "Error"},
    {TRC_SET_DEVELOPER, "Developer"}, {TRC_SET_VERBOSE, "Verbose"}, {TRC_SET_LOCATION, "Location"},
    {TRC_SET_STACK, "Stack"}};
