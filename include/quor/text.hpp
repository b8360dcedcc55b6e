// The text that formatting in quor.hpp writes to: see there.
#ifndef QUOR_TEXT_HPP
#define QUOR_TEXT_HPP

#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <string_view>

namespace quor {

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

  void Add(std::string_view text) noexcept { Add(text.data(), text.size()); }
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
  // Takes back what was added since Size() was `size`.
  void Cut(std::size_t size) noexcept { m_size = size; }

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

namespace detail {

// A text with a buffer of its own.
template <std::size_t N>
class TextOf : public Text {
 public:
  TextOf() noexcept : Text(m_bytes, N) {}

 private:
  char m_bytes[N];
};

}  // namespace detail
}  // namespace quor

#endif
