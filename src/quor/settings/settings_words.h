// The words for the bits of a settings word, and for the usual ones: "Info+Stack", "max".
//
// Shape    Words that are joined by "+". Capitals do not matter. "developer" is the preset unless a
//          severity (Info, Warn, Error) is named beside it: then it is the bit.
// Errors   A reason that names the word that was probably meant.
// Threads  Pure.
#pragma once

#include <optional>
#include <string>
#include <string_view>

struct SettingsWord {
  unsigned bit;
  std::string_view word;
};
// In the order in which labels and .tcf files have them.
inline constexpr SettingsWord kSettingsWords[] = {
    {0x0001, "Info"},    {0x0002, "Warn"},     {0x0004, "Error"}, {0x0008, "Developer"},
    {0x0010, "Verbose"}, {0x0100, "Location"}, {0x0200, "Stack"}};
inline constexpr SettingsWord kSettingsPresets[] = {
    {0, "off"}, {7, "support"}, {15, "developer"}, {799, "max"}};

// Nothing if a word is none, or if there is no word.
std::optional<unsigned> SettingsOf(std::string_view words, std::string* why = nullptr);
// "\"Inffo\" is no setting; did you mean \"Info\"?"; "" if no setting is near this word.
std::string NearSetting(std::string_view word);
