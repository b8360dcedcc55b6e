// Texts of unknown content on a terminal.
//
// Threads  Pure, but ScreenWidth: the locale of the calling thread's wcwidth is set by its first
//          call.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

// The text on one line: line ends, tabs and other control characters as \n, \t, \x1b, ...,
// malformed UTF-8 as U+FFFD.
std::string VisibleText(std::string_view text);

// How many columns of a terminal a visible text takes.
std::size_t ScreenWidth(std::string_view visible);
