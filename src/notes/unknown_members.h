// The members of a JSON object that are not known, as text that can be written again.
//
// Shape    "\"a\":1,\"b\":[2,{}]". Members keep their order.
// Threads  One.
#pragma once

#include <set>
#include <string>
#include <string_view>

class UnknownMembers {
 public:
  // A member begins. False: there was one of this name.
  bool Begin(const std::string& name);
  // Is a member under way whose value has not ended?
  bool IsOpen() const { return m_open; }

  // The tokens of its value. REQUIRES: IsOpen.
  void Value(std::string_view json);
  void Enter(bool object);
  void Key(const std::string& name);
  void Leave();

  const std::string& Text() const { return m_text; }
  void Clear();

 private:
  void Separate();

  std::set<std::string> m_names;
  std::string m_text, m_closers;
  bool m_open = false;
};

// A text in quotes. REQUIRES: UTF-8.
std::string JsonQuoted(const std::string& text);
