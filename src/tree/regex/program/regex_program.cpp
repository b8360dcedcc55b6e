#include "tree/regex/program/regex_program.h"

#include <array>

#include "tree/regex/program/regex_compiler.h"

RegexProgram RegexProgram::Compile(const char* pattern, const RegexOptions& options) {
  std::array<unsigned char, kRegexProgramBytes + kRegexSlackBytes> buffer;
  RegexCounts counts;
  unsigned char* const end =
      CompileRegex({pattern, 0, options.literal, options.ignoreCase, options.wordSearch},
                   buffer.data(), buffer.data() + kRegexProgramBytes, counts);
  return {std::vector<unsigned char>(buffer.data(), end), options, counts.anchored != 0};
}
