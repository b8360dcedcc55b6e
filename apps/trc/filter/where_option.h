// The option --where TEXT: which traces a command chooses, by a filter text.
//
// Shape    Several must all hold. A blank one chooses all.
// Errors   Of the text: the message has the text and marks the place below it.
// Threads  WhereOfLive: one.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "input/merged_names.h"
#include "records/trace_event.h"
#include "where/where_matcher.h"

// `program` and the text; null for a blank text. False and a message of three lines.
bool AddWhere(WhereProgramPtr& program, std::string_view text, std::string* why);

// "there is no field "componet"", the part of the text around the place, and a line that marks it.
std::string WhereErrorText(std::string_view text, const WhereError& error);

// "the search of "matches" was given up in 3 traces"; empty for none.
std::string WhereGivenUpText(std::uint64_t traces);

// Its ids are numbered anew.
void Renumber(WherePrevious& previous, const NewId& newId);

// The text over live traces. `end` is the newest one: the one that is asked about, or what was set.
class LiveWhere {
 public:
  // Null program: all pass. Borrows the names, which may grow meanwhile.
  LiveWhere(WhereProgramPtr program, const NameMap& names, bool utc);
  // Ids are numbered anew.
  void Renumber(const NewId& newId);

  // REQUIRES: every trace that comes, in its order.
  bool Passes(const TraceEvent_i& trace);
  void SetEnd(std::optional<std::int64_t> end) { m_end = end; }
  std::uint64_t GivenUp() const { return m_givenUp + (m_matcher ? m_matcher->LimitsReached() : 0); }

 private:
  void MakeMatcher();

  const WhereProgramPtr m_program;
  const NameMap& m_names;
  const bool m_utc;
  std::unique_ptr<WhereMatcher> m_matcher;  // null: all pass
  std::uint64_t m_givenUp = 0;              // by earlier matchers
  std::optional<std::int64_t> m_end;
  WherePrevious m_previous;
};
