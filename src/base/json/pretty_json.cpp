#include "base/json/pretty_json.h"

#include <algorithm>
#include <array>

#include "base/json/json_tokens.h"

namespace {

// A text with more beginnings of JSON that are none is no JSON.
constexpr int kBeginningsTried = 64;
constexpr std::size_t kIndent = 2;

struct Token {
  JsonToken kind;
  std::size_t begin, end;
};

// One value: an object or an array, checked as a whole, with its tokens.
class JsonValue {
 public:
  // False: no value begins here. End() is then where that was seen.
  bool Read(std::string_view text, std::size_t begin) {
    m_tokens.clear();
    m_strings = false;
    m_depth = 0;
    m_end = begin;
    Want want = Want::Value;
    do {
      const std::size_t at = SkipJsonSpace(text, m_end);
      Token token{JsonToken::None, at, 0};
      token.end = EndOfToken(text, at, token.kind);
      m_end = std::max(token.end, m_end);
      if (token.kind == JsonToken::None || !Take(text[at], token.kind, want)) return false;
      m_tokens.push_back(token);
    } while (m_depth > 0);
    return true;
  }
  std::size_t End() const { return m_end; }
  bool HasStrings() const { return m_strings; }
  const std::vector<Token>& Tokens() const { return m_tokens; }

 private:
  enum class Want { Value, ValueOrClose, Name, NameOrClose, Colon, CommaOrClose };

  bool Take(char first, JsonToken kind, Want& want) {
    const bool mayClose =
        want == Want::ValueOrClose || want == Want::NameOrClose || want == Want::CommaOrClose;
    const bool value = want == Want::Value || want == Want::ValueOrClose;
    const bool name = want == Want::Name || want == Want::NameOrClose;
    m_strings |= kind == JsonToken::String;
    switch (kind) {
      case JsonToken::Open:
        if (!value || m_depth == PrettyJson::kDeepest) return false;
        m_open[static_cast<std::size_t>(m_depth++)] = first;
        want = first == '{' ? Want::NameOrClose : Want::ValueOrClose;
        return true;
      case JsonToken::Close:
        if (!mayClose || (Innermost() == '{') != (first == '}')) return false;
        --m_depth;
        want = Want::CommaOrClose;
        return true;
      case JsonToken::Comma:
        if (want != Want::CommaOrClose) return false;
        want = Innermost() == '{' ? Want::Name : Want::Value;
        return true;
      case JsonToken::Colon:
        if (want != Want::Colon) return false;
        want = Want::Value;
        return true;
      default:
        if (!value && !(name && kind == JsonToken::String)) return false;
        want = name ? Want::Colon : Want::CommaOrClose;
        return true;
    }
  }
  char Innermost() const { return m_open[static_cast<std::size_t>(m_depth - 1)]; }

  std::vector<Token> m_tokens;
  std::array<char, PrettyJson::kDeepest> m_open = {};
  int m_depth = 0;
  std::size_t m_end = 0;
  bool m_strings = false;
};

class PrettyWriter {
 public:
  explicit PrettyWriter(std::string_view text) : m_text(text) {}

  void Move(std::size_t begin, std::size_t end) {
    if (begin == end) return;
    m_made.moved.push_back({begin, m_made.text.size(), end - begin});
    m_made.text += m_text.substr(begin, end - begin);
  }
  // Text around the JSON.
  void Around(std::size_t begin, std::size_t end) {
    if (SkipJsonSpace(m_text.substr(0, end), begin) == end) return;
    if (!m_made.text.empty()) NewLine(0);
    Move(begin, end);
  }
  void Value(const std::vector<Token>& tokens) {
    if (!m_made.text.empty() && m_made.text.back() != '\n') NewLine(0);
    std::size_t depth = 0;
    for (std::size_t i = 0; i < tokens.size() && !IsTooLarge(); ++i) {
      const Token& token = tokens[i];
      const bool empty = i > 0 && tokens[i - 1].kind == JsonToken::Open;
      if (token.kind == JsonToken::Close && depth-- > 0 && !empty) NewLine(depth);
      Move(token.begin, token.end);
      if (token.kind == JsonToken::Colon) m_made.text += ' ';
      if (token.kind == JsonToken::Comma) NewLine(depth);
      if (token.kind == JsonToken::Open && tokens[i + 1].kind != JsonToken::Close)
        NewLine(depth + 1);
      depth += token.kind == JsonToken::Open ? 1 : 0;
    }
  }
  bool IsTooLarge() const { return m_made.text.size() > PrettyJson::kLargest; }
  PrettyJson Take() { return std::move(m_made); }

 private:
  void NewLine(std::size_t depth) {
    m_made.text += '\n';
    m_made.text.append(depth * kIndent, ' ');
  }

  const std::string_view m_text;
  PrettyJson m_made;
};

bool IsWhole(std::string_view text, std::size_t begin, std::size_t end) {
  return SkipJsonSpace(text, 0) == begin && SkipJsonSpace(text, end) == text.size();
}

}  // namespace

std::optional<PrettyJson> PrettyJsonOf(std::string_view text) {
  PrettyWriter writer(text);
  JsonValue value;
  std::size_t told = 0;  // the bytes before it are written
  bool found = false;
  int tries = 0;
  for (std::size_t at = 0; tries < kBeginningsTried; ++tries) {
    at = text.find_first_of("{[", at);
    if (at == std::string_view::npos) break;
    const bool read = value.Read(text, at);
    const bool taken =
        read && value.Tokens().size() > 2 && (value.HasStrings() || IsWhole(text, at, value.End()));
    if (taken) {
      writer.Around(told, at);
      writer.Value(value.Tokens());
      told = value.End();
      found = true;
    }
    at = std::max(value.End(), at + 1);
  }
  if (!found) return std::nullopt;
  writer.Around(told, text.size());
  if (writer.IsTooLarge()) return std::nullopt;
  return writer.Take();
}

std::size_t PrettyJson::PlaceOf(std::size_t from) const {
  const auto piece = std::ranges::partition_point(
      moved, [from](const MovedBytes& each) { return each.from + each.length <= from; });
  if (piece == moved.end()) return text.size();
  return piece->to + (from > piece->from ? from - piece->from : 0);
}

std::size_t PrettyJson::EndOf(std::size_t from) const {
  const auto behind = std::ranges::partition_point(
      moved, [from](const MovedBytes& each) { return each.from < from; });
  if (behind == moved.begin()) return 0;
  const MovedBytes& piece = *std::prev(behind);
  return piece.to + std::min(from - piece.from, piece.length);
}
