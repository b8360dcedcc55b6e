#include "filter/live_choice.h"

#include <utility>

#include "text/line_colours.h"
#include "text/visible_text.h"

LiveChoice::LiveChoice(const TraceOptions& options, const NameMap& names)
    : m_options(options),
      m_filter(options.filter, names),
      m_choice(options.choice, names),
      m_where(options.where, names, options.utc) {}

LiveChoice::~LiveChoice() {
  for (const Held& held : m_held) ReleaseTrace(held.trace);
}

// The filter sees every trace, because it learns the names; the text, because `delta` needs the
// trace before.
bool LiveChoice::Passes(const TraceEvent_i& trace) {
  const bool shown = m_filter.Passes(trace);
  const bool said = m_where.Passes(trace);
  return m_choice.Passes(trace) && shown && said && (!m_test || m_test(trace));
}

bool LiveChoice::IsChosen(const TraceEvent_i& trace) {
  if (m_chosen >= m_options.count || !Passes(trace) || m_place < m_options.from) return false;
  if (m_skip == 0) return true;
  --m_skip;
  return false;
}

bool LiveChoice::Add(TraceEvent_i* trace, const TraceTaker& take) {
  const bool chosen = IsChosen(*trace);
  const Held now{trace, m_place++, std::exchange(m_before, PreviousOf(*trace))};
  if (chosen) {
    ++m_chosen;
    m_behind = m_options.context;
    while (!m_held.empty()) {
      const Held before = m_held.front();
      m_held.pop_front();
      if (!Take(before, true, take)) {
        ReleaseTrace(trace);
        return false;
      }
    }
    return Take(now, false, take);
  }
  if (m_behind > 0) {
    --m_behind;
    return Take(now, true, take);
  }
  Hold(now);
  return true;
}

bool LiveChoice::Take(const Held& held, bool beside, const TraceTaker& take) {
  const bool gap = std::exchange(m_gap, false) && m_any && m_options.context > 0;
  m_any = true;
  return take({held.trace, held.place, beside, gap, held.before, m_end});
}

void LiveChoice::Hold(const Held& held) {
  m_held.push_back(held);
  if (m_held.size() <= m_options.context) return;
  ReleaseTrace(m_held.front().trace);
  m_held.pop_front();
  m_gap = true;
}

void LiveChoice::Renumber(const NewId& newId) {
  m_filter.ForgetIds();
  m_choice.ForgetIds();
  m_where.Renumber(newId);
  ::Renumber(m_before, newId);
  for (Held& held : m_held) {
    held.trace = Renumbered(held.trace, newId);
    ::Renumber(held.before, newId);
  }
}

std::vector<std::string> LiveChoice::Missing() const {
  std::vector<std::string> messages;
  for (const std::string& path : m_filter.Missing())
    messages.push_back("no name came for the path \"" + path + "\"");
  const std::string& account = m_options.filter.Account();
  if (!account.empty() && !m_filter.AccountCame())
    messages.push_back("no trace came of the account \"" + VisibleText(account) + "\"");
  for (std::string& missing : m_choice.Missing()) messages.push_back(std::move(missing));
  if (std::string givenUp = WhereGivenUpText(m_where.GivenUp()); !givenUp.empty())
    messages.push_back(std::move(givenUp));
  return messages;
}
