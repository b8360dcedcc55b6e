#include "tree/filter/text/thread_text.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "where/text/where_writer.h"

namespace {

using F = WhereField;
using O = WhereOperator;
using Values = std::vector<WhereValue>;
using Exprs = std::vector<WhereExpr>;

// One of these ids: by those that are shown or, if that is shorter, by the others.
std::optional<WhereExpr> IdText(F field, Values shown, Values hidden, bool onlyShown) {
  if (shown.empty()) return std::nullopt;
  const bool others = !onlyShown && !hidden.empty() && hidden.size() < shown.size();
  return WhereOneOf(field, others ? std::move(hidden) : std::move(shown), !others);
}

std::optional<WhereExpr> ThreadsOf(const ProcessMarks& process, bool mayGrow) {
  Values shown, hidden;
  for (const auto& [key, mark] : process.threads) (mark ? shown : hidden).push_back(IdValue(key));
  return IdText(F::Tid, std::move(shown), std::move(hidden), mayGrow);
}

// Processes of one machine.
class ProcessText {
 public:
  ProcessText(const MachineMarks& machine, bool mayGrow) : m_machine(machine), m_mayGrow(mayGrow) {}

  // Nothing: none is shown.
  std::optional<WhereExpr> Text() {
    for (const auto& [key, process] : m_machine.processes) Add(key, process);
    const bool onlyShown = m_mayGrow || m_hidesAccount || !m_accounts.empty() || !m_parts.empty();
    auto pids = IdText(F::Pid, std::move(m_shown), std::move(m_hidden), onlyShown);
    Exprs any;
    if (pids) any.push_back(std::move(*pids));
    for (Part& part : m_parts) {
      any.push_back(WhereOneOf(F::Pid, std::move(part.pids)));
      any.back() = WhereAll({std::move(any.back()), std::move(part.threads)});
    }
    std::move(m_accounts.begin(), m_accounts.end(), std::back_inserter(any));
    if (any.empty()) return std::nullopt;
    return WhereAny(std::move(any));
  }

 private:
  struct Part {
    WhereExpr threads;
    Values pids;
  };

  // Does a process of another account have this number?
  bool NeedsAccount(const ProcessKey& key) const {
    return std::ranges::any_of(m_machine.processes, [&](const auto& other) {
      return other.first.pid == key.pid && other.first.account != key.account;
    });
  }
  void Add(const ProcessKey& key, const ProcessMarks& process) {
    const bool account = NeedsAccount(key);
    if (process.ShowsNone()) {
      m_hidesAccount = m_hidesAccount || account;
      m_hidden.push_back(IdValue(key.pid));
      return;
    }
    std::optional<WhereExpr> threads;
    if (!process.whole) threads = ThreadsOf(process, m_mayGrow);
    if (account)
      AddOfAccount(key, std::move(threads));
    else if (!threads)
      m_shown.push_back(IdValue(key.pid));
    else
      AddPart(key, std::move(*threads));
  }
  void AddOfAccount(const ProcessKey& key, std::optional<WhereExpr> threads) {
    Exprs all{WhereOneOf(F::Pid, {IdValue(key.pid)}),
              WhereOneOf(F::Account, {NameValue(key.account)})};
    if (threads) all.push_back(std::move(*threads));
    m_accounts.push_back(WhereAll(std::move(all)));
  }
  void AddPart(const ProcessKey& key, WhereExpr threads) {
    const auto same = std::ranges::find(m_parts, threads, &Part::threads);
    if (same != m_parts.end())
      same->pids.push_back(IdValue(key.pid));
    else
      m_parts.push_back({std::move(threads), {IdValue(key.pid)}});
  }

  const MachineMarks& m_machine;
  const bool m_mayGrow;
  bool m_hidesAccount = false;  // the number of a hidden process is also that of another one
  Values m_shown, m_hidden;
  std::vector<Part> m_parts;  // processes that are partly shown, by their threads
  Exprs m_accounts;
};

WhereExpr IsMachine(const std::string& name, bool holds) {
  return WhereOneOf(F::Machine, {NameValue(name)}, holds);
}

// "not this machine, or ...": machines that come later are shown.
WhereExpr WithoutHidden(const ThreadMarks& machines, bool mayGrow) {
  Values hidden;
  Exprs all;
  for (const auto& [name, machine] : machines) {
    if (machine.whole) continue;
    auto processes = ProcessText(machine, mayGrow).Text();
    if (processes)
      all.push_back(WhereAny({IsMachine(name, false), std::move(*processes)}));
    else
      hidden.push_back(NameValue(name));
  }
  if (!hidden.empty()) all.insert(all.begin(), WhereOneOf(F::Machine, std::move(hidden), false));
  return WhereAll(std::move(all));
}

// "this machine and ...".
WhereExpr OnlyShown(const ThreadMarks& machines) {
  Values shown;
  Exprs any;
  for (const auto& [name, machine] : machines) {
    if (machine.whole) {
      shown.push_back(NameValue(name));
      continue;
    }
    if (auto processes = ProcessText(machine, false).Text())
      any.push_back(WhereAll({IsMachine(name, true), std::move(*processes)}));
  }
  if (!shown.empty()) any.insert(any.begin(), WhereOneOf(F::Machine, std::move(shown)));
  return any.empty() ? WhereNever() : WhereAny(std::move(any));
}

}  // namespace

std::optional<WhereExpr> ThreadText(const ThreadMarks& machines, bool mayGrow) {
  if (std::ranges::all_of(machines, [](const auto& one) { return one.second.whole; }))
    return std::nullopt;
  if (mayGrow) return WithoutHidden(machines, true);
  if (machines.size() == 1)
    return ProcessText(machines.begin()->second, false).Text().value_or(WhereNever());
  WhereExpr others = WithoutHidden(machines, false), these = OnlyShown(machines);
  return WhereText(these).size() <= WhereText(others).size() ? these : others;
}
