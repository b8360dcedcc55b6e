#include "import/lines/flat_json.h"

#include <charconv>
#include <nlohmann/json.hpp>

#include "base/text.h"
#include "import/lines/mended_json.h"

namespace {

using nlohmann::json;

class Flattener {
 public:
  explicit Flattener(FlatJsonTaker& taker) : m_taker(taker) {}

  bool null() { return Give(JsonKind::Null, "null"); }
  bool boolean(bool value) { return Give(JsonKind::Bool, value ? "true" : "false"); }
  bool number_integer(json::number_integer_t value) { return GiveNumber(value); }
  bool number_unsigned(json::number_unsigned_t value) { return GiveNumber(value); }
  bool number_float(json::number_float_t, const std::string& text) {
    return Give(JsonKind::Number, text);
  }
  bool string(std::string& value) { return Give(JsonKind::String, value); }
  bool binary(json::binary_t&) { return false; }
  bool start_object(std::size_t) { return Enter(false); }
  bool start_array(std::size_t) { return m_depth > 0 && Enter(true); }
  bool end_object() { return Leave(); }
  bool end_array() { return Leave(); }
  bool key(const std::string& name) {
    m_path.resize(m_levels[m_depth - 1].pathBytes);
    if (!m_path.empty()) m_path.push_back('.');
    m_path += name;
    return true;
  }
  template <class Error>
  bool parse_error(std::size_t, const std::string&, const Error&) {
    return false;
  }

 private:
  struct Level {
    std::size_t pathBytes;  // of the object or array itself
    bool isArray;
    std::size_t next;  // place of an element
  };

  bool Enter(bool isArray) {
    if (m_depth == kJsonDepthMax) return false;
    if (m_depth > 0) Place();
    m_levels[m_depth++] = {m_path.size(), isArray, 0};
    return true;
  }
  bool Leave() {
    m_path.resize(m_levels[--m_depth].pathBytes);
    return true;
  }
  // The path of an element of an array; that of a member has its key already.
  void Place() {
    Level& level = m_levels[m_depth - 1];
    if (!level.isArray) return;
    m_path.resize(level.pathBytes);
    m_path.push_back('.');
    AppendDigits(m_path, level.next++);
  }
  bool Give(JsonKind kind, std::string_view value) {
    if (m_depth == 0) return false;
    Place();
    return m_taker.OnValue(m_path, kind, value);
  }
  template <class Number>
  bool GiveNumber(Number number) {
    m_number.clear();
    AppendDigits(m_number, number);
    return Give(JsonKind::Number, m_number);
  }
  template <class Number>
  static void AppendDigits(std::string& to, Number number) {
    char digits[24];
    to.append(digits, std::to_chars(digits, digits + sizeof digits, number).ptr);
  }

  FlatJsonTaker& m_taker;
  std::string m_path, m_number;
  Level m_levels[kJsonDepthMax];
  std::size_t m_depth = 0;
};

}  // namespace

bool ReadFlatJson(std::string_view line, FlatJsonTaker& taker) {
  Flattener flattener(taker);
  if (json::sax_parse(line.begin(), line.end(), &flattener)) return true;
  const std::string mended = MendJson(line);
  if (mended == line) return false;
  taker.OnAgain();
  Flattener again(taker);
  return json::sax_parse(mended.begin(), mended.end(), &again);
}

std::vector<std::string> MendedNote(std::uint64_t lines) {
  if (lines == 0) return {};
  return {GroupDigits(lines) + (lines == 1 ? " line is" : " lines are") +
          " not quite JSON: what is malformed is shown as \xEF\xBF\xBD"};
}
