#include "notes/unknown_members.h"

#include <nlohmann/json.hpp>

std::string JsonQuoted(const std::string& text) {
  return nlohmann::json(text).dump();
}

bool UnknownMembers::Begin(const std::string& name) {
  if (!m_names.insert(name).second) return false;
  Separate();
  m_text.append(JsonQuoted(name)).append(":");
  m_open = true;
  return true;
}

void UnknownMembers::Separate() {
  constexpr std::string_view kNoneBehind = "[{:";
  if (!m_text.empty() && kNoneBehind.find(m_text.back()) == kNoneBehind.npos) m_text += ',';
}

void UnknownMembers::Value(std::string_view json) {
  Separate();
  m_text += json;
  m_open = !m_closers.empty();
}

void UnknownMembers::Enter(bool object) {
  Separate();
  m_text += object ? '{' : '[';
  m_closers += object ? '}' : ']';
}

void UnknownMembers::Key(const std::string& name) {
  Separate();
  m_text.append(JsonQuoted(name)).append(":");
}

void UnknownMembers::Leave() {
  m_text += m_closers.back();
  m_closers.pop_back();
  m_open = !m_closers.empty();
}

void UnknownMembers::Clear() {
  m_names.clear();
  m_text.clear();
  m_closers.clear();
  m_open = false;
}
