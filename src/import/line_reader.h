// The lines of a file, a pipe or a terminal, in one pass with bounded memory.
//
// Shape    A line has no line end: neither LF nor one CR before it. The last one may have none in
//          the input either. Of a line that is longer than kLineBytesMax only the beginning is
//          given.
// Owner    Borrows the descriptor. A line is valid until the next call.
// Errors   Next is false at the end, when reading fails (Error) and when `goOn` says no (Stopped).
// Threads  One.
#pragma once

#include <cstdint>
#include <functional>
#include <string_view>
#include <vector>

struct InputLine {
  std::string_view text;
  bool cut = false;  // only its beginning
};

class LineReader {
 public:
  // The longest line that a dump of one trace can have, with each byte as an escape, fits.
  static constexpr std::size_t kLineBytesMax = std::size_t{4} << 20;

  // `goOn` is asked before each read, and ten times a second while the input gives nothing.
  LineReader(int descriptor, std::function<bool()> goOn);

  bool Next(InputLine& line);
  // The first byte of the next line; -1 at the end. Waits for it.
  int Peek();
  // The next bytes, fewer only at the end. Waits for them. Valid
  // until the next call of anything else. For what stands between lines.
  std::string_view PeekBytes(std::size_t count);
  // REQUIRES: the last PeekBytes gave so many.
  void Drop(std::size_t count) { m_begin += count; }
  std::uint64_t BytesRead() const { return m_bytesRead; }
  int Error() const { return m_error; }  // errno
  bool Stopped() const { return m_stopped; }

 private:
  static constexpr std::size_t kBlockBytes = std::size_t{256} << 10;

  bool ReadMore();
  bool Wait();
  bool SkipRest();
  InputLine Take(std::size_t bytes, std::size_t lineEnd, bool cut);

  int m_descriptor;
  std::function<bool()> m_goOn;
  std::vector<char> m_buffer;
  std::size_t m_begin = 0, m_end = 0;  // the bytes that have been read and not given
  std::uint64_t m_bytesRead = 0;
  int m_error = 0;
  bool m_ended = false, m_stopped = false, m_skipping = false;
};
