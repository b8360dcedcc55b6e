// The bytes of a chunked body, out of the bytes of a connection.
//
// Shape    Each piece has its size in hexadecimal digits, perhaps extensions, which are skipped,
//          and CR LF at its end. The body ends with a piece of size 0 and trailer lines, which are
//          checked and dropped.
// Errors   Failed for what is not of that shape, TooLong beyond a bound; then it takes no more.
//          Lines and trailer are bounded, and so is all that is not body.
// Threads  One.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "base/bytes.h"

class ChunkedBody {
 public:
  static constexpr std::size_t kLineBytesMax = 1024, kTrailerBytesMax = 8192;
  // Of the lines of one body: a peer must not be busy for long with a body of few bytes.
  static constexpr std::size_t kOverheadBytesMax = 8u << 20;
  enum class State { Going, Complete, Failed, TooLong };

  void Begin(std::size_t bytesMax);
  // Appends what is body. Returns how many bytes it has used: all of them while it is Going.
  std::size_t Feed(Bytes bytes, std::vector<std::uint8_t>& body);
  State Now() const { return m_state; }
  const std::string& Why() const { return m_why; }

 private:
  enum class Part { Size, Data, AfterData, Trailer };
  void Fail(const char* why, State state = State::Failed);
  std::size_t FeedLine(Bytes bytes);
  std::size_t FeedData(Bytes bytes, std::vector<std::uint8_t>& body);
  void TakeLine();
  void TakeSize();
  void TakeTrailerLine();

  State m_state = State::Going;
  Part m_part = Part::Size;
  std::size_t m_room = 0, m_left = 0, m_overhead = 0, m_trailer = 0;
  std::string m_line, m_why;
};
