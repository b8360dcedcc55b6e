// Places with a spec, as "{:.2f}", are formatted by fmt or by std::format. See quor.hpp.
//
// fmt is taken if one of its headers was included before, else std::format if the standard library
// has it. QUOR_NO_STD_FORMAT leaves std::format out, whose header takes long to compile.
#ifndef QUOR_SPECS_HPP
#define QUOR_SPECS_HPP

#include <cstddef>
#include <cstring>
#include <iterator>
#include <string_view>
#include <type_traits>
#include <utility>
#if __has_include(<version>)
#include <version>
#endif

#include "text.hpp"
#include "types.h"

// Without exceptions a wrong spec of a format that is known at run time only would end the program.
#if defined(FMT_VERSION) && FMT_VERSION >= 80000 && defined(__cpp_exceptions)
#ifndef FMT_FORMAT_H_
#include <fmt/format.h>
#endif
#define QUOR_SPECS fmt
#elif defined(__cpp_lib_format) && !defined(QUOR_NO_STD_FORMAT) && defined(__cpp_exceptions)
#include <format>
#define QUOR_SPECS std
#else
#define QUOR_NO_SPECS
#define QUOR_SPECS none
#endif

// Sources of one program may differ in it, and in QUOR_DISABLE: what they instantiate needs
// different names.
#ifdef QUOR_DISABLE
#define QUOR_ABLED QUOR_JOIN(disabled_, QUOR_SPECS)
#else
#define QUOR_ABLED QUOR_JOIN(enabled_, QUOR_SPECS)
#endif

namespace quor {
namespace detail {
inline namespace QUOR_ABLED {

// In a check at compile time a call of one of these is an error whose message has its name.
void this_format_has_more_places_than_arguments();
void this_format_has_more_arguments_than_places();
void this_place_has_no_end_or_a_place_inside();
void a_spec_needs_std_format_or_fmt_included_before_quor();
void this_type_takes_no_spec();
void this_spec_is_wrong();

template <class T>
const void* AddressOf(T* pointer) noexcept {
  if constexpr (std::is_function_v<T>)
    return reinterpret_cast<const void*>(pointer);
  else
    return const_cast<const void*>(static_cast<const volatile void*>(pointer));
}

#ifdef QUOR_NO_SPECS

template <class T>
constexpr bool HasFormatter() {
  return false;
}

template <class T>
constexpr void CheckSpec(std::string_view) {
  a_spec_needs_std_format_or_fmt_included_before_quor();
}

template <class T>
bool PrintBySpec(Text&, const T&, std::string_view) noexcept {
  return false;
}

#else

namespace library = ::QUOR_SPECS;

template <class T>
constexpr bool HasFormatter() {
  if constexpr (std::is_array_v<T> || std::is_function_v<T>)
    return false;
  else
#ifdef FMT_VERSION
    // Before fmt 10 what becomes a number by itself, as an enum does, counts as formattable.
    return std::conjunction_v<std::is_default_constructible<library::formatter<T, char> >,
                              library::is_formattable<T, char> >;
#else
    return std::is_default_constructible_v<library::formatter<T, char> >;
#endif
}

// The argument as the library takes it, and never reads beyond it.
template <class T>
decltype(auto) ForLibrary(const T& value) noexcept {
  if constexpr (std::is_array_v<T>)
    return std::string_view(value, ::strnlen(value, sizeof(T)));
  else if constexpr (std::is_same_v<T, char*> || std::is_same_v<T, const char*>)
    return std::string_view(value ? value : "(null)");
  else if constexpr (std::is_null_pointer_v<T>)
    return static_cast<const void*>(nullptr);
  else if constexpr (std::is_pointer_v<T>)
    return AddressOf(value);
  else if constexpr (HasFormatter<T>())
    return (value);
  else if constexpr (std::is_convertible_v<const T&, std::string_view>)
    return std::string_view(value);
  else if constexpr (std::is_enum_v<T>)
    return static_cast<std::underlying_type_t<T> >(value);
  else
    return (value);
}

template <class T>
using LibraryType =
    std::remove_cv_t<std::remove_reference_t<decltype(ForLibrary(std::declval<const T&>()))> >;

template <class T>
constexpr bool kTakesSpec = HasFormatter<LibraryType<T> >();

// `place` with its braces.
template <class T>
constexpr void CheckSpec(std::string_view place) {
  if constexpr (kTakesSpec<T>) {
    library::format_parse_context spec(place.substr(2));
    library::formatter<LibraryType<T>, char> formatter;
    const auto end = formatter.parse(spec);
    if (end == spec.end() || *end != '}') this_spec_is_wrong();
  } else {
    this_type_takes_no_spec();
  }
}

// An output iterator that adds to a text.
class TextEnd {
 public:
  using iterator_category = std::output_iterator_tag;
  using value_type = void;
  using difference_type = std::ptrdiff_t;
  using pointer = void;
  using reference = void;
  explicit TextEnd(Text& to) noexcept : m_to(&to) {}
  TextEnd& operator=(char byte) noexcept {
    m_to->Add(&byte, 1);
    return *this;
  }
  TextEnd& operator*() noexcept { return *this; }
  TextEnd& operator++() noexcept { return *this; }
  TextEnd operator++(int) noexcept { return *this; }

 private:
  Text* m_to;
};

// False: the library refused this spec or had no memory, and nothing was added.
template <class T>
bool PrintBySpec(Text& to, const T& value, std::string_view place) noexcept {
  if constexpr (kTakesSpec<T>) {
    const std::size_t before = to.Size();
    try {
      decltype(auto) taken = ForLibrary(value);
      library::vformat_to(TextEnd(to), place, library::make_format_args(taken));
      return true;
    } catch (...) {
      to.Cut(before);
    }
  }
  return false;
}

#endif

}  // namespace QUOR_ABLED
}  // namespace detail
}  // namespace quor

#endif
