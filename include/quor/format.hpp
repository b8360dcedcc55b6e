// The formatting of quor.hpp: each "{}" of a format takes the next argument. See quor.hpp.
#ifndef QUOR_FORMAT_HPP
#define QUOR_FORMAT_HPP

#include <charconv>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string_view>
#include <type_traits>

namespace quor {
namespace detail {

// A text that grows: first in the given buffer, then in allocated memory. If there is no memory the
// text is cut.
class Text {
 public:
  Text(char* room, std::size_t size) noexcept : m_small(room), m_data(room), m_room(size) {}
  ~Text() {
    if (m_data != m_small) std::free(m_data);
  }
  Text(const Text&) = delete;
  Text& operator=(const Text&) = delete;

  char* Data() noexcept { return m_data; }
  const char* Data() const noexcept { return m_data; }
  std::size_t Size() const noexcept { return m_size; }

  void Add(const char* text, std::size_t size) noexcept {
    if (m_room - m_size < size) size = Grow(size);
    if (size == 0) return;
    std::memcpy(m_data + m_size, text, size);
    m_size += size;
  }
  // Space for a number that to_chars or other code prints. Used says how many bytes it took.
  char* Room(std::size_t size) noexcept {
    return m_room - m_size >= size || Grow(size) == size ? m_data + m_size : nullptr;
  }
  void Used(std::size_t size) noexcept { m_size += size; }

 private:
  std::size_t Grow(std::size_t size) noexcept {
    const std::size_t room = 2 * m_room + size;
    char* const data = static_cast<char*>(std::malloc(room));
    if (!data) return m_room - m_size < size ? m_room - m_size : size;
    std::memcpy(data, m_data, m_size);
    if (m_data != m_small) std::free(m_data);
    m_data = data;
    m_room = room;
    return size;
  }
  char* const m_small;
  char* m_data;
  std::size_t m_size = 0, m_room;
};

// A text with a buffer of its own.
template <std::size_t N>
class TextOf : public Text {
 public:
  TextOf() noexcept : Text(m_bytes, N) {}

 private:
  char m_bytes[N];
};

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

template <class T>
void PrintAny(Text& to, const void* value) noexcept {
  const T& argument = *static_cast<const T*>(value);
  if constexpr (std::is_null_pointer_v<T>)
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
  else if constexpr (std::is_enum_v<T>)
    PrintNumber(to, static_cast<std::underlying_type_t<T>>(argument));
  else {
    static_assert(std::is_pointer_v<T>, "Quor prints numbers, texts, bool, char and pointers");
    Print(to, static_cast<const void*>(argument));
  }
}

struct Argument {
  const void* value;
  void (*print)(Text&, const void*) noexcept;
};

inline void Format(Text& to, std::string_view format, const Argument* arguments,
                   std::size_t count) noexcept {
  const char* at = format.data();
  const char* const end = at + format.size();
  const char* plain = at;
  for (; at + 1 < end; ++at) {
    const bool escaped = (at[0] == '{' && at[1] == '{') || (at[0] == '}' && at[1] == '}');
    const bool place = at[0] == '{' && at[1] == '}' && count != 0;
    if (!escaped && !place) continue;
    to.Add(plain, static_cast<std::size_t>(at - plain) + (escaped ? 1 : 0));
    if (place) {
      arguments->print(to, arguments->value);
      ++arguments;
      --count;
    }
    plain = ++at + 1;
  }
  to.Add(plain, static_cast<std::size_t>(end - plain));
}

template <class... T>
void FormatAll(Text& to, std::string_view format, const T&... arguments) noexcept {
  if constexpr (sizeof...(T) == 0) {
    to.Add(format.data(), format.size());
  } else {
    const Argument all[] = {{static_cast<const void*>(&arguments), &PrintAny<T>}...};
    Format(to, format, all, sizeof...(T));
  }
}

}  // namespace detail
}  // namespace quor

#endif
