#include "import/json/json_pull.h"

#include <algorithm>
#include <cstring>

#include "base/fail_with.h"

namespace {

constexpr std::size_t kBlockBytes = std::size_t{256} << 10;

bool IsSpace(char byte) {
  return byte == ' ' || byte == '\n' || byte == '\r' || byte == '\t';
}

bool IsOfNumber(char byte) {
  return (byte >= '0' && byte <= '9') || byte == '-' || byte == '+' || byte == '.' || byte == 'e' ||
         byte == 'E';
}

void AppendUtf8(std::string& to, unsigned code) {
  const auto byte = [&to](unsigned value) { to.push_back(static_cast<char>(value)); };
  if (code < 0x80) return byte(code);
  if (code < 0x800) {
    byte(0xC0 | code >> 6);
  } else {
    if (code < 0x10000) {
      byte(0xE0 | code >> 12);
    } else {
      byte(0xF0 | code >> 18);
      byte(0x80 | (code >> 12 & 63));
    }
    byte(0x80 | (code >> 6 & 63));
  }
  byte(0x80 | (code & 63));
}

}  // namespace

bool BeginsAsJson(std::string_view head) {
  const std::size_t first = std::min(head.find_first_not_of(" \t\r\n"), head.size());
  if (first == head.size() || (head[first] != '{' && head[first] != '[')) return false;
  return first == 0 || std::none_of(head.begin(), head.end(), [](char byte) {
           return static_cast<unsigned char>(byte) < ' ' && !IsSpace(byte);
         });
}

bool JsonPull::Refill() {
  m_linesBefore += static_cast<std::uint64_t>(std::count(m_begin, m_at, '\n'));
  m_before += static_cast<std::uint64_t>(m_at - m_begin);
  m_reader.Drop(static_cast<std::size_t>(m_at - m_begin));
  const std::string_view block = m_reader.PeekBytes(kBlockBytes);
  m_begin = m_at = block.data();
  m_end = m_begin + block.size();
  return !block.empty();
}

std::uint64_t JsonPull::Line() const {
  return 1 + m_linesBefore + static_cast<std::uint64_t>(std::count(m_begin, m_at, '\n'));
}

int JsonPull::PeekToken() {
  for (;;) {
    while (m_at < m_end && IsSpace(*m_at)) ++m_at;
    if (m_at < m_end) return static_cast<unsigned char>(*m_at);
    if (!Refill()) return -1;
  }
}

int JsonPull::TakeByte() {
  if (m_at == m_end && !Refill()) return -1;
  return static_cast<unsigned char>(*m_at++);
}

JsonPart JsonPull::Fail(const std::string& what) {
  m_isBad = true;
  m_why = "line " + std::to_string(Line()) + ", byte " + std::to_string(Place()) + ": " + what;
  return JsonPart::Bad;
}

JsonPart JsonPull::FailAtEnd() {
  if (m_reader.Error() != 0) return Fail(SystemReason(m_reader.Error()));
  m_isCut = true;
  return Fail("the input ends here, within a value");
}

JsonPart JsonPull::Next() {
  if (m_isBad) return JsonPart::Bad;
  for (;;) {
    const int next = PeekToken();
    if (next < 0 && m_open.empty() && m_reader.Error() == 0 && !m_reader.Stopped())
      return JsonPart::End;
    if (next < 0) return FailAtEnd();
    const char byte = static_cast<char>(next);
    if (m_expect != Expect::Value && (byte == ']' || byte == '}')) return Finish(byte);
    if (m_expect == Expect::CommaOrEnd) {
      if (byte != ',') return Fail("a comma or a closing bracket is missing");
      ++m_at;
      m_expect = m_open.back() == '{' ? Expect::KeyOrEnd : Expect::ValueOrEnd;
      continue;
    }
    return m_expect == Expect::KeyOrEnd ? ReadKey() : Value(byte);
  }
}

JsonPart JsonPull::Begin(char bracket) {
  if (m_open.size() == kDepthMax)
    return Fail("nested deeper than " + std::to_string(kDepthMax) + " brackets");
  ++m_at;
  m_open.push_back(bracket);
  m_expect = bracket == '{' ? Expect::KeyOrEnd : Expect::ValueOrEnd;
  return bracket == '{' ? JsonPart::BeginObject : JsonPart::BeginArray;
}

JsonPart JsonPull::Finish(char bracket) {
  const char open = bracket == '}' ? '{' : '[';
  if (m_open.empty() || m_open.back() != open) return Fail("a closing bracket that fits none");
  ++m_at;
  m_open.pop_back();
  m_expect = m_open.empty() ? Expect::Value : Expect::CommaOrEnd;
  return bracket == '}' ? JsonPart::EndObject : JsonPart::EndArray;
}

JsonPart JsonPull::Value(char first) {
  if (first == '{' || first == '[') return Begin(first);
  m_expect = m_open.empty() ? Expect::Value : Expect::CommaOrEnd;
  switch (first) {
    case '"':
      ++m_at;
      return ReadString() ? JsonPart::String : JsonPart::Bad;
    case 't':
      return Word("true", JsonPart::True);
    case 'f':
      return Word("false", JsonPart::False);
    case 'n':
      return Word("null", JsonPart::Null);
    case 'N':
      return Word("NaN", JsonPart::Number);
    case 'I':
      return Word("Infinity", JsonPart::Number);
    default:
      return IsOfNumber(first) ? Number() : Fail("no value begins so");
  }
}

JsonPart JsonPull::Word(std::string_view word, JsonPart part) {
  for (const char expected : word) {
    const int byte = TakeByte();
    if (byte < 0) return FailAtEnd();
    if (byte != expected) return Fail("no value begins so");
  }
  m_text = word;
  return part;
}

// Its form is left to whoever needs its value.
JsonPart JsonPull::Number() {
  m_stored.clear();
  for (;;) {
    const char* const from = m_at;
    while (m_at < m_end && IsOfNumber(*m_at)) ++m_at;
    const auto bytes = static_cast<std::size_t>(m_at - from);
    if (m_at < m_end && m_stored.empty()) {
      m_text = {from, bytes};
      break;
    }
    if (m_stored.size() + bytes > kTextBytesMax) return Fail("a number without end");
    m_stored.append(from, bytes);
    m_text = m_stored;
    if (m_at < m_end || !Refill()) break;
  }
  if (m_text == "-" && m_at < m_end && *m_at == 'I') {
    const JsonPart part = Word("Infinity", JsonPart::Number);
    m_text = "-Infinity";
    return part;
  }
  // One without a value around it ends with the input; any other was cut there.
  return m_at == m_end && !m_open.empty() ? FailAtEnd() : JsonPart::Number;
}

JsonPart JsonPull::ReadKey() {
  if (*m_at != '"') return Fail("a name in quotes is missing");
  ++m_at;
  if (!ReadString()) return JsonPart::Bad;
  if (m_text.data() != m_stored.data()) {
    m_stored = m_text;  // what follows may move the block
    m_text = m_stored;
  }
  const int colon = PeekToken();
  if (colon < 0) return FailAtEnd();
  if (colon != ':') return Fail("a colon is missing");
  ++m_at;
  m_expect = Expect::Value;
  return JsonPart::Key;
}

bool JsonPull::AppendBlock(std::size_t bytes) {
  if (m_stored.size() + bytes > kTextBytesMax) {
    Fail("a text of more than " + std::to_string(kTextBytesMax >> 20) + " MiB");
    return false;
  }
  m_stored.append(m_at, bytes);
  m_at += bytes;
  return true;
}

bool JsonPull::ReadString() {
  m_stored.clear();
  for (;;) {
    const char* end = m_at;
    while (end < m_end && *end != '"' && *end != '\\' && *end != '\n') ++end;
    const auto bytes = static_cast<std::size_t>(end - m_at);
    if (end < m_end && *end == '"' && m_stored.empty()) {
      m_text = {m_at, bytes};
      m_at = end + 1;
      return true;
    }
    if (!AppendBlock(bytes)) return false;
    if (m_at == m_end) {
      if (Refill()) continue;
      FailAtEnd();
      return false;
    }
    if (*m_at == '\n') {
      // A torn line must not take the next one with it.
      Fail("a line ends within a text");
      return false;
    }
    if (*m_at++ == '"') {
      m_text = m_stored;
      return true;
    }
    if (!ReadEscape()) return false;
  }
}

bool JsonPull::ReadEscape() {
  constexpr std::string_view kLetters = "\"\\/bfnrt", kBytes = "\"\\/\b\f\n\r\t";
  const int letter = TakeByte();
  if (letter < 0) {
    FailAtEnd();
    return false;
  }
  if (letter == 'u') return ReadUnicode();
  const std::size_t place = kLetters.find(static_cast<char>(letter));
  if (place == kLetters.npos) {
    Fail("no escape is written so");
    return false;
  }
  m_stored.push_back(kBytes[place]);
  return true;
}

bool JsonPull::ReadHex(unsigned& code) {
  code = 0;
  for (int digit = 0; digit < 4; ++digit) {
    const int byte = TakeByte();
    if (byte < 0) {
      FailAtEnd();
      return false;
    }
    const int small = byte | 0x20;
    const bool isDigit = byte >= '0' && byte <= '9';
    if (!isDigit && (small < 'a' || small > 'f')) {
      Fail("no escape is written so");
      return false;
    }
    code = code << 4 | static_cast<unsigned>(isDigit ? byte - '0' : small - 'a' + 10);
  }
  return true;
}

// A second half follows its first half at once; any other half stands for nothing.
bool JsonPull::ReadUnicode() {
  constexpr unsigned kReplacement = 0xFFFD;
  unsigned code = 0;
  if (!ReadHex(code)) return false;
  while (code >= 0xD800 && code < 0xDC00) {
    if (m_at == m_end && !Refill()) break;
    if (*m_at != '\\') break;
    ++m_at;
    const int letter = TakeByte();
    if (letter < 0) {
      FailAtEnd();
      return false;
    }
    if (letter != 'u') {
      --m_at;  // the byte was read from this block
      AppendUtf8(m_stored, kReplacement);
      return ReadEscape();
    }
    unsigned second = 0;
    if (!ReadHex(second)) return false;
    if (second >= 0xDC00 && second < 0xE000) {
      AppendUtf8(m_stored, 0x10000 + ((code - 0xD800) << 10 | (second - 0xDC00)));
      return true;
    }
    AppendUtf8(m_stored, kReplacement);
    code = second;
  }
  AppendUtf8(m_stored, code >= 0xD800 && code < 0xE000 ? kReplacement : code);
  return true;
}

bool JsonPull::Skip(JsonPart part) {
  if (part != JsonPart::BeginObject && part != JsonPart::BeginArray) return part != JsonPart::Bad;
  for (const std::size_t depth = m_open.size() - 1; m_open.size() > depth;)
    if (Next() == JsonPart::Bad) return false;
  return true;
}

bool JsonPull::NextLine() {
  m_open.clear();
  m_expect = Expect::Value;
  m_isBad = m_isCut = false;
  for (;;) {
    const void* const end =
        m_at == m_end ? nullptr : std::memchr(m_at, '\n', static_cast<std::size_t>(m_end - m_at));
    m_at = end ? static_cast<const char*>(end) : m_end;
    if (!end) {
      if (!Refill()) return false;
      continue;
    }
    ++m_at;
    if (m_at == m_end && !Refill()) return false;
    if (*m_at == '{') return true;
  }
}
