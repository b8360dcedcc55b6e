// Finds the words that a mistyped word may mean.
//
// A word is near if only its capitals differ, if a few letters are changed, missing, surplus or
// swapped (none of two letters, one of four, two of eight, three of more), or if it only continues
// the word.
//
// Threads  Pure.
#pragma once

#include <string>
#include <string_view>
#include <vector>

// The nearest ones, in their order; none when none is near.
std::vector<std::string> NearWords(std::string_view word, const std::vector<std::string>& known);
// "; did you mean "a" or "b"?", and "" when none is near.
std::string DidYouMean(std::string_view word, const std::vector<std::string>& known);
