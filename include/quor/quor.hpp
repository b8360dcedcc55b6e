// Quor: tracing for any application. C++17 interface, on top of quor.h.
//
//   QUOR_APPLICATION("orders");
//   QUOR_POINT(net_connect, "Net", "Connect");
//   ...
//   QUOR_TRACE_INFO(net_connect, "connected to {} in {} ms", host, ms);
//   QUOR_TRACE_AT(net_connect, QUOR_WARN | QUOR_DEVELOPER, "second try");
//   QUOR_BLOCK(net_connect, "request {}", id);   // "Begin: request 7" ... "End: request 7"
//
// Shape    Declarations are at namespace scope. In a format each "{}" takes the next argument:
//          integers, floating-point numbers (the shortest form that reads back as the same number),
//          bool, char, enums, texts, pointers. "{{" and "}}" are braces. A text without arguments
//          is traced as it is.
//          "{:.2f}" and the like are formatted by fmt if one of its headers is included before this
//          one, else by std::format where it exists. So are types that only they can format.
//          A type of your own has a function in its namespace, as for a class Point:
//            void QuorText(quor::Text& to, const Point& p) { quor::FormatTo(to, "{}", p.x); }
// Errors   In C++20 a literal that has too few or too many arguments, or a spec that is wrong or
//          that nothing can format, does not compile. Formats of C++17, and those that are known
//          at run time only, never fail: a place without an argument stays as it is, an argument
//          without a place is left out, a spec that cannot be used is ignored. A null text or
//          format is "(null)". Nothing throws, also if QuorText does.
// Threads  As in quor.h. Formatting allocates memory only beyond 1,000 bytes, blocks beyond 240.
//
// Arguments are not evaluated while the point is off.
#ifndef QUOR_QUOR_HPP
#define QUOR_QUOR_HPP

#include "format.hpp"
#include "quor.h"

namespace quor {
namespace detail {
inline namespace QUOR_ABLED {

struct Declared {
  explicit Declared(quor_point* point) noexcept { quor_declare(point); }
};
struct Application {
  explicit Application(const char* name) noexcept { quor_application(name); }
};

template <class... T>
void Trace(quor_point& point, unsigned attributes, const char* file, unsigned line,
           FormatFor<T...> format, const T&... arguments) noexcept {
  if constexpr (sizeof...(T) == 0) {
    quor_trace(&point, attributes, file, line, format.Text().data(), format.Text().size());
  } else {
    TextOf<1000> text;
    FormatAll(text, format.Text(), arguments...);
    quor_trace(&point, attributes, file, line, text.Data(), text.Size());
  }
}

}  // namespace QUOR_ABLED
}  // namespace detail

inline namespace QUOR_ABLED {
// A scope that traces its beginning and its end. QUOR_BLOCK makes it. If the point was off at the
// beginning, the end is not traced either.
class Block {
 public:
  Block() noexcept {}
  template <class... T>
  Block(quor_point& point, unsigned attributes, const char* file, unsigned line,
        detail::FormatFor<T...> format, const T&... arguments) noexcept
      : m_point(&point), m_attributes(attributes), m_file(file), m_line(line) {
    m_text.Add("Begin: ", kBeginBytes);
    detail::FormatAll(m_text, format.Text(), arguments...);
    quor_trace(m_point, attributes, file, line, m_text.Data(), m_text.Size());
  }
  ~Block() {
    if (!m_point) return;
    // "Begin: x" becomes "End: x" in place.
    char* const end = m_text.Data() + kBeginBytes - kEndBytes;
    std::memcpy(end, "End: ", kEndBytes);
    quor_trace(m_point, m_attributes, m_file, m_line, end,
               m_text.Size() - (kBeginBytes - kEndBytes));
  }
  Block(const Block&) = delete;
  Block& operator=(const Block&) = delete;

 private:
  static constexpr std::size_t kBeginBytes = 7, kEndBytes = 5;
  quor_point* m_point = nullptr;
  unsigned m_attributes = 0;
  const char* m_file = nullptr;
  unsigned m_line = 0;
  detail::TextOf<240> m_text;  // small, because blocks nest deep; a longer one is allocated
};

}  // namespace QUOR_ABLED
}  // namespace quor

#define QUOR_APPLICATION(name) \
  static const ::quor::detail::Application QUOR_JOIN(quor_application_, __LINE__)(name)

#define QUOR_POINT(name, component, category)                    \
  static quor_point name = QUOR_POINT_INIT(component, category); \
  static const ::quor::detail::Declared name##_quor_declared(&name)

#undef QUOR_TRACE_AT
#define QUOR_TRACE_AT(point, attributes, ...)                                        \
  do {                                                                               \
    if (quor_on(&(point), (attributes)))                                             \
      ::quor::detail::Trace((point), (attributes), __FILE__, __LINE__, __VA_ARGS__); \
  } while (false)

// Traces at the beginning and at the end of the enclosing scope.
#define QUOR_BLOCK_AT(point, attributes, ...)                                     \
  const ::quor::Block QUOR_JOIN(quor_block_, __LINE__) =                          \
      quor_on(&(point), (attributes))                                             \
          ? ::quor::Block((point), (attributes), __FILE__, __LINE__, __VA_ARGS__) \
          : ::quor::Block()
#define QUOR_BLOCK(point, ...) QUOR_BLOCK_AT(point, QUOR_INFO, __VA_ARGS__)

#endif
