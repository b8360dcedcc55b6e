// The words of a point's settings on the command line.
//
// Shape    One preset (off, support, developer, max) and any of Info, Warn, Error, Developer,
//          Verbose, Location, Stack together. "developer" is the preset, "Developer" the bit.
// Threads  Pure.
#pragma once

#include <string>
#include <vector>

bool IsSettingsWord(const std::string& word);
unsigned SettingsOf(const std::vector<std::string>& words);
// The setting that a mistyped word may mean; "" when none is near.
std::string NearSetting(const std::string& word);
