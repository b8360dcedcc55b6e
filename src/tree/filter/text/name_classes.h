// Names by what some tests say of them: names of one class are the same to a text.
//
// Owner    Borrows the tests and the search.
// Threads  One.
#pragma once

#include <map>
#include <string>
#include <utility>
#include <vector>

#include "tree/filter/text/later_names.h"

class NameClasses {
 public:
  NameClasses(WhereTests tests, WhereRegexSearch& search)
      : m_tests(std::move(tests)), m_search(search) {}

  // The class of a name, which is made when it is the first of it.
  std::size_t Of(const std::string& name) {
    const auto known = m_byName.find(name);
    if (known != m_byName.end()) return known->second;
    std::vector<bool> verdicts;
    for (const WhereRule* const test : m_tests)
      verdicts.push_back(HoldsFor(*test, 0, name, m_search));
    const std::size_t place = m_byVerdicts.try_emplace(verdicts, m_verdicts.size()).first->second;
    if (place == m_verdicts.size()) m_verdicts.push_back(std::move(verdicts));
    m_byName.emplace(name, place);
    return place;
  }
  std::size_t Count() const { return m_verdicts.size(); }

  bool Has(const WhereRule& test) const { return PlaceOf(test) < m_tests.size(); }
  // By class. REQUIRES: Has.
  std::vector<bool> PassesOf(const WhereRule& test) const {
    const std::size_t place = PlaceOf(test);
    std::vector<bool> passes;
    for (const std::vector<bool>& verdicts : m_verdicts) passes.push_back(verdicts[place]);
    return passes;
  }

 private:
  std::size_t PlaceOf(const WhereRule& test) const {
    std::size_t place = 0;
    while (place < m_tests.size() && m_tests[place] != &test) ++place;
    return place;
  }

  const WhereTests m_tests;
  WhereRegexSearch& m_search;
  std::map<std::string, std::size_t> m_byName;
  std::map<std::vector<bool>, std::size_t> m_byVerdicts;
  std::vector<std::vector<bool>> m_verdicts;  // by class
};
