// The reader of a file of colour rules: one pass over its JSON, with the line of each value.
#include <algorithm>
#include <iterator>
#include <nlohmann/json.hpp>

#include "base/fail_with.h"
#include "base/near/near_word.h"
#include "base/text.h"
#include "where/colours/colour_rules.h"

namespace {

using nlohmann::json;

constexpr std::uint64_t kVersion = 1;

// Tells how far the parser has read.
class Cursor {
 public:
  using iterator_category = std::forward_iterator_tag;
  using value_type = char;
  using difference_type = std::ptrdiff_t;
  using pointer = const char*;
  using reference = const char&;

  Cursor() = default;
  Cursor(const char* at, const char** read) : m_at(at), m_read(read) {}
  reference operator*() const { return *m_at; }
  Cursor& operator++() {
    *m_read = ++m_at;
    return *this;
  }
  Cursor operator++(int) {
    Cursor before = *this;
    ++*this;
    return before;
  }
  bool operator==(const Cursor& other) const { return m_at == other.m_at; }

 private:
  const char* m_at = nullptr;
  const char** m_read = nullptr;
};

class Reader {
 public:
  explicit Reader(std::string_view content) : m_content(content), m_read(content.data()) {}

  bool Run() {
    const char* const end = m_content.data() + m_content.size();
    return json::sax_parse(Cursor(m_content.data(), &m_read), Cursor(end, &m_read), this) &&
           m_why.empty();
  }
  ColourRules Take() { return std::move(m_rules); }
  const std::string& Why() const { return m_why; }

  // ---- what the parser calls
  bool null() { return Fail("no value can be null"); }
  bool boolean(bool value) {
    if (m_in != In::Rule || m_key != "on") return WrongKind();
    m_rule.on = value;
    return true;
  }
  bool number_integer(json::number_integer_t) { return WrongKind(); }
  bool number_unsigned(json::number_unsigned_t value) {
    if (m_in != In::Set || m_key != "colour-rules") return WrongKind();
    if (value != kVersion) return Fail("this file is of another version than 1");
    return true;
  }
  bool number_float(json::number_float_t, const std::string&) { return WrongKind(); }
  bool string(std::string& value) {
    if (m_in != In::Rule || m_key == "on") return WrongKind();
    if (m_key == "name") m_rule.name = value;
    if (m_key == "where") m_rule.where = value;
    if (m_key == "ink") return SetColour(m_rule.ink, value);
    if (m_key == "ground") return SetColour(m_rule.ground, value);
    return true;
  }
  bool binary(json::binary_t&) { return WrongKind(); }
  bool start_object(std::size_t) {
    if (m_in != In::Nothing && m_in != In::Rules) return WrongKind();
    if (m_rules.size() == kColourRulesMax)
      return Fail("there are more than " + GroupDigits(kColourRulesMax) + " rules");
    m_in = m_in == In::Nothing ? In::Set : In::Rule;
    m_rule = {};
    m_ofRule.clear();
    return true;
  }
  bool key(const std::string& name);
  bool end_object() {
    if (m_in == In::Set) return HasKeys({"colour-rules", "rules"});
    std::string why;
    if (!HasKeys({"name", "where", "ink", "ground"})) return false;
    if (!CheckColourRule(m_rule, &why)) return Fail(why);
    m_rules.push_back(std::move(m_rule));
    m_in = In::Rules;
    return true;
  }
  bool start_array(std::size_t) {
    if (m_in != In::Set || m_key != "rules") return WrongKind();
    m_in = In::Rules;
    return true;
  }
  bool end_array() {
    m_in = In::Set;
    return true;
  }
  template <class Error>
  bool parse_error(std::size_t, const std::string&, const Error&) {
    return Fail("this is no JSON");
  }

 private:
  enum class In { Nothing, Set, Rules, Rule };

  // REQUIRES: once.
  bool Fail(const std::string& reason) {
    const auto lines = std::count(m_content.data(), m_read, '\n');
    // The end of a line has been read where the next one has not begun.
    const bool atEnd = m_read != m_content.data() && m_read[-1] == '\n';
    m_why = "line " + std::to_string(lines + (atEnd ? 0 : 1)) + ": " + reason;
    return false;
  }
  bool WrongKind() {
    if (m_in == In::Nothing) return Fail("a set of rules is an object");
    if (m_in == In::Rules) return Fail("a rule is an object");
    if (m_key == "colour-rules") return Fail("\"colour-rules\" is the number 1");
    if (m_key == "rules") return Fail("\"rules\" is a list");
    return Fail("\"" + m_key + "\" is " + (m_key == "on" ? "true or false" : "a text"));
  }
  bool SetColour(Colour& colour, const std::string& text) {
    const std::optional<Colour> read = ColourOf(text);
    if (!read) return Fail("\"" + m_key + "\" is a colour such as \"#a01020\"");
    colour = *read;
    return true;
  }
  std::vector<std::string>& Keys() { return m_in == In::Set ? m_ofSet : m_ofRule; }
  bool HasKeys(const std::vector<std::string>& wanted) {
    for (const std::string& key : wanted)
      if (!Knows(Keys(), key)) return Fail("\"" + key + "\" is missing");
    return true;
  }
  static bool Knows(const std::vector<std::string>& keys, const std::string& key) {
    return std::find(keys.begin(), keys.end(), key) != keys.end();
  }

  const std::string_view m_content;
  const char* m_read;
  In m_in = In::Nothing;
  std::string m_key;
  std::vector<std::string> m_ofSet, m_ofRule;  // the keys so far
  ColourRule m_rule;
  ColourRules m_rules;
  std::string m_why;
};

bool Reader::key(const std::string& name) {
  static const std::vector<std::string> kOfSet = {"colour-rules", "rules"},
                                        kOfRule = {"name", "where", "ink", "ground", "on"};
  constexpr std::size_t kShownBytes = 40;
  const std::vector<std::string>& known = m_in == In::Set ? kOfSet : kOfRule;
  const std::string shown(CutUtf8(name, kShownBytes));
  if (!Knows(known, name))
    return Fail("there is no key \"" + shown + "\"" + DidYouMean(shown, known));
  if (Knows(Keys(), name)) return Fail("\"" + name + "\" is given twice");
  Keys().push_back(name);
  m_key = name;
  return true;
}

}  // namespace

std::optional<ColourRules> ReadColourRules(std::string_view content, std::string* why) {
  if (content.size() > kColourFileBytes)
    return FailWith(why, "line 1: a file of colour rules has at most 1 MiB", std::nullopt);
  Reader reader(content);
  if (!reader.Run()) return FailWith(why, reader.Why(), std::nullopt);
  return reader.Take();
}
