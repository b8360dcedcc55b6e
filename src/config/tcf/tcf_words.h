// The words of a .tcf file for settings and kinds of sinks.
#pragma once

#include <string_view>

#include "quor/client/trace_config.h"

struct TcfSettingsWord {
  unsigned bit;
  std::string_view word;
};
// In the order in which a line has them.
inline constexpr TcfSettingsWord kTcfSettingsWords[] = {
    {TRC_SET_INFO, "Info"},           {TRC_SET_WARN, "Warn"},       {TRC_SET_ERROR, "Error"},
    {TRC_SET_DEVELOPER, "Developer"}, {TRC_SET_VERBOSE, "Verbose"}, {TRC_SET_LOCATION, "Location"},
    {TRC_SET_STACK, "Stack"}};
// Other bits have no word: a file does not keep them.
inline constexpr unsigned kTcfSettingsBits = TRC_SET_INFO | TRC_SET_WARN | TRC_SET_ERROR |
                                             TRC_SET_DEVELOPER | TRC_SET_VERBOSE |
                                             TRC_SET_LOCATION | TRC_SET_STACK;

inline constexpr std::string_view kTcfFileWord = "File", kTcfSocketWord = "Socket";
