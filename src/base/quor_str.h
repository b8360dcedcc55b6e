// Text types of the tracing library's interface. Both hold UTF-8. The interface once had a wide and
// a local multibyte form, and its callers still name the one that they mean.
#pragma once

#include <cstdint>
#include <string>

namespace QuorStr {
using String_t = std::string;
using MBS_t = std::string;

std::string NumToStr(unsigned value);
std::string NumToStr(int value);
std::string NumToStr(std::uint64_t value);
// printf's rules for one long double, with "." as the decimal point in every locale.
std::string NumToStr(double value, const char* format);
}  // namespace QuorStr
