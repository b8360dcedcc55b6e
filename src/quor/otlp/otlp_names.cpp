#include "quor/otlp/otlp_names.h"

#include "base/text.h"
#include "quor/otlp/otlp_text.h"
#include "records/record_layout.h"

namespace {

constexpr std::string_view kFieldWords[] = {"component", "category", "thread", "file"};

}  // namespace

void ReplaceNuls(std::string& text, OtlpCounts& counts) {
  constexpr std::string_view kNulSign = "\xE2\x90\x80";  // U+2400
  for (std::size_t at = text.find('\0'); at != text.npos; at = text.find('\0', at)) {
    text.replace(at, 1, kNulSign);
    ++counts.nulBytes;
  }
}

std::string_view OtlpNames::Keep(Field field, std::string_view name, std::string& more) {
  if (name.empty()) return "";
  if (name == m_last[field]) return m_last[field];
  std::string clean;
  if (name.find('\0') != name.npos || name.size() > kLongestText) {
    clean = name;
    ReplaceNuls(clean, m_counts);
    if (clean.size() > kLongestText) ++m_counts.cutNames;
    name = CutUtf8(clean, kLongestText);
  }
  auto known = m_names.find(name);
  if (known == m_names.end() && m_names.size() == kNamesMax) {
    ++m_counts.namesInTexts;
    AppendAttribute(more, kFieldWords[field], name);
    return kOther;
  }
  if (known == m_names.end()) known = m_names.emplace(name).first;
  return m_last[field] = *known;
}
