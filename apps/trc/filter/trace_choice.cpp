#include "filter/trace_choice.h"

#include <algorithm>

#include "base/near/near_word.h"
#include "base/text.h"
#include "records/process_name.h"
#include "text/visible_text.h"

namespace {

constexpr ChoiceField kFields[kChoiceFields] = {ChoiceField::App,      ChoiceField::Component,
                                                ChoiceField::Category, ChoiceField::Machine,
                                                ChoiceField::Pid,      ChoiceField::Tid};
constexpr std::size_t kNamesToldMax = 5;

NameId IdOf(ChoiceField field, const TraceEvent_i& trace) {
  switch (field) {
    case ChoiceField::App:
      return trace.GetAppId();
    case ChoiceField::Component:
      return trace.GetComponentId();
    case ChoiceField::Category:
      return trace.GetCategoryId();
    case ChoiceField::Machine:
      return trace.GetMachineId();
    case ChoiceField::Pid:
      return trace.GetPidId();
    default:
      return trace.GetTidId();
  }
}

std::string InQuotes(std::string_view name) {
  return "\"" + VisibleText(name) + "\"";
}

std::string Article(ChoiceField field) {
  return (field == ChoiceField::App ? "an " : "a ") + std::string(WordOf(field));
}

// "; there is "Net", "Db", ...": where no name is near.
std::string SomeOf(const std::vector<std::string>& known) {
  std::string text;
  for (std::size_t i = 0; i < std::min(known.size(), kNamesToldMax); ++i)
    text += (i == 0 ? "; there is " : ", ") + InQuotes(known[i]);
  return text + (known.size() > kNamesToldMax ? ", ..." : "");
}

}  // namespace

unsigned SeverityBit(const TraceEvent_i& trace) {
  const unsigned bits = static_cast<unsigned>(trace.GetAttributes()) & kSeverityMask;
  return bits == 0 ? TraceChoice::kOtherSeverity : bits & (~bits + 1);
}

std::string_view WordOf(ChoiceField field) {
  constexpr std::string_view kWords[] = {"application", "component", "category",
                                         "machine",     "process",   "thread"};
  return kWords[static_cast<std::size_t>(field)];
}

const IdList& IdsOf(ChoiceField field, const TraceIndexes& seen) {
  const IdList* const lists[] = {&seen.applications, &seen.components, &seen.categories,
                                 &seen.machines,     &seen.processIds, &seen.threadIds};
  return *lists[static_cast<std::size_t>(field)];
}

bool TraceChoice::HasTests() const {
  return severities != kAllSeverities ||
         std::any_of(names.begin(), names.end(), [](const auto& list) { return !list.empty(); });
}

bool IsNamed(ChoiceField field, std::string_view name, std::string_view wanted) {
  if (CompareIgnoringCase(name, wanted) == 0) return true;
  return field == ChoiceField::Pid && ProcessName::Of(name).process == wanted;
}

ChoiceTest::ChoiceTest(const TraceChoice& choice, const NameMap& names)
    : m_choice(choice), m_names(names) {
  for (const ChoiceField field : kFields) {
    const auto& wanted = choice.names[static_cast<std::size_t>(field)];
    if (!wanted.empty())
      m_tests.push_back({field, wanted, std::vector<Verdict>(kNameIds, kUnknown),
                         std::vector<bool>(wanted.size())});
  }
}

bool ChoiceTest::Passes(const TraceEvent_i& trace) {
  const std::uint64_t moment = MomentKey(trace.GetDate(), trace.GetTime());
  if (moment < m_choice.since) return false;
  // A record may hold any number, also the largest.
  if (moment >= m_choice.until && m_choice.until != TraceChoice::kNever) return false;
  return TestsPass(trace) != m_choice.invert;
}

bool ChoiceTest::TestsPass(const TraceEvent_i& trace) {
  bool passes = (m_choice.severities & SeverityBit(trace)) != 0;
  // Each name is looked at, so that a name that came is known to have come.
  for (NameTest& test : m_tests) passes = HasName(test, IdOf(test.field, trace)) && passes;
  return passes;
}

bool ChoiceTest::HasName(NameTest& test, NameId id) {
  Verdict& known = test.known[id];
  if (known != kUnknown) return known == kYes;
  const auto entry = m_names.find(id);
  if (entry == m_names.end()) return false;  // it may come later
  known = kNo;
  for (std::size_t i = 0; i < test.wanted.size(); ++i) {
    if (!IsNamed(test.field, entry->second.name, test.wanted[i])) continue;
    test.came[i] = true;
    known = kYes;
  }
  return known == kYes;
}

void ChoiceTest::ForgetIds() {
  for (NameTest& test : m_tests) test.known.assign(kNameIds, kUnknown);
}

std::vector<std::string> ChoiceTest::Missing() const {
  std::vector<std::string> messages;
  for (const NameTest& test : m_tests)
    for (std::size_t i = 0; i < test.wanted.size(); ++i)
      if (!test.came[i])
        messages.push_back("no trace came of the " + std::string(WordOf(test.field)) + " " +
                           InQuotes(test.wanted[i]));
  return messages;
}

std::string MissingName(const TraceChoice& choice, const TraceIndexes& seen, const NameMap& names) {
  for (const ChoiceField field : kFields) {
    const auto& wanted = choice.names[static_cast<std::size_t>(field)];
    if (wanted.empty()) continue;
    std::vector<std::string> known;
    for (const NameId id : IdsOf(field, seen).Ids())
      if (const auto entry = names.find(id); entry != names.end())
        known.push_back(entry->second.name);
    for (const std::string& one : wanted) {
      const bool there = std::any_of(known.begin(), known.end(), [&](const std::string& name) {
        return IsNamed(field, name, one);
      });
      if (there) continue;
      const std::string near = VisibleText(DidYouMean(one, known));
      return "there are no traces of " + Article(field) + " " + InQuotes(one) +
             (near.empty() ? SomeOf(known) : near);
    }
  }
  return {};
}
