// Standard output, written in big pieces or after a short while, and always in whole lines.
//
// Errors   Sticky. If the reader has closed the pipe, that is no failure: nothing more is written,
//          and the program ends with success. Any other failed write is a failure, and Finish
//          reports it on standard error.
// Threads  One at a time.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

class Output {
 public:
  Output() = default;
  Output(const Output&) = delete;
  Output& operator=(const Output&) = delete;

  // The text that is not written yet; a caller appends its line to it and then calls EndLine.
  std::string& Buffer() { return m_buffer; }
  // Ends the line. False when nothing more can or need be written: closed, failed or interrupted.
  bool EndLine() {
    m_buffer.push_back('\n');
    if (m_buffer.size() >= kPieceBytes) return Flush();
    return ++m_lines % kLinesPerLook != 0 || FlushWhenOld();
  }
  bool Line(std::string_view text) {
    m_buffer.append(text);
    return EndLine();
  }
  // Writes text that has waited for long, for a reader who follows the output. False as in EndLine.
  bool FlushWhenOld() { return m_buffer.empty() || Clock::now() - m_flushed < kOld || Flush(); }
  // Writes the waiting text. False as in EndLine.
  bool Flush();
  // Writes the rest and returns the exit status.
  int Finish();
  // How many could not be written whole.
  std::uint64_t LinesLost() const { return m_linesLost; }

 private:
  static constexpr std::size_t kPieceBytes = 256 * 1024;

  using Clock = std::chrono::steady_clock;
  static constexpr std::chrono::milliseconds kOld{20};
  static constexpr unsigned kLinesPerLook = 32;

  std::string m_buffer;
  unsigned m_lines = 0;
  std::uint64_t m_linesLost = 0;
  Clock::time_point m_flushed = Clock::now();
  int m_error = 0;  // errno of the failed write
};

// Prints "trc: " and the message to standard error. What a terminal would obey is made harmless.
void PrintError(std::string_view text);
