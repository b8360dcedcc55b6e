// Common code of the programs' command lines: the texts of their help, and the messages for wrong
// use.
//
// Threads  Pure.
#pragma once

#include <CLI/CLI.hpp>
#include <cstdint>
#include <string>
#include <vector>

// Formats the help in 80 columns, without the words of the command-line library. Call it before
// commands are added, because they inherit it. An argument's option_text replaces its name.
void UsePlainHelp(CLI::App& app);
// Accepts only these words; the message lists the near ones.
CLI::Validator OneOf(std::vector<std::string> words);
// Plain decimal digits: no sign, no other base, nothing that wraps. Throws CLI::ValidationError.
std::uint64_t ReadNumber(const std::string& option, const std::string& text);
// Throws CLI::ValidationError with the range.
void RefuseOutside(const std::string& option, std::uint64_t value, std::uint64_t least,
                   std::uint64_t most);
// The library accepts "--utc=5" as a flag, and "--utc=0" as its absence. Returns the error message
// with a reference to the help; "" when no flag has a value.
std::string FlagWithValue(const CLI::App& app, int argc, const char* const* argv);
// The error, the words that may have been meant, and a reference to the help.
std::string ErrorText(const CLI::App& app, const CLI::ParseError& error);
