// The form of a text, told many bytes at a time.
//
// Threads  Pure.
#pragma once

#include <string_view>

bool IsAscii(std::string_view text);
// UTF-8 without too long forms, halves of pairs, and what lies beyond the last character.
bool IsWellFormed(std::string_view text);
