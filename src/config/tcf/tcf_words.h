// The words of a .tcf file for kinds of sinks. Those for settings are kSettingsWords: a file does
// not keep bits without a word.
#pragma once

#include <string_view>

inline constexpr std::string_view kTcfFileWord = "File", kTcfSocketWord = "Socket";
