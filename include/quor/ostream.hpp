// Each line that is written to a std::ostream becomes a trace.
//
//   QUOR_POINT(import_rows, "Import", "Rows");
//   quor::OStream out(import_rows, QUOR_INFO);             // a stream of your own
//   quor::Redirect log(std::clog, import_rows, QUOR_WARN); // or what std::clog gets, in this scope
//
// Shape    A line ends at '\n', not at a flush. What is left goes out with the buffer's end. A line
//          of more than 65,535 bytes becomes several traces.
// Owner    Borrows the point and the stream that is redirected.
// Errors   Nothing throws. Without memory a part of a line is left out.
// Threads  Several threads may write to a redirected std::clog, as without: each has a line of its
//          own. An OStream is for one thread at a time, as any stream.
#ifndef QUOR_OSTREAM_HPP
#define QUOR_OSTREAM_HPP

#include <map>
#include <mutex>
#include <ostream>
#include <streambuf>
#include <string>
#include <string_view>
#include <thread>

#include "quor.h"

namespace quor {

class LineBuffer final : public std::streambuf {
 public:
  LineBuffer(quor_point& point, unsigned attributes) noexcept
      : m_point(&point), m_attributes(attributes) {}
  ~LineBuffer() override {
    for (const auto& [thread, line] : m_lines) Trace(line);
  }
  LineBuffer(const LineBuffer&) = delete;
  LineBuffer& operator=(const LineBuffer&) = delete;

 protected:
  int_type overflow(int_type byte) override {
    if (traits_type::eq_int_type(byte, traits_type::eof())) return traits_type::not_eof(byte);
    const char text = traits_type::to_char_type(byte);
    xsputn(&text, 1);
    return byte;
  }
  std::streamsize xsputn(const char* text, std::streamsize size) override {
    Take({text, static_cast<std::size_t>(size)});
    return size;
  }

 private:
  static constexpr std::size_t kLongestLine = 65535;

  void Take(std::string_view text) noexcept {
#ifdef __cpp_exceptions
    try {
      TakeLines(text);
    } catch (...) {  // no memory
    }
#else
    TakeLines(text);
#endif
  }
  void TakeLines(std::string_view text) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    auto begun = m_lines.find(std::this_thread::get_id());
    for (auto end = text.find('\n'); end != text.npos; end = text.find('\n')) {
      if (begun == m_lines.end()) {
        Trace(text.substr(0, end));
      } else {
        begun->second.append(text, 0, end);
        Trace(begun->second);
        m_lines.erase(begun);
        begun = m_lines.end();
      }
      text.remove_prefix(end + 1);
    }
    if (text.empty()) return;
    if (begun == m_lines.end()) begun = m_lines.try_emplace(std::this_thread::get_id()).first;
    begun->second.append(text);
    if (begun->second.size() <= kLongestLine) return;
    Trace(begun->second);
    m_lines.erase(begun);
  }
  void Trace(std::string_view line) noexcept {
    while (!line.empty() && quor_on(m_point, m_attributes)) {
      std::size_t size = line.size();
      if (size > kLongestLine)  // cut between two characters
        for (size = kLongestLine; size > kLongestLine - 3 && (line[size] & 0xC0) == 0x80;) --size;
      quor_trace(m_point, m_attributes, nullptr, 0, line.data(), size);
      line.remove_prefix(size);
    }
  }

  quor_point* const m_point;
  const unsigned m_attributes;
  std::mutex m_mutex;
  std::map<std::thread::id, std::string> m_lines;  // begun and without an end
};

namespace detail {
struct OwnsLineBuffer {
  OwnsLineBuffer(quor_point& point, unsigned attributes) noexcept : buffer(point, attributes) {}
  LineBuffer buffer;
};
}  // namespace detail

class OStream : private detail::OwnsLineBuffer, public std::ostream {
 public:
  OStream(quor_point& point, unsigned attributes)
      : OwnsLineBuffer(point, attributes), std::ostream(&buffer) {}
};

// The stream gets its former buffer back at the end.
class Redirect {
 public:
  Redirect(std::ostream& stream, quor_point& point, unsigned attributes)
      : m_buffer(point, attributes), m_stream(stream), m_before(stream.rdbuf(&m_buffer)) {}
  ~Redirect() { m_stream.rdbuf(m_before); }
  Redirect(const Redirect&) = delete;
  Redirect& operator=(const Redirect&) = delete;

 private:
  LineBuffer m_buffer;
  std::ostream& m_stream;
  std::streambuf* const m_before;
};

}  // namespace quor

#endif
