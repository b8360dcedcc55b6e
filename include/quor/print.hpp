// How the formatting of quor.hpp prints one argument. See quor.hpp.
#ifndef QUOR_PRINT_HPP
#define QUOR_PRINT_HPP

#include <charconv>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string_view>
#include <type_traits>
#include <utility>

#include "specs.hpp"
#include "text.hpp"

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
    Print(to, AddressOf(argument));
  else if constexpr (HasFormatter<T>()) {
    if (!PrintBySpec(to, argument, "{}")) to.Add("(its text failed)");
  } else {
    static_assert(
        std::is_enum_v<T>,
        "Quor prints numbers, texts, bool, char, enums and pointers; for a type of your own "
        "write void QuorText(quor::Text&, const Own&)");
    using Number = std::underlying_type_t<T>;
    PrintNumber(
        to, static_cast<std::conditional_t<std::is_same_v<Number, bool>, int, Number>>(argument));
  }
}

// `place` with its braces.
template <class T>
void PrintAny(Text& to, const void* value, std::string_view place) noexcept {
  if constexpr (std::is_volatile_v<T>) {
    const std::remove_volatile_t<T> now = *static_cast<const T*>(value);
    PrintAny<std::remove_volatile_t<T>>(to, &now, place);
  } else {
    const T& argument = *static_cast<const T*>(value);
    if (__builtin_expect(place.size() == 2, 1) || !PrintBySpec(to, argument, place))
      PrintPlain(to, argument);
  }
}

struct Argument {
  const void* value;
  void (*print)(Text&, const void*, std::string_view) noexcept;
};

}  // namespace QUOR_ABLED
}  // namespace detail
}  // namespace quor

#endif
