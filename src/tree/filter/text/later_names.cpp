#include "tree/filter/text/later_names.h"

#include <algorithm>
#include <limits>

#include "records/process_name.h"
#include "tree/filter/text/filter_names.h"

namespace {

using O = WhereOperator;
constexpr std::uint64_t kLast = std::numeric_limits<std::uint64_t>::max();

// Longer than all others, so equal to none of them; and no number.
std::string AnyOther(const NameSet& mentioned, const NameSet& known) {
  std::size_t longest = 0;
  for (const NameSet* const names : {&mentioned, &known})
    for (const std::string& name : *names) longest = std::max(longest, name.size());
  return std::string(longest + 1, '?');
}

// The first numbers of the stretches in which the tests say the same.
std::set<std::uint64_t> Stretches(const WhereTests& tests) {
  std::set<std::uint64_t> firsts{0};
  for (const WhereRule* const test : tests) {
    const bool order = test->op != O::Equal && test->op != O::In;
    for (const WhereValue& value : test->values) {
      if (!value.isNumber) continue;
      firsts.insert(value.from);
      const std::uint64_t last = order ? value.from : value.to;
      if (last < kLast) firsts.insert(last + 1);
    }
  }
  return firsts;
}

NameSet TextsOf(const WhereTests& tests) {
  NameSet texts;
  for (const WhereRule* const test : tests)
    for (const WhereValue& value : test->values)
      if (!value.isNumber) texts.insert(value.text);
  return texts;
}

}  // namespace

NameSet LaterNames(const WhereTests& tests, const NameSet& known) {
  NameSet later = TextsOf(tests);
  later.insert(AnyOther(later, known));
  std::erase_if(later, [&](const std::string& name) { return known.contains(name); });
  return later;
}

NameSet LaterIds(const WhereTests& tests, const NameSet& known) {
  NameSet later = LaterNames(tests, known);
  std::set<std::uint64_t> numbers;
  for (const std::string& name : known)
    if (const IdKey key = IdKey::Of(name); !key.isText) numbers.insert(key.number);
  const std::set<std::uint64_t> firsts = Stretches(tests);
  for (auto first = firsts.begin(); first != firsts.end(); ++first) {
    const auto next = std::next(first);
    const std::uint64_t last = next == firsts.end() ? kLast : *next - 1;
    std::uint64_t number = *first;
    while (number < last && numbers.contains(number)) ++number;
    if (!numbers.contains(number)) later.insert(std::to_string(number));
  }
  return later;
}

NameSet LaterProcesses(const WhereTests& pids, const WhereTests& accounts, const NameSet& known) {
  NameSet knownPids, knownAccounts;
  for (const std::string& name : known) {
    const ProcessName process = ProcessName::Of(name);
    knownPids.emplace(process.process);
    knownAccounts.emplace(process.account);
  }
  NameSet later = LaterIds(pids, knownPids);
  if (accounts.empty()) return later;
  later.insert(knownPids.begin(), knownPids.end());
  NameSet users = LaterNames(accounts, knownAccounts);
  users.insert(knownAccounts.begin(), knownAccounts.end());
  NameSet all = later;
  for (const std::string& pid : later)
    for (const std::string& user : users) all.insert(pid + " " + user);
  return all;
}
