// The formatting of quor.hpp: each "{}" or "{:spec}" of a format takes the next argument. See
// quor.hpp.
#ifndef QUOR_FORMAT_HPP
#define QUOR_FORMAT_HPP

#include <cstddef>
#include <string_view>
#include <type_traits>

#include "print.hpp"

#ifdef __cpp_consteval
#define QUOR_CONSTEVAL consteval
#else
#define QUOR_CONSTEVAL constexpr
#endif

namespace quor {
namespace detail {
inline namespace QUOR_ABLED {

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
    const Argument all[] = {{AddressOf(__builtin_addressof(arguments)), &PrintAny<T>}...};
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
    if (place.size() != 2)
      ((at++ == places ? CheckSpec<std::remove_volatile_t<T>>(place) : void()), ...);
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
