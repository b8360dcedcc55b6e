// The filter texts that a window had, walked back and forth.
//
// Shape    The last kWhereStepsMax ones. A new text drops those that were gone back from.
// Threads  One.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

constexpr std::size_t kWhereStepsMax = 100;

class WhereSteps {
 public:
  // The text in force; at first none: "" is all traces.
  const std::string& Text() const { return m_texts[m_at]; }
  // The same text as before is no step.
  void Go(std::string text);
  bool CanGoBack() const { return m_at > 0; }
  bool CanGoForward() const { return m_at + 1 < m_texts.size(); }
  // False: there is none, and the text stays.
  bool Back();
  bool Forward();

 private:
  std::vector<std::string> m_texts{std::string()};
  std::size_t m_at = 0;
};
