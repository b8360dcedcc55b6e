#include "filter/where_option.h"

#include <algorithm>
#include <utility>

#include "base/fail_with.h"
#include "records/record_fields.h"
#include "text/visible_text.h"

namespace {

// Bytes of a long text that are shown before and behind the place.
constexpr std::size_t kShownBytes = 60;
constexpr std::size_t kExpectedMax = 12;
constexpr std::string_view kCut = "...", kIndent = "  ";

bool IsBlank(std::string_view text) {
  return text.find_first_not_of(" \t\r\n") == text.npos;
}

// Not inside of a character.
std::size_t CharacterBegin(std::string_view text, std::size_t place) {
  while (place > 0 && place < text.size() && (static_cast<unsigned char>(text[place]) >> 6) == 2)
    --place;
  return place;
}

std::string Expected(const std::vector<std::string>& all) {
  if (all.empty() || all.size() > kExpectedMax) return {};
  std::string text = "; expected: ";
  for (std::size_t i = 0; i < all.size(); ++i) text.append(i == 0 ? "" : ", ").append(all[i]);
  return text;
}

}  // namespace

std::string WhereErrorText(std::string_view text, const WhereError& error) {
  const std::size_t place = std::min(error.place, text.size());
  const std::size_t length = std::min(error.length, text.size() - place);
  const std::size_t from = place > kShownBytes ? CharacterBegin(text, place - kShownBytes) : 0;
  const std::size_t behind = place + std::min(length, kShownBytes) + kShownBytes;
  const std::size_t to = behind < text.size() ? CharacterBegin(text, behind) : text.size();
  std::string before(from > 0 ? kCut : "");
  before += VisibleText(text.substr(from, place - from));
  std::string line = before + VisibleText(text.substr(place, to - place));
  if (to < text.size()) line += kCut;
  const std::size_t marked =
      ScreenWidth(VisibleText(text.substr(place, std::min(length, to - place))));
  std::string mark(ScreenWidth(before), ' ');
  mark.append("^").append(marked > 1 ? marked - 1 : 0, '~');
  return VisibleText(error.reason + Expected(error.expected)) + "\n" + std::string(kIndent) + line +
         "\n" + std::string(kIndent) + mark;
}

std::string WhereGivenUpText(std::uint64_t traces) {
  if (traces == 0) return {};
  return "--where: the search of \"matches\" was given up in " + std::to_string(traces) +
         (traces == 1 ? " trace" : " traces") + ": the expression takes too many steps";
}

bool AddWhere(WhereProgramPtr& program, std::string_view text, std::string* why) {
  if (IsBlank(text)) return true;
  WhereError error;
  WhereProgramPtr added = WhereProgram::Compile(text, error);
  if (!added) return FailWith(why, WhereErrorText(text, error));
  if (program) {
    added = WhereProgram::Compile(WhereAll({program->Expr(), added->Expr()}), error);
    if (!added) return FailWith(why, VisibleText(error.reason));
  }
  program = std::move(added);
  return true;
}

LiveWhere::LiveWhere(WhereProgramPtr program, const NameMap& names, bool utc)
    : m_program(std::move(program)), m_names(names), m_utc(utc) {
  MakeMatcher();
}

void LiveWhere::MakeMatcher() {
  if (m_program) m_matcher = std::make_unique<WhereMatcher>(m_program, m_names, WhereClock{m_utc});
}

void LiveWhere::Renumber(const NewId& newId) {
  if (!m_matcher) return;
  m_givenUp = GivenUp();
  MakeMatcher();
  ::Renumber(m_previous, newId);
}

void Renumber(WherePrevious& previous, const NewId& newId) {
  if (previous.tic == 0) return;  // nothing is compared with its ids
  previous.machine = newId(previous.machine);
  previous.pid = newId(previous.pid);
}

bool LiveWhere::Passes(const TraceEvent_i& trace) {
  if (!m_matcher) return true;
  std::vector<std::uint8_t> made;
  const std::uint8_t* record = trace.Record();
  if (!record) {
    made = RecordOf(trace);
    record = made.data();
  }
  const RawTrace raw(record);
  if (m_matcher->Program().UsesEnd())
    m_matcher->SetClock({m_utc, m_end ? m_end : MomentOfStamp(StampOf(raw))});
  m_matcher->NamesMayHaveChanged();
  return m_matcher->Matches(record, std::exchange(m_previous, WherePrevious(raw)));
}
