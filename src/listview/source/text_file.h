// A text file as lines for an edit, and back into bytes.
//
// Shape    Bytes are UTF-8 if all of them are, else Latin-1. A line ends at "\r\n", "\n" or "\r".
// Errors   False and a reason for the user: the file cannot be read, is too large for an edit
//          control, or is not text.
// Threads  Touches only its arguments.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

struct TextFile {
  // An edit control lays out its text: with more than this the program would freeze.
  static constexpr std::size_t kLargestBytes = std::size_t{16} << 20;
  static constexpr std::size_t kLongestLineBytes = std::size_t{256} << 10;
  // An empty line has a layout too.
  static constexpr std::size_t kMostLines = 1'000'000;

  std::string text;  // UTF-8, "\n" between lines
  bool latin1 = false;
  bool mark = false;           // begins with the byte order mark of UTF-8
  std::string lineEnd = "\n";  // the most frequent one
};

bool ReadTextFile(const std::string& path, TextFile& file, std::string* why);
bool DecodeText(std::string_view bytes, TextFile& file, std::string* why);
// Encodes `text`, which came from `file` and may have been edited, like the file. A character that
// is not in Latin-1 makes the whole file UTF-8.
std::string EncodeText(const TextFile& file, std::string_view text);
