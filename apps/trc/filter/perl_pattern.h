// A Perl expression (PCRE2) that texts are searched for.
//
// Shape    Texts are UTF-8; malformed bytes match nothing but do not end a search.
// Owner    Holds the compiled expression.
// Errors   A search of more than kStepsMax steps is given up: no match, and counted.
// Threads  One.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

class PerlPattern {
 public:
  static constexpr std::uint32_t kStepsMax = 10'000'000;
  struct Way {
    bool ignoreCase = false;
    bool words = false;  // what matches has no letter, digit or "_" on either side
  };

  // Null and a reason with the place: it is no expression.
  static std::unique_ptr<PerlPattern> Make(const std::string& expression, Way way,
                                           std::string* why);
  ~PerlPattern();
  PerlPattern(const PerlPattern&) = delete;
  PerlPattern& operator=(const PerlPattern&) = delete;

  bool OccursIn(std::string_view text);
  // How many texts were given up.
  std::uint64_t GivenUp() const { return m_givenUp; }

 private:
  struct Compiled;
  PerlPattern();
  std::unique_ptr<Compiled> m_compiled;
  std::uint64_t m_givenUp = 0;
};
