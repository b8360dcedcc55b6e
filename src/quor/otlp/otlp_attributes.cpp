#include "quor/otlp/otlp_attributes.h"

#include <charconv>
#include <optional>

#include "quor/otlp/otlp_text.h"

using quor::otlp::AnyValue;

namespace {

constexpr std::string_view kKnownKeys[] = {
    "thread.name",      "thread.id",   "code.file.path",       "code.filepath",
    "code.line.number", "code.lineno", "exception.stacktrace", "code.stacktrace"};

// A number, or its digits.
std::optional<std::uint32_t> LineOf(const AnyValue& value) {
  if (value.value_case() == AnyValue::kIntValue) {
    const std::int64_t line = value.int_value();
    if (line <= 0 || line > UINT32_MAX) return std::nullopt;
    return static_cast<std::uint32_t>(line);
  }
  if (value.value_case() != AnyValue::kStringValue) return std::nullopt;
  const std::string& digits = value.string_value();
  const char* const end = digits.data() + digits.size();
  std::uint32_t line = 0;
  const auto read = std::from_chars(digits.data(), end, line);
  if (read.ec != std::errc() || read.ptr != end || line == 0) return std::nullopt;
  return line;
}

}  // namespace

OtlpAttributes::Key OtlpAttributes::KeyOf(std::string_view key) {
  // Few keys begin so: the others are told by their first bytes.
  if (!key.starts_with("thread.") && !key.starts_with("code.") && !key.starts_with("exception."))
    return kKeys;
  for (int known = 0; known < kKeys; ++known)
    if (key == kKnownKeys[known]) return static_cast<Key>(known);
  return kKeys;
}

OtlpAttributes::OtlpAttributes(const OtlpAttributeList& all) : m_all(all) {
  m_places.fill(-1);
  for (int place = 0; place < all.size(); ++place) {
    const Key key = KeyOf(all[place].key());
    if (key != kKeys && m_places[key] < 0) m_places[key] = place;
  }
}

// An empty text gives no field.
std::string_view OtlpAttributes::TextOf(Key now, Key before) {
  for (const Key key : {now, before}) {
    if (m_places[key] < 0) continue;
    const AnyValue& value = m_all[m_places[key]].value();
    std::string_view text;
    if (value.value_case() == AnyValue::kStringValue) {
      text = value.string_value();
    } else {
      m_text.clear();
      AppendPlain(m_text, value);
      text = m_text;
    }
    if (text.empty()) continue;
    m_used[key] = true;
    return text;
  }
  return {};
}

std::string_view OtlpAttributes::Thread() {
  return TextOf(kThreadName, kThreadId);
}

std::string_view OtlpAttributes::File() {
  return TextOf(kFilePath, kOldFilePath);
}

std::string_view OtlpAttributes::Stack() {
  return TextOf(kExceptionStack, kOldStack);
}

std::uint32_t OtlpAttributes::Line() {
  for (const Key key : {kLineNumber, kOldLineNumber}) {
    if (m_places[key] < 0) continue;
    const auto line = LineOf(m_all[m_places[key]].value());
    if (!line) continue;
    m_used[key] = true;
    return *line;
  }
  return 0;
}

void OtlpAttributes::AppendOthers(std::string& to) const {
  for (int place = 0; place < m_all.size(); ++place) {
    bool used = false;
    for (int key = 0; key < kKeys; ++key)
      used = used || (m_used[static_cast<std::size_t>(key)] &&
                      m_places[static_cast<std::size_t>(key)] == place);
    if (!used) AppendAttribute(to, m_all[place].key(), m_all[place].value());
  }
}
