#include "tree/regex/program/regex_compiler.h"

#include <algorithm>
#include <cstring>
#include <string>

#include "tree/regex/program/ascii.h"

namespace {

enum RegexError : int {
  kNumberTooLarge = 11,
  kBadNumber = 16,
  kNoSuchGroup = 25,
  kUnbalanced = 42,
  kTooManyGroups = 43,
  kTooManyNumbers = 44,
  kBraceExpected = 45,
  kMaximumBelowMinimum = 46,
  kUnclosed = 49,
};

constexpr int kByteMax = 255;
constexpr unsigned char kTopBit = 0x80;

// The meaning of `\a` and the like; other characters mean themselves.
unsigned char Unescaped(unsigned char c) {
  switch (c) {
    case 'a':
      return '\a';
    case 'f':
      return '\f';
    case 'n':
      return '\n';
    case 'r':
      return '\r';
    case 't':
      return '\t';
    case 'v':
      return '\v';
    default:
      return c;
  }
}

class Compiler {
 public:
  Compiler(const RegexSource& source, unsigned char* buffer, unsigned char* bufferEnd,
           RegexCounts& counts)
      : m_pattern(reinterpret_cast<const unsigned char*>(source.pattern)),
        m_out(buffer),
        m_end(bufferEnd),
        m_delimiter(static_cast<unsigned char>(source.delimiter)),
        m_ignoreCase(source.ignoreCase),
        m_wordSearch(source.wordSearch),
        m_counts(counts) {}

  unsigned char* Literal() {
    for (;;) {
      NeedRoom();
      const unsigned char c = Next();
      if (c == m_delimiter) {
        Write(RX_END);
        return m_out;
      }
      NeedPattern(c);
      WritePlain(c);
    }
  }

  unsigned char* Expression() {
    if (!m_wordSearch && *m_pattern == '^') {
      m_counts.anchored = 1;
      ++m_pattern;
    }
    for (;;) {
      NeedRoom();
      const unsigned char c = Next();
      if (c != '*' && c != '+' && c != '?' && !(c == '\\' && *m_pattern == '{')) m_last = m_out;
      if (c == m_delimiter) break;
      NeedPattern(c);
      WriteItem(c);
    }
    Write(RX_END);
    if (m_openGroups > 0) RegexRaise(kUnbalanced);
    return m_out;
  }

 private:
  // ---- the pattern

  unsigned char Next() { return *m_pattern++; }
  // Never reads beyond the pattern's terminator, whatever the delimiter is.
  static void NeedPattern(unsigned char c) {
    if (c == 0) RegexRaise(kUnclosed);
  }

  // ---- the program

  std::ptrdiff_t Room() const { return m_end - m_out; }
  void NeedRoom() const {
    if (Room() <= 0) RegexRaise(kRegexTooLong);
  }
  void NeedRoomForSet() const {
    if (Room() <= static_cast<std::ptrdiff_t>(kRegexSetBytes) + 1) RegexRaise(kRegexTooLong);
  }
  void Write(int byte) { *m_out++ = static_cast<unsigned char>(byte); }
  void WriteZeros(std::size_t count) {
    std::memset(m_out, 0, count);
    m_out += count;
  }
  static void SetBit(unsigned char* map, unsigned char c) {
    map[c >> 3] = static_cast<unsigned char>(map[c >> 3] | 1u << (c & 7));
  }
  void SetBits(unsigned char* map, unsigned char c) const {
    SetBit(map, c);
    if (m_ignoreCase && IsAsciiLetter(c)) SetBit(map, c ^ kAsciiCaseBit);
  }
  void WritePlain(unsigned char c) {
    if (!m_ignoreCase || !IsAsciiLetter(c)) {
      Write(RX_CHAR);
      Write(c);
      return;
    }
    NeedRoomForSet();
    Write(RX_SET);
    unsigned char* const map = m_out;
    WriteZeros(kRegexSetBytes);
    SetBits(map, c);
  }

  // ---- items

  void WriteItem(unsigned char c) {
    switch (c) {
      case '$':
        if (m_wordSearch || *m_pattern == m_delimiter)
          Write(RX_END_OF_LINE);
        else
          WritePlain(c);
        break;
      case '.':
        Write(RX_ANY);
        break;
      case '[':
        WriteSet();
        break;
      case '*':
      case '+':
      case '?':
        WriteRepeat(c);
        break;
      case '\\':
        WriteEscaped(Next());
        break;
      default:
        WritePlain(c);
    }
  }

  void WriteEscaped(unsigned char c) {
    NeedPattern(c);
    if (c == '{') {
      WriteRange();
    } else if (c == '(') {
      OpenGroup();
    } else if (c == ')') {
      CloseGroup();
    } else if (c >= '1' && c <= '9') {
      if (c - '1' >= m_counts.closedGroups) RegexRaise(kNoSuchGroup);
      Write(RX_BACKREF);
      Write(c - '1');
    } else {
      WritePlain(Unescaped(c));
    }
  }

  // ---- repetitions

  void WriteRepeat(unsigned char c) {
    const bool repeats = m_last && *m_last != RX_GROUP_OPEN && *m_last != RX_GROUP_CLOSE &&
                         (*m_last & RX_RANGE) == 0;
    if (!repeats) {
      WritePlain(c);
      return;
    }
    MarkLast(c == '*' ? RX_STAR : c == '+' ? RX_PLUS : RX_RANGE);
    if (c != '?') return;
    Write(0);
    Write(1);
  }

  void MarkLast(RegexRepeat repeat) { *m_last = static_cast<unsigned char>(*m_last | repeat); }

  // Kept: group marks and back references take a range, unlike the other repetitions. That gives
  // opcodes that the matcher skips, and it reads the two numbers as opcodes; it is safe because
  // every program is decoded within bounds.
  void WriteRange() {
    if (!m_last || (*m_last & RX_RANGE) != 0) {
      WritePlain('{');
      return;
    }
    MarkLast(RX_RANGE);
    const bool maximum = WriteNumber() == ',';
    if (maximum && *m_pattern == '\\') {
      Next();
      Write(kRegexUnlimited);
    } else if (maximum && WriteNumber() == ',') {
      RegexRaise(kTooManyNumbers);
    }
    if (Next() != '}') RegexRaise(kBraceExpected);
    if (!maximum) Write(m_out[-1]);
    if (m_out[-1] < m_out[-2]) RegexRaise(kMaximumBelowMinimum);
  }

  // Returns the backslash or comma after the number.
  unsigned char WriteNumber() {
    int number = 0;
    for (bool first = true;; first = false) {
      const unsigned char c = Next();
      if (!first && (c == '\\' || c == ',')) {
        if (number > kByteMax) RegexRaise(kNumberTooLarge);
        Write(number);
        return c;
      }
      if (!IsAsciiDigit(c)) RegexRaise(kBadNumber);
      number = std::min(number * 10 + (c - '0'), kByteMax + 1);
    }
  }

  // ---- groups

  void OpenGroup() {
    if (m_counts.groupCount == kRegexGroups) RegexRaise(kTooManyGroups);
    m_groups[m_openGroups++] = m_counts.groupCount;
    Write(RX_GROUP_OPEN);
    Write(m_counts.groupCount++);
  }

  void CloseGroup() {
    if (m_openGroups == 0) RegexRaise(kUnbalanced);
    // Kept: a group inside a group fails here, at the inner close.
    if (++m_counts.closedGroups != m_counts.groupCount) RegexRaise(kUnbalanced);
    Write(RX_GROUP_CLOSE);
    Write(m_groups[--m_openGroups]);
  }

  // ---- sets

  void Widen(unsigned char* map, unsigned char c) {
    if (c < kTopBit || map[-1] != RX_SET) return;
    if (m_end - map <= static_cast<std::ptrdiff_t>(kRegexWideSetBytes)) RegexRaise(kRegexTooLong);
    map[-1] = RX_WIDE_SET;
    std::memset(map + kRegexSetBytes, 0, kRegexWideSetBytes - kRegexSetBytes);
  }

  void WriteSet() {
    NeedRoomForSet();
    Write(RX_SET);
    unsigned char* const map = m_out;
    std::memset(map, 0, kRegexSetBytes);
    const bool negated = *m_pattern == '^';
    if (negated) ++m_pattern;
    unsigned char previous = 0;
    unsigned char c = Next();  // an "]" as the first element is an ordinary character
    do {
      if (c == '\\') c = Unescaped(Next());
      NeedPattern(c);
      Widen(map, c);
      // Kept: an escaped "-" is a range too.
      if (c == '-' && previous != 0) {
        c = Next();
        NeedPattern(c);
        if (c == ']') {
          SetBits(map, '-');
          break;
        }
        Widen(map, c);
        SetRange(map, previous, c);
      }
      SetBits(map, c);
      previous = c;
      c = Next();
    } while (c != ']');
    FinishSet(map, negated);
  }

  // Without its last byte. Kept: an end from 128 on counts as negative, so that the range is empty.
  void SetRange(unsigned char* map, unsigned char first, unsigned char last) const {
    for (int c = first; c < static_cast<signed char>(last); ++c)
      SetBits(map, static_cast<unsigned char>(c));
  }

  // The zero byte, which represents the text's end, is never in a set.
  void FinishSet(unsigned char* map, bool negated) {
    const bool wide = map[-1] == RX_WIDE_SET;
    m_out = map + (wide ? kRegexWideSetBytes : kRegexSetBytes);
    if (!negated) return;
    if (wide) {
      for (unsigned char* byte = map; byte != m_out; ++byte)
        *byte = static_cast<unsigned char>(~*byte);
      *map &= 0xFE;
    } else {
      map[-1] = RX_NEG_SET;
      *map |= 1;
    }
  }

  const unsigned char* m_pattern;
  unsigned char* m_out;
  unsigned char* m_end;
  unsigned char* m_last = nullptr;  // opcode of the last item
  unsigned char m_delimiter;
  bool m_ignoreCase, m_wordSearch;
  RegexCounts& m_counts;
  int m_groups[kRegexGroups] = {};  // open groups, innermost last
  int m_openGroups = 0;
};

}  // namespace

void RegexRaise(int code) {
  throw "Regular expression parser error: " + std::to_string(code);
}

unsigned char* CompileRegex(const RegexSource& source, unsigned char* buffer,
                            unsigned char* bufferEnd, RegexCounts& counts) {
  counts = {};
  Compiler compiler(source, buffer, bufferEnd, counts);
  return source.literal ? compiler.Literal() : compiler.Expression();
}
