// The formatting of quor.hpp: each "{}" or "{:spec}" of a format takes the next argument. See
// quor.hpp.
#ifndef QUOR_FORMAT_HPP
#define QUOR_FORMAT_HPP

#include <charconv>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string_view>
#include <type_traits>

#include "specs.hpp"
#include "text.hpp"

#ifdef __cpp_consteval
#define QUOR_CONSTEVAL consteval
#else
#define QUOR_CONSTEVAL constexpr
#endif

namespace quor {
namespace detail {
inline namespace QUOR_ABLED {

constexpr std::size_t kNumberBytes = 48;

inline void Print(Text& to, std::string_view text) noexcept {
  to.Add(text.data(), text.size());
}
inline void Print(Text& to, const char* text) noexcept {
  Print(to, std::string_view(text ? text : "(null)"));
}
inline void Print(Text& to, bool value) noexcept {
  Print(to, std::string_view(value ? "true" : "false"));
}
inline void Print(Text& to, char value) noexcept {
  to.Add(&value, 1);
}

template <class Number>
void PrintNumber(Text& to, Number value) noexcept {
  char* const room = to.Room(kNumberBytes);
  if (!room) return;
#if defined(__cpp_lib_to_chars)
  to.Used(static_cast<std::size_t>(std::to_chars(room, room + kNumberBytes, value).ptr - room));
#else
  if constexpr (std::is_floating_point_v<Number>)
    to.Used(static_cast<std::size_t>(
        std::snprintf(room, kNumberBytes, "%.17Lg", static_cast<long double>(value))));
  else
    to.Used(static_cast<std::size_t>(std::to_chars(room, room + kNumberBytes, value).ptr - room));
#endif
}

inline void Print(Text& to, const void* pointer) noexcept {
  char* const room = to.Room(kNumberBytes);
  if (!room) return;
  room[0] = '0';
  room[1] = 'x';
  const char* const end =
      std::to_chars(room + 2, room + kNumberBytes, reinterpret_cast<std::uintptr_t>(pointer), 16)
          .ptr;
  to.Used(static_cast<std::size_t>(end - room));
}

// The text of a type of the user's own: void QuorText(quor::Text&, const Own&), in its namespace.
template <class T, class = void>
constexpr bool kHasOwnText = false;
template <class T>
constexpr bool kHasOwnText<
    T, std::void_t<decltype(QuorText(std::declval<Text&>(), std::declval<const T&>()))>> = true;

template <class T>
void PrintOwn(Text& to, const T& value) noexcept {
#ifdef __cpp_exceptions
  try {
    QuorText(to, value);
  } catch (...) {
    to.Add("(its text failed)");
  }
#else
  QuorText(to, value);
#endif
}

template <class T>
void PrintPlain(Text& to, const T& argument) noexcept {
  if constexpr (kHasOwnText<T>)
    PrintOwn(to, argument);
  else if constexpr (std::is_null_pointer_v<T>)
    Print(to, static_cast<const void*>(nullptr));
  else if constexpr (std::is_convertible_v<const T&, std::string_view> && !std::is_pointer_v<T> &&
                     !std::is_array_v<T>)
    Print(to, std::string_view(argument));
  else if constexpr (std::is_array_v<T>)
    Print(to, std::string_view(argument, ::strnlen(argument, sizeof(T))));
  else if constexpr (std::is_same_v<T, bool> || std::is_same_v<T, char>)
    Print(to, argument);
  else if constexpr (std::is_arithmetic_v<T>)
    PrintNumber(to, argument);
  else if constexpr (std::is_same_v<T, char*> || std::is_same_v<T, const char*>)
    Print(to, static_cast<const char*>(argument));
  else if constexpr (std::is_pointer_v<T>)
    Print(to, static_cast<const void*>(argument));
  else if constexpr (HasFormatter<T>()) {
    if (!PrintBySpec(to, argument, "{}")) to.Add("(its text failed)");
  } else {
    static_assert(
        std::is_enum_v<T>,
        "Quor prints numbers, texts, bool, char, enums and pointers; for a type of your own "
        "write void QuorText(quor::Text&, const Own&)");
    PrintNumber(to, static_cast<std::underlying_type_t<T>>(argument));
  }
}

// `place` with its braces.
template <class T>
void PrintAny(Text& to, const void* value, std::string_view place) noexcept {
  const T& argument = *static_cast<const T*>(value);
  if (__builtin_expect(place.size() == 2, 1) || !PrintBySpec(to, argument, place))
    PrintPlain(to, argument);
}

struct Argument {
  const void* value;
  void (*print)(Text&, const void*, std::string_view) noexcept;
};

// Behind the "{}" or "{:spec}" that begins at `at`; null: none begins there.
constexpr const char* EndOfPlace(const char* at, const char* end) noexcept {
  if (at[1] == '}') return at + 2;
  if (at[1] != ':') return nullptr;
  for (at += 2; at != end && *at != '{'; ++at)
    if (*at == '}') return at + 1;
  return nullptr;
}

// Gives the parts of a format to `sink`: Plain(text), Place(text with braces), which says whether
// there is an argument for it, and NoPlace() for a "{:" that begins none.
template <class Sink>
constexpr void WalkFormat(std::string_view format, Sink& sink) {
  const char* at = format.data();
  const char* const end = at + format.size();
  const char* plain = at;
  for (; at + 1 < end; ++at) {
    if (*at != '{' && *at != '}') continue;
    if (at[1] == *at) {
      sink.Plain({plain, static_cast<std::size_t>(at + 1 - plain)});
      plain = ++at + 1;
      continue;
    }
    if (*at == '}') continue;
    const char* const behind = EndOfPlace(at, end);
    if (!behind) {
      if (at[1] == ':') sink.NoPlace();
      continue;
    }
    if (at != plain) sink.Plain({plain, static_cast<std::size_t>(at - plain)});
    plain = at;
    if (sink.Place({at, static_cast<std::size_t>(behind - at)})) plain = behind;
    at = behind - 1;
  }
  sink.Plain({plain, static_cast<std::size_t>(end - plain)});
}

struct PrintingSink {
  Text& to;
  const Argument* next;
  const Argument* end;
  void Plain(std::string_view text) noexcept { to.Add(text); }
  void NoPlace() noexcept {}
  bool Place(std::string_view place) noexcept {
    if (next == end) return false;
    next->print(to, next->value, place);
    ++next;
    return true;
  }
};

inline void Format(Text& to, std::string_view format, const Argument* arguments,
                   std::size_t count) noexcept {
  PrintingSink sink{to, arguments, arguments + count};
  WalkFormat(format, sink);
}

template <class... T>
void FormatAll(Text& to, std::string_view format, const T&... arguments) noexcept {
  if constexpr (sizeof...(T) == 0) {
    to.Add(format);
  } else {
    const Argument all[] = {{static_cast<const void*>(&arguments), &PrintAny<T>}...};
    Format(to, format, all, sizeof...(T));
  }
}

template <class... T>
struct CheckingSink {
  std::size_t places = 0;
  constexpr void Plain(std::string_view) {}
  constexpr void NoPlace() { this_place_has_no_end_or_a_place_inside(); }
  constexpr bool Place(std::string_view place) {
    if (places == sizeof...(T)) this_format_has_more_places_than_arguments();
    std::size_t at = 0;
    if (place.size() != 2) ((at++ == places ? CheckSpec<T>(place) : void()), ...);
    ++places;
    return true;
  }
};

inline std::string_view FormatOf(const char* format) noexcept {
  return format ? format : "(null)";
}
inline std::string_view FormatOf(std::string_view format) noexcept {
  return format;
}

// A format for arguments of the types T. A literal is checked at compile time, if the language has
// consteval. Other texts are known only at run time, and not checked.
template <class... T>
class FormatString {
 public:
  template <std::size_t N>
  QUOR_CONSTEVAL FormatString(const char (&literal)[N]) : m_text(literal) {
#ifdef __cpp_consteval
    CheckingSink<T...> sink;
    WalkFormat(m_text, sink);
    if (sink.places < sizeof...(T)) this_format_has_more_arguments_than_places();
#endif
  }
  template <std::size_t N>
  FormatString(char (&text)[N]) noexcept : m_text(text) {}
  template <class F, class = std::enable_if_t<std::is_convertible_v<const F&, std::string_view> &&
                                              !std::is_array_v<F>>>
  FormatString(const F& text) noexcept : m_text(FormatOf(text)) {}

  std::string_view Text() const noexcept {
    return m_text;
  }

 private:
  std::string_view m_text;
};

// Without arguments a text is taken as it is.
template <>
class FormatString<> {
 public:
  template <class F, class = std::enable_if_t<std::is_convertible_v<const F&, std::string_view>>>
  FormatString(const F& text) noexcept : m_text(FormatOf(text)) {}
  std::string_view Text() const noexcept { return m_text; }

 private:
  std::string_view m_text;
};

// Names a type where it is not to be deduced.
template <class T>
struct Same {
  using Type = T;
};
template <class... T>
using FormatFor = FormatString<typename Same<T>::Type...>;

}  // namespace QUOR_ABLED
}  // namespace detail

inline namespace QUOR_ABLED {

// For QuorText: adds a formatted text.
template <class... T>
void FormatTo(Text& to, detail::FormatFor<T...> format, const T&... arguments) noexcept {
  detail::FormatAll(to, format.Text(), arguments...);
}

}  // namespace QUOR_ABLED
}  // namespace quor

#endif
