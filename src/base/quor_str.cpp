#include "base/quor_str.h"

#include <locale.h>

#include <cstdio>

namespace {

// Sets the "C" locale's numbers for this thread, until the end of the scope.
class PlainNumbers {
 public:
  PlainNumbers() : m_before(uselocale(Plain())) {}
  ~PlainNumbers() { uselocale(m_before); }
  PlainNumbers(const PlainNumbers&) = delete;
  PlainNumbers& operator=(const PlainNumbers&) = delete;

 private:
  static locale_t Plain() {
    static const locale_t plain = newlocale(LC_ALL_MASK, "C", nullptr);
    return plain;
  }
  const locale_t m_before;
};

}  // namespace

namespace QuorStr {

std::string NumToStr(unsigned value) {
  return std::to_string(value);
}
std::string NumToStr(int value) {
  return std::to_string(value);
}
std::string NumToStr(std::uint64_t value) {
  return std::to_string(value);
}

std::string NumToStr(double value, const char* format) {
  const PlainNumbers plain;
  const long double number = value;
  // The format is the caller's: one conversion of a long double.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
  const int length = std::snprintf(nullptr, 0, format, number);
  if (length <= 0) return {};
  std::string text(static_cast<std::size_t>(length) + 1, '\0');
  std::snprintf(text.data(), text.size(), format, number);
#pragma GCC diagnostic pop
  text.pop_back();
  return text;
}

}  // namespace QuorStr
