// Text for a terminal that is not the program's own: paths, words of the command line.
//
// Threads  Pure.
#pragma once

#include <string>
#include <string_view>

// Control characters but line ends as \x1b and the like, and U+FFFD for malformed sequences.
std::string HarmlessText(std::string_view text);
