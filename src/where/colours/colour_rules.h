// An ordered set of colour rules, and its file. docs/colour-rules.md has the form of the file.
//
// Shape    The first rule that is on and whose filter text holds for a trace gives its colours. A
//          text that is no filter text is kept as it is.
// Errors   False or nothing, and the reason. That of a file begins with the line, "line 7: ...".
// Threads  Pure, but for the files.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "where/colours/colour.h"

struct ColourRule {
  std::string name;   // of one line, not empty
  std::string where;  // the filter text
  Colour ink, ground;
  bool on = true;
  bool operator==(const ColourRule&) const = default;
};
using ColourRules = std::vector<ColourRule>;

// Bounds of a set, in bytes but for the number of rules.
constexpr std::size_t kColourRulesMax = 1000, kColourNameBytes = 256, kColourTextBytes = 4096;
constexpr std::size_t kColourFileBytes = std::size_t{1} << 20;

// Can the rule be in a set? Both texts are well-formed UTF-8 and within the bounds.
bool CheckColourRule(const ColourRule& rule, std::string* why);

// The content of a file. It is refused as a whole: nobody misses a rule without knowing it.
std::optional<ColourRules> ReadColourRules(std::string_view content, std::string* why);
// REQUIRES: each rule passes CheckColourRule. What is read again is the same.
std::string ColourRulesText(const ColourRules& rules);

// The reason of a file that is there begins with its path: "/tmp/x.colours: line 7: ...".
std::optional<ColourRules> LoadColourRules(const std::string& path, std::string* why);
// A new file that gets its name when it is complete; an existing one is replaced.
bool SaveColourRules(const std::string& path, const ColourRules& rules, std::string* why);
