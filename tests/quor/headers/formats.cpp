// What formats print, with each of the things that may format them. headers_test.py compiles it
// with several compilers, versions of the language and definitions. Prints what is wrong and exits
// 1 then.
#ifdef WITH_FMT
#include <fmt/chrono.h>
#include <fmt/format.h>
#include <fmt/ranges.h>
#endif

#include <chrono>
#include <cstdio>
#include <quor/quor.hpp>
#include <stdexcept>
#include <string>
#include <vector>

#if (defined(WITH_FMT) || defined(WITH_STD)) == defined(QUOR_NO_SPECS)
#error "specs are formatted by something else than is meant"
#endif

namespace shapes {

struct Point {
  int x, y;
};
void QuorText(quor::Text& to, const Point& point) {
  quor::FormatTo(to, "({}, {})", point.x, point.y);
}

enum class Colour { Red, Blue };
void QuorText(quor::Text& to, Colour colour) {
  to.Add(colour == Colour::Red ? "red" : "blue");
}

struct Fails {};
void QuorText(quor::Text& to, const Fails&) {
  to.Add("half ");
  throw std::runtime_error("no text");
}

}  // namespace shapes

namespace {

enum class Level : unsigned char { High = 3 };
#if defined(__clang__) && defined(WITH_FMT)
enum class Plain { kFirst = 1, kSecond };  // for another, clang warns of a line inside of fmt 9
constexpr Plain kSecond = Plain::kSecond;
#else
enum Plain { kFirst = 1, kSecond };
#endif
enum class Truth : bool { No, Yes };
struct HidesItsAddress {
  int value;
  HidesItsAddress* operator&() const { return nullptr; }
};
void QuorText(quor::Text& to, const HidesItsAddress& hides) {
  quor::FormatTo(to, "hides {}", hides.value);
}
QUOR_POINT(point, "Net", "Connect");
int g_failures = 0;

template <class... T>
std::string Formatted(quor::detail::FormatFor<T...> format, const T&... arguments) {
  quor::detail::TextOf<20> text;  // small, so that some of the texts grow
  quor::detail::FormatAll(text, format.Text(), arguments...);
  return {text.Data(), text.Size()};
}

void Expect(const std::string& given, const std::string& wanted) {
  if (given == wanted) return;
  std::printf("given '%s', wanted '%s'\n", given.c_str(), wanted.c_str());
  ++g_failures;
}

void TypesOfTheUsersOwn() {
  Expect(Formatted("{} {}", shapes::Point{1, -2}, shapes::Colour::Blue), "(1, -2) blue");
  Expect(Formatted("{}|{}", shapes::Fails(), 7), "half (its text failed)|7");
  Expect(Formatted("{}", Level::High), "3");
}

void ArgumentsThatAreSeldomTraced() {
  volatile int counter = 7;
  volatile bool flag = true;
  const volatile void* const nowhere = nullptr;
  Expect(Formatted("{} {}|{}|{}", kSecond, Truth::Yes, counter, flag), "2 1|7|true");
  Expect(Formatted("{} {}", nowhere, HidesItsAddress{3}), "0x0 hides 3");
  Expect(Formatted("{}", &ArgumentsThatAreSeldomTraced).substr(0, 2), "0x");
#ifndef QUOR_NO_SPECS
  Expect(Formatted("{:02}|{:02}|{:d}", kSecond, counter, Truth::Yes), "02|07|1");
#endif
}

void TextsThatAreKnownAtRunTimeOnly() {
  const char* const none = nullptr;
  char array[16] = "{:>3}|{}";
  const std::string missing = "{} {} {:x}", surplus = "{}", open = "{:x {}", inside = "{:{}}|{}";
  Expect(Formatted(missing, 1), "1 {} {:x}");
  Expect(Formatted(surplus, 1, 2), "1");
  Expect(Formatted(none, 1), "(null)");
  Expect(Formatted(open, 1), "{:x 1");
  Expect(Formatted(inside, 1, 2), "{:1}|2");
  Expect(Formatted(std::string_view("{"), 1), "{");
  Expect(Formatted(std::string_view("{:"), 1), "{:");
#ifdef QUOR_NO_SPECS
  Expect(Formatted(array, 5, "z"), "5|z");  // the argument stays, also where its spec is unused
#else
  Expect(Formatted(array, 5, "z"), "  5|z");
#endif
  // A spec that is wrong, or not for this type.
  Expect(Formatted(std::string("{:.2q} {:x} {:.1f}"), 1.5, "text", shapes::Point{1, 2}),
         "1.5 text (1, 2)");
}

#ifndef QUOR_NO_SPECS
void Specs() {
  const char* const none = nullptr;
  const char whole[3] = {'a', 'b', 'c'};  // without an end
  Expect(Formatted("{:.2f}|{:08.3f}|{:e}", 2.0, 3.14159, 12345.678f), "2.00|0003.142|1.234568e+04");
  Expect(Formatted("{:x}|{:#06x}|{:+}|{:b}", 255u, 255, 7L, static_cast<unsigned char>(5)),
         "ff|0x00ff|+7|101");
  Expect(
      Formatted("{:>5}|{:<5}|{:^5}|{:*>5}", "ab", std::string("ab"), std::string_view("ab"), 'c'),
      "   ab|ab   | ab  |****c");
  Expect(Formatted("{:>7}|{:>4}|{:d}|{:d}", none, whole, true, Level::High), " (null)| abc|1|3");
  Expect(Formatted("{:>6}", static_cast<void*>(nullptr)), "   0x0");
  Expect(Formatted("{{{:.1f}}} {}", 0.25, 0.25), "{0.2} 0.25");
  Expect(Formatted("{:>400}", 1), std::string(399, ' ') + "1");
}
#endif

#ifdef WITH_FMT
struct FailsInFmt {};
}  // namespace

template <>
struct fmt::formatter<FailsInFmt> : fmt::formatter<int> {
  template <class Context>
  auto format(const FailsInFmt&, Context& context) const {
    fmt::format_to(context.out(), "{}", std::string(1000, 'x'));
    if (g_failures == 0) throw std::runtime_error("no text");
    return context.out();
  }
};

namespace {
void TypesThatOnlyTheLibraryFormats() {
  Expect(Formatted("{} {:%H:%M}", std::chrono::milliseconds(5), std::chrono::minutes(61)),
         "5ms 01:01");
  Expect(Formatted("{} {::02}", std::vector<int>{1, 2}, std::vector<int>{3, 4}), "[1, 2] [03, 04]");
  Expect(Formatted("{}|{:3}|{}", FailsInFmt(), FailsInFmt(), 7),
         "(its text failed)|(its text failed)|7");
}
#endif

// Compiled without its traces it evaluates nothing, and checks all the same.
void Traces() {
  int evaluated = 0;
  const std::string text = "as it is {}";
  const char constant[] = "as it is {}";
  QUOR_TRACE_INFO(point, text);
  QUOR_TRACE_INFO(point, constant);
  QUOR_TRACE_WARN(point, "{} {}", ++evaluated, shapes::Point{1, 2});
  QUOR_BLOCK(point, "{}", ++evaluated);
  if (evaluated != 0) Expect("evaluated", "not evaluated");
}

}  // namespace

int main() {
  TypesOfTheUsersOwn();
  ArgumentsThatAreSeldomTraced();
  TextsThatAreKnownAtRunTimeOnly();
#ifndef QUOR_NO_SPECS
  Specs();
#endif
#ifdef WITH_FMT
  TypesThatOnlyTheLibraryFormats();
#endif
  Traces();
  return g_failures == 0 ? 0 : 1;
}
