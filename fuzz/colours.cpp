// Any bytes as a file of colour rules: what is read is written and read again the same, or an
// error names a line of the file.
#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "base/text.h"
#include "where/colours/colour_program.h"

namespace {

void Demand(bool holds) {
  if (!holds) std::abort();
}

void CheckRules(const ColourRules& rules) {
  Demand(rules.size() <= kColourRulesMax);
  for (const ColourRule& rule : rules) Demand(CheckColourRule(rule, nullptr));
  const std::string text = ColourRulesText(rules);
  Demand(IsUtf8(text));
  std::string why;
  if (text.size() <= kColourFileBytes) Demand(ReadColourRules(text, &why) == rules);
  const ColourProgramPtr program = ColourProgram::Compile(rules);
  for (std::size_t i = 0; i < rules.size(); ++i)
    Demand(!program->ErrorOf(i) || !program->ErrorOf(i)->reason.empty());
}

void CheckReason(std::string_view content, const std::string& why) {
  constexpr std::string_view kLine = "line ";
  Demand(why.starts_with(kLine) && why.size() < 1000);
  const unsigned long line = std::strtoul(why.c_str() + kLine.size(), nullptr, 10);
  const auto ends = static_cast<unsigned long>(std::count(content.begin(), content.end(), '\n'));
  Demand(line >= 1 && line <= ends + 1);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view content(reinterpret_cast<const char*>(data), size);
  std::string why;
  if (const auto rules = ReadColourRules(content, &why))
    CheckRules(*rules);
  else
    CheckReason(content, why);
  return 0;
}
