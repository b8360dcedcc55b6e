// What the command lines of the programs have in common: the words of their help, and those for a
// line that they cannot take.
//
// Threads  Pure.
#pragma once

#include <CLI/CLI.hpp>
#include <string>
#include <vector>

// Help without the words of the command-line library. To be called before commands are added, which
// take it over. An argument's option_text stands in the place of its name.
void UsePlainHelp(CLI::App& app);
// One of these words and no other; the message names those that are near.
CLI::Validator OneOf(std::vector<std::string> words);
// What is wrong, what may have been meant, and where the help is.
std::string WordsFor(const CLI::App& app, const CLI::ParseError& error);
