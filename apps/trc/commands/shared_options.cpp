#include "commands/shared_options.h"

#include <sstream>

#include "base/near/near_word.h"
#include "base/text.h"
#include "commands/columns_option.h"
#include "filter/filter_options.h"
#include "filter/moment.h"
#include "filter/where_option.h"
#include "terminal/terminal_host.h"
#include "usage.h"

namespace {

constexpr std::uint64_t kContextMax = 1'000'000;

struct SeverityName {
  const char* word;
  unsigned bit, andWorse;
};
constexpr SeverityName kSeverities[] = {
    {"info", 1, 7}, {"warn", 2, 6}, {"warning", 2, 6}, {"error", 4, 4}, {"other", 8, 8}};

// "warn", or "warn+": that and what is worse.
unsigned SeverityBits(std::string word) {
  word.erase(word.find_last_not_of(' ') + 1);
  const bool andWorse = word.ends_with('+');
  if (andWorse) word.pop_back();
  std::vector<std::string> known;
  for (const SeverityName& name : kSeverities) {
    if (CompareIgnoringCase(name.word, word) == 0) return andWorse ? name.andWorse : name.bit;
    known.emplace_back(name.word);
  }
  throw CLI::ValidationError("--severity", "\"" + word + "\" is no severity" +
                                               DidYouMean(word, known) +
                                               "; there are info, warn, error and other");
}

}  // namespace

void SharedOptions::Add(const RefusedOptions& refused) {
  if (refused.columns) {
    AddRefused("-c,--columns", refused.columns);
  } else {
    AddText("-c,--columns", m_columns, "", "LIST")
        ->description("The shown columns, by their headers: " + AllHeaders());
  }
  m_app.add_flag("-u,--utc", m_options.utc,
                 "Times in UTC, not local time; also those of --since and --until");
  AddTimes();
  if (refused.from) {
    AddRefused("-b,--from", refused.from);
  } else {
    AddNumber("-b,--from", m_options.from, "Index in the file of the first trace [default: 0]");
  }
  AddNumber("-n,--count", m_options.count, "At most so many of the chosen traces");
  if (refused.tail) {
    AddRefused("--tail", refused.tail);
  } else {
    AddNumber("--tail", m_options.tail, "Of the chosen traces only the last");
  }
  AddChoice();
  if (refused.context) {
    AddRefused("--context", refused.context);
  } else {
    AddNumber("--context", m_options.context, "So many traces before and after each chosen one");
  }
  AddFilterOptions(&m_app, m_options.filter);
  AddWhere();
  AddFollow(refused.follow);
}

void SharedOptions::AddFollow(const char* refused) {
  m_isLive = refused == kFollowedAnyway;
  constexpr const char
      *kNames = "-F,--follow",
      *kHelp = "Go on with what is appended to the file, and with the next one if it is rotated";
  if (!refused) {
    m_app.add_flag(kNames, m_options.follow, kHelp);
    return;
  }
  m_app.add_flag_callback(kNames, [refused] { throw CLI::ValidationError("--follow", refused); })
      ->trigger_on_parse()
      ->group("");
}

void SharedOptions::RefuseHopelessPaths() const {
  TerminalHost host;
  if (std::string why; m_options.filter.HasImpossiblePath(host, &why))
    throw CLI::ValidationError(why);
}

void SharedOptions::AddWhere() {
  m_app
      .add_option_function<std::string>(
          "--where",
          [this](const std::string& text) {
            if (std::string why; !::AddWhere(m_options.where, text, &why))
              throw CLI::ValidationError("--where", why);
          },
          "Only what this filter text holds for, such as 'severity >= warn and text contains "
          "\"retry\"'; may be repeated")
      ->trigger_on_parse()
      ->type_name("TEXT");
}

void SharedOptions::AddTimes() {
  AddText("--since", m_since,
          "Not before this time: \"2026-11-23 09:41\", \"2026-11-23T09:41:07.5+01:00\", "
          "2026-11-23, \"10m ago\"",
          "TIME");
  AddText("--until", m_until, "Before this time", "TIME");
}

void SharedOptions::AddChoice() {
  AddText("--severity", m_severities,
          "info, warn, error or other, several with commas; warn+ is warn and worse", "LIST");
  AddNames("--app", ChoiceField::App,
           "Only of this application; may be repeated, as the next ones");
  AddNames("--component", ChoiceField::Component, "Only of this component");
  AddNames("--category", ChoiceField::Category, "Only of this category");
  AddNames("-m,--machine", ChoiceField::Machine, "Only of this machine");
  AddNames("--pid", ChoiceField::Pid, "Only of this process");
  AddNames("--tid", ChoiceField::Tid, "Only of this thread");
  m_app.add_flag("-v,--invert", m_options.choice.invert,
                 "The traces that these do not choose; with find, whose text does not match");
}

CLI::Option* SharedOptions::AddText(const char* names, std::optional<std::string>& text,
                                    const char* help, const char* type) {
  return m_app.add_option(names, text, help)->type_name(type);
}

void SharedOptions::AddNumber(const char* names, std::uint64_t& number, const char* help) {
  const std::string all = names;
  const std::string option = all.substr(all.rfind(',') + 1);
  m_app
      .add_option_function<std::string>(
          names, [option, &number](const std::string& text) { number = ReadNumber(option, text); },
          help)
      ->type_name("N");
}

void SharedOptions::AddNames(const char* names, ChoiceField field, const char* help) {
  m_app.add_option(names, m_options.choice.Of(field), help)
      ->allow_extra_args(false)
      ->type_name("NAME");
}

// In no help.
void SharedOptions::AddRefused(const char* names, const char* reason) {
  const std::string all = names;
  const std::string option = all.substr(all.rfind(',') + 1);
  m_app
      .add_option_function<std::string>(
          names,
          [option, reason](const std::string&) { throw CLI::ValidationError(option, reason); })
      ->group("");
}

void SharedOptions::ReadSeverities() {
  if (!m_severities) return;
  m_options.choice.severities = 0;
  std::istringstream parts(*m_severities + ",");
  for (std::string word; std::getline(parts >> std::ws, word, ',');)
    m_options.choice.severities |= SeverityBits(word);
}

std::uint64_t SharedOptions::Moment(const char* option, const std::string& text) const {
  if (const auto moment = ReadMoment(text, m_options.utc, NowMs())) return *moment;
  throw CLI::ValidationError(option, "\"" + text +
                                         "\" is no time; write it as \"2026-11-23 09:41:07\", "
                                         "2026-11-23 or \"10m ago\"");
}

void SharedOptions::Complete(bool choosesItself) {
  const bool isLive = m_options.follow || m_isLive;
  if (isLive && m_options.where && m_options.where->UsesMarks())
    throw CLI::ValidationError("--where", "traces that still come have no marks and no notes");
  if (m_columns) m_options.columns = ReadColumns(*m_columns);
  ReadSeverities();
  TraceChoice& choice = m_options.choice;
  if (m_since) choice.since = Moment("--since", *m_since);
  if (m_until) choice.until = Moment("--until", *m_until);
  if (choice.since >= choice.until) throw CLI::ValidationError("--until", "is not after --since");
  if (choice.invert && !choosesItself && !choice.HasTests())
    throw CLI::ValidationError("--invert", "needs an option that chooses, such as --severity");
  RefuseOutside("--context", m_options.context, 0, kContextMax);
  const bool chooses =
      choosesItself || !choice.Empty() || !m_options.filter.Empty() || m_options.where;
  if (m_options.context > 0 && !chooses)
    throw CLI::ValidationError("--context", "needs an option that chooses, such as --severity");
}
