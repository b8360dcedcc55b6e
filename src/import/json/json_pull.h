// The tokens of JSON values in an input of any length, one after the other, with bounded memory.
//
// Shape    Any number of values follow each other. What other writers get nearly right is read
//          too: control characters in texts but for line ends, a comma before a closing bracket,
//          half a pair of surrogates (U+FFFD), NaN and Infinity as numbers. Malformed UTF-8 stays
//          as it is.
// Owner    Borrows the reader. A text is valid until the next call.
// Errors   Bad, and Why with the place: what comes is no JSON, nested deeper than kDepthMax, has a
//          text of more than kTextBytesMax, or ends within a value (IsCut), or reading fails.
// Threads  One.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "import/line_reader.h"

enum class JsonPart {
  BeginObject,
  EndObject,
  BeginArray,
  EndArray,
  Key,
  String,
  Number,
  True,
  False,
  Null,
  End,  // of the input, between two values
  Bad
};

// May an input with these first bytes be JSON, with an object or an array first? A message of
// protobuf may begin with the bytes of a line end and a brace, but has bytes that no text has.
bool BeginsAsJson(std::string_view head);

class JsonPull {
 public:
  static constexpr std::size_t kDepthMax = 100;
  static constexpr std::size_t kTextBytesMax = std::size_t{16} << 20;

  explicit JsonPull(LineReader& reader) : m_reader(reader) {}
  ~JsonPull() { m_reader.Drop(static_cast<std::size_t>(m_at - m_begin)); }
  JsonPull(const JsonPull&) = delete;
  JsonPull& operator=(const JsonPull&) = delete;

  JsonPart Next();
  // Of a key, a string or a number.
  std::string_view Text() const { return m_text; }
  // Reads on to the end of the value that began with the last part.
  bool Skip(JsonPart part);
  // After Bad: goes to the next line that begins with a brace. False: there is none.
  bool NextLine();

  // Of what has been read: bytes, and lines from 1.
  std::uint64_t Place() const { return m_before + static_cast<std::uint64_t>(m_at - m_begin); }
  std::uint64_t Line() const;
  std::size_t Depth() const { return m_open.size(); }
  bool IsCut() const { return m_isCut; }
  const std::string& Why() const { return m_why; }

 private:
  enum class Expect { Value, ValueOrEnd, KeyOrEnd, CommaOrEnd };

  bool Refill();
  // The next byte that is no space; -1 at the end.
  int PeekToken();
  JsonPart Fail(const std::string& what);
  JsonPart FailAtEnd();
  JsonPart Begin(char bracket);
  JsonPart Finish(char bracket);
  JsonPart Value(char first);
  JsonPart Word(std::string_view word, JsonPart part);
  JsonPart Number();
  JsonPart ReadKey();
  bool ReadString();
  bool ReadEscape();
  bool ReadUnicode();
  bool ReadHex(unsigned& code);
  bool AppendBlock(std::size_t bytes);
  int TakeByte();

  LineReader& m_reader;
  const char* m_begin = nullptr;  // of the block
  const char* m_at = nullptr;
  const char* m_end = nullptr;
  std::uint64_t m_before = 0, m_linesBefore = 0;  // the block
  std::vector<char> m_open;                       // brackets
  Expect m_expect = Expect::Value;
  std::string_view m_text;
  std::string m_stored;
  std::string m_why;
  bool m_isCut = false, m_isBad = false;
};
