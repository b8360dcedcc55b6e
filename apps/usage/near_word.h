// Finds what was meant by a word that is nearly right.
//
// Near is a word of other capitals, with a few letters changed, missing, surplus or swapped (none
// in two letters, one in four, two in eight, three in more), or one that only goes on.
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
