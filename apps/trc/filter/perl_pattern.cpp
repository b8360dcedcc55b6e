#include "filter/perl_pattern.h"

#include "base/fail_with.h"

std::unique_ptr<PerlPattern> PerlPattern::Make(const std::string& expression, WhereRegexWay way,
                                               std::string* why) {
  std::size_t place = 0;
  std::string reason;
  auto regex = WhereRegex::Compile(expression, place, reason, way);
  if (regex) return std::unique_ptr<PerlPattern>(new PerlPattern(std::move(regex)));
  return FailWith(
      why, "wrong expression: " + reason + " (at byte " + std::to_string(place + 1) + ")", nullptr);
}
