// What the command lines of the programs have in common: the words of their help, and those for a
// line that they cannot take.
//
// Threads  Pure.
#pragma once

#include <CLI/CLI.hpp>
#include <cstdint>
#include <string>
#include <vector>

// Help in 80 columns, without the words of the command-line library. To be called before commands
// are added, which take it over. An argument's option_text stands in the place of its name.
void UsePlainHelp(CLI::App& app);
// One of these words and no other; the message names those that are near.
CLI::Validator OneOf(std::vector<std::string> words);
// Plain decimal digits: no sign, no other base, nothing that wraps. Throws CLI::ValidationError.
std::uint64_t ReadNumber(const std::string& option, const std::string& text);
// Throws CLI::ValidationError with the range.
void RefuseOutside(const std::string& option, std::uint64_t value, std::uint64_t least,
                   std::uint64_t most);
// The library takes "--utc=5" for a flag, and "--utc=0" for none. What is wrong then, and where the
// help is; "" when no flag of the line has a value.
std::string FlagWithValue(const CLI::App& app, int argc, const char* const* argv);
// What is wrong, what may have been meant, and where the help is.
std::string WordsFor(const CLI::App& app, const CLI::ParseError& error);
