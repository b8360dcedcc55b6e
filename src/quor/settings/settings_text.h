// The settings of an application's traces as one text: "Net=max;Db/Query=Info+Stack;*=support".
//
// Shape    Rules that are separated by ";". Before the last "=" stands what a rule is for: a trace
//          as COMPONENT/CATEGORY, all traces of a COMPONENT, or "*" for all. Behind it stand the
//          words of settings_words.h. The most exact rule holds: that for the trace before that for
//          the component before "*". Of two that are equally exact, the one with the same capitals
//          holds before one with others, and then the later one before the earlier. Names may hold
//          "/" and "=", but no ";" and no blank at their ends. "Net/*" is "Net".
// Errors   A bad rule is told and passed over; the others hold.
// Threads  Read allocates. Of does not: a trace may be registered in a signal handler.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

class SettingsText {
 public:
  static constexpr std::size_t kRulesMax = 256;
  struct Rule {
    std::string traces, words;
    unsigned settings = 0;
  };

  static SettingsText Read(std::string_view text, std::vector<std::string>* faults = nullptr);

  // Nothing if no rule is for this trace.
  std::optional<unsigned> Of(std::string_view component, std::string_view category) const;
  // How exactly a rule for `traces` is for this trace: 0 not at all, 1 as "*", 3 or 4 by its
  // component, 5 or 6 by both names; the even ones with the same capitals.
  static int ExactnessOf(std::string_view traces, std::string_view component,
                         std::string_view category);
  const std::vector<Rule>& Rules() const { return m_rules; }
  // All bits that any rule sets.
  unsigned AnySettings() const;
  bool IsEmpty() const { return m_rules.empty(); }
  // The rules of another text come later. A rule for the same traces is replaced.
  void Add(const SettingsText& later);
  // Read gives the same rules again.
  std::string Written() const;

 private:
  void AddRule(Rule rule);
  bool ReadRule(std::string_view text, std::string* why);

  std::vector<Rule> m_rules;
};
