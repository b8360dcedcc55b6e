#include "statistics/text_pattern.h"

#include <algorithm>
#include <cstring>

#include "statistics/pattern_bytes.h"

// One text on its way.
class PatternMaker {
 public:
  PatternMaker(std::string_view text, char* to)
      : m_begin(text.data()), m_at(m_begin), m_end(m_begin + text.size()), m_first(to), m_to(to) {}

  std::size_t Make() {
    while (m_at < m_end && !m_isCut) {
      if (Made() >= kPatternBytes) {
        Put(PatternByte::kCut);
        break;
      }
      const std::uint8_t kind = ByteKind::Of(*m_at);
      if (kind & ByteKind::kWord)
        Word();
      else if (kind & ByteKind::kSpecial)
        Special();
      else
        Put(*m_at++);
    }
    return Made();
  }

 private:
  static constexpr std::size_t kHexWordMax = 64;
  static constexpr std::size_t kInWordMax = kPatternBytes + TextPattern::kWordBytes;

  std::size_t Made() const { return static_cast<std::size_t>(m_to - m_first); }
  void Put(char c) { *m_to++ = c; }
  bool IsAt(const char* at, std::uint8_t kind) const {
    return at < m_end && (ByteKind::Of(*at) & kind) != 0;
  }
  bool IsBehindWord() const { return m_at > m_begin && IsAt(m_at - 1, ByteKind::kWord); }

  // From the beginning of a word to its end, or to that of a number that goes on behind it. Most
  // words are short and have no digit: they are copied while they are looked at.
  void Word() {
    constexpr std::size_t kShort = 64;
    const char* const most = m_at + std::min(Left(), kShort);
    const char* end = m_at;
    char* to = m_to;
    std::uint8_t any = 0, all = 0xFF;
    for (; end < most; ++end) {
      const std::uint8_t kind = ByteKind::Of(*end);
      if (!(kind & ByteKind::kWord)) break;
      any |= kind;
      all &= kind;
      *to++ = *end;
    }
    const bool isShort = end < most || end == m_end;
    for (; IsAt(end, ByteKind::kWord); ++end) {
      any |= ByteKind::Of(*end);
      all &= ByteKind::Of(*end);
    }
    const bool isHex = (all & ByteKind::kHex) != 0;
    if (isShort && !isHex && !(any & ByteKind::kDigit)) {
      m_to = to;
      m_at = end;
      return;
    }
    const char* const behind = EndOfNumber(end, any, isHex);
    if (behind) {
      Put(PatternByte::kNumber);
      m_at = behind;
    }
    if (!behind || IsAt(m_at, ByteKind::kWord)) RestOfWord();
  }

  // Null: the word from m_at to `end` begins with none.
  const char* EndOfNumber(const char* end, std::uint8_t any, bool isHex) const {
    const auto length = static_cast<std::size_t>(end - m_at);
    if (isHex && length == 8 && IsUuid()) return m_at + kUuidBytes;
    if (!(any & ByteKind::kDigit)) return nullptr;
    const bool digit = IsAt(m_at, ByteKind::kDigit);
    if (digit && IsPrefixedHex(end)) return end;
    const char* const decimal = digit ? EndOfDecimal(m_at) : nullptr;
    if (decimal && !IsAt(decimal, ByteKind::kWord)) return decimal;
    if (isHex && (any & ByteKind::kHexLetter) && length <= kHexWordMax) return end;
    return decimal;
  }

  const char* EndOfDigits(const char* at) const {
    while (IsAt(at, ByteKind::kDigit)) ++at;
    return at;
  }
  const char* EndOfDecimal(const char* at) const {
    at = EndOfDigits(at);
    while (at < m_end && (*at == '.' || *at == ',') && IsAt(at + 1, ByteKind::kDigit))
      at = EndOfDigits(at + 1);
    if (at == m_end || (*at | 0x20) != 'e') return at;
    const char* exponent = at + 1;
    if (exponent < m_end && (*exponent == '+' || *exponent == '-')) ++exponent;
    return IsAt(exponent, ByteKind::kDigit) ? EndOfDigits(exponent) : at;
  }
  bool IsPrefixedHex(const char* end) const {
    return end - m_at > 2 && *m_at == '0' && (m_at[1] | 0x20) == 'x' &&
           std::all_of(m_at + 2, end, [](char c) { return ByteKind::Of(c) & ByteKind::kHex; });
  }
  static constexpr std::size_t kUuidBytes = 36;
  bool IsUuid() const {
    if (m_end - m_at < static_cast<std::ptrdiff_t>(kUuidBytes)) return false;
    for (std::size_t i = 0; i < kUuidBytes; ++i) {
      const bool line = i == 8 || i == 13 || i == 18 || i == 23;
      if (line ? m_at[i] != '-' : !IsAt(m_at + i, ByteKind::kHex)) return false;
    }
    return !IsAt(m_at + kUuidBytes, ByteKind::kWord);
  }

  // Only digits are left out.
  void RestOfWord() {
    while (IsAt(m_at, ByteKind::kWord)) {
      if (Made() >= kInWordMax) {
        Put(PatternByte::kCutInWord);
        m_isCut = true;
        return;
      }
      if (IsAt(m_at, ByteKind::kDigit)) {
        Put(PatternByte::kNumber);
        m_at = EndOfDigits(m_at);
      } else {
        Letters();
      }
    }
  }
  void Letters() {
    const char* const most = m_at + std::min<std::size_t>(kInWordMax - Made(), Left());
    const char* end = m_at;
    while (end < most &&
           (ByteKind::Of(*end) & (ByteKind::kWord | ByteKind::kDigit)) == ByteKind::kWord)
      ++end;
    // A character is not cut.
    const bool isFull = end == most;
    for (int i = 0; isFull && i < 3 && end < m_end && (*end & 0xC0) == 0x80; ++i) ++end;
    std::memcpy(m_to, m_at, static_cast<std::size_t>(end - m_at));
    m_to += end - m_at;
    m_at = end;
  }
  std::size_t Left() const { return static_cast<std::size_t>(m_end - m_at); }

  void Special() {
    const char c = *m_at;
    if (c == '+' || c == '-') {
      const bool sign = !IsBehindWord() && IsAt(m_at + 1, ByteKind::kDigit);
      ++m_at;
      if (sign)
        Word();
      else
        Put(c);
    } else if (c == '"') {
      Quoted(PatternByte::kQuoted, PatternByte::kQuotedOpen);
    } else if (c == '\'' && !IsBehindWord()) {
      Quoted(PatternByte::kApostrophed, PatternByte::kApostrophedOpen);
    } else {
      ++m_at;
      if (c == '\'') return Put(c);
      Put(PatternByte::kEscape);
      Put(static_cast<char>(c | PatternByte::kEscapedBit));
    }
  }
  void Quoted(char closed, char open) {
    const char quote = *m_at++;
    while (m_at < m_end && *m_at != quote) m_at += *m_at == '\\' && Left() > 1 ? 2 : 1;
    Put(m_at < m_end ? closed : open);
    if (m_at < m_end) ++m_at;
  }

  const char* const m_begin;
  const char* m_at;
  const char* const m_end;
  char* const m_first;
  char* m_to;
  bool m_isCut = false;
};

std::size_t TextPattern::Make(std::string_view text, char* to) {
  return PatternMaker(text, to).Make();
}
