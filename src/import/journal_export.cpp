#include "import/journal_export.h"

#include <algorithm>

#include "base/text.h"

namespace {

constexpr std::size_t kNumberBytes = 8, kNameBytesMax = 64;

bool IsName(std::string_view name) {
  return !name.empty() && name.size() <= kNameBytesMax &&
         std::all_of(name.begin(), name.end(), [](char byte) {
           return (byte >= 'A' && byte <= 'Z') || (byte >= '0' && byte <= '9') || byte == '_';
         });
}

std::uint64_t NumberOf(std::string_view bytes) {
  std::uint64_t number = 0;
  for (std::size_t i = kNumberBytes; i-- > 0;)
    number = number << 8 | static_cast<unsigned char>(bytes[i]);
  return number;
}

void AppendString(std::string& json, std::string_view text) {
  constexpr char kDigits[] = "0123456789abcdef";
  json.push_back('"');
  for (const char byte : text) {
    const auto code = static_cast<unsigned char>(byte);
    if (byte == '"' || byte == '\\')
      json.append(1, '\\').push_back(byte);
    else if (code < 0x20)
      json.append("\\u00").append(1, kDigits[code >> 4]).push_back(kDigits[code & 15]);
    else
      json.push_back(byte);
  }
  json.push_back('"');
}

void AppendBytes(std::string& json, std::string_view bytes) {
  char between = '[';
  for (const char byte : bytes) {
    json.append(1, between).append(std::to_string(static_cast<unsigned char>(byte)));
    between = ',';
  }
  json.push_back(']');
}

}  // namespace

bool JournalExport::Next(InputLine& line) {
  m_object.clear();
  m_cut = false;
  for (;;) {
    InputLine next;
    if (m_held) {
      next = *m_held;
      m_held.reset();
    } else if (m_reader.Next(next)) {
      ++m_lines;
    } else {
      line = Whole();
      return line.text.size() > 0;
    }
    if (m_object.empty()) m_number = m_lines;
    const bool isField = !next.text.empty() && TakeField(next);
    if (isField) continue;
    if (m_object.empty()) {
      line = next;
      return true;
    }
    if (!next.text.empty()) {
      m_heldText = next.text;
      m_held = InputLine{m_heldText, next.cut};
    }
    line = Whole();
    return true;
  }
}

InputLine JournalExport::Whole() {
  if (!m_object.empty()) m_object.push_back('}');
  return {m_object, m_cut};
}

// The line may have to be copied: what is read to look behind it moves it.
bool JournalExport::TakeField(InputLine& line) {
  const std::size_t equals = std::min(line.text.find('='), line.text.size());
  const std::string_view name = line.text.substr(0, equals);
  if (!IsName(name)) return false;
  if (equals == line.text.size()) {
    m_name = name;
    line.text = m_name;
    return TakeBytes(m_name);
  }
  m_cut = m_cut || line.cut;
  Append(name, line.text.substr(equals + 1));
  return true;
}

bool JournalExport::TakeBytes(std::string_view name) {
  const std::string_view number = m_reader.PeekBytes(kNumberBytes);
  if (number.size() < kNumberBytes) return false;
  const std::uint64_t bytes = NumberOf(number);
  if (bytes > kFieldBytesMax) return false;
  const std::size_t all = kNumberBytes + static_cast<std::size_t>(bytes) + 1;
  const std::string_view field = m_reader.PeekBytes(all);
  if (field.size() < all || field.back() != '\n') return false;
  m_lines += 1 + static_cast<std::uint64_t>(std::count(field.begin(), field.end() - 1, '\n'));
  Append(name, field.substr(kNumberBytes, all - kNumberBytes - 1));
  m_reader.Drop(all);
  return true;
}

void JournalExport::Append(std::string_view name, std::string_view value) {
  if (m_object.empty()) m_object.push_back('{');
  if (m_object.size() + name.size() + value.size() > LineReader::kLineBytesMax) {
    m_cut = true;
    return;
  }
  if (m_object.size() > 1) m_object.push_back(',');
  AppendString(m_object, name);
  m_object.push_back(':');
  ReplaceMalformed(value) == value ? AppendString(m_object, value) : AppendBytes(m_object, value);
}
