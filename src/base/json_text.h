// Texts of unknown content as JSON: a string if the bytes are UTF-8, else {"hex":"..."}.
//
// Written for millions of texts: nothing is allocated but the output itself.
#pragma once

#include <charconv>
#include <concepts>
#include <string>
#include <string_view>

void AppendJsonText(std::string& json, std::string_view bytes);

// The bytes as lower-case hexadecimal digits.
void AppendHex(std::string& to, std::string_view bytes);

template <std::integral Number>
void AppendNumber(std::string& to, Number number) {
  char digits[24];
  const auto end = std::to_chars(digits, digits + sizeof digits, number).ptr;
  to.append(digits, static_cast<std::size_t>(end - digits));
}
