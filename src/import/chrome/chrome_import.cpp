#include "import/chrome/chrome_import.h"

#include <algorithm>
#include <chrono>

#include "base/fail_with.h"
#include "base/text.h"
#include "records/raw_trace.h"

namespace {

constexpr std::int64_t kDayNs = 86'400'000'000'000;
constexpr std::size_t kBesideTexts = 400;  // of an event: it, and its place in sets and orders

std::size_t BytesOf(const ChromeEvent& event) {
  return kBesideTexts + event.name.size() + event.categories.size() + event.process.size() +
         event.thread.size() + event.id.size() + event.args.size() + event.stack.size();
}

// Of a moment before 1970 there is none.
void SetMoment(std::int64_t ns, ImportedTrace& trace) {
  using namespace std::chrono;
  const std::int64_t ms = std::max<std::int64_t>(ns, 0) / 1'000'000;
  const year_month_day date(sys_days(days(static_cast<int>(ms / 86'400'000))));
  const auto ofDay = static_cast<unsigned>(ms % 86'400'000);
  trace.hasTime = true;
  trace.date = PackDate(static_cast<unsigned>(static_cast<int>(date.year())),
                        static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()));
  trace.time = PackTime(ofDay / 3'600'000, ofDay / 60'000 % 60, ofDay / 1000 % 60, ofDay % 1000);
}

std::string_view CategoryOf(const ChromeEvent& event) {
  switch (event.phase) {
    case 'X':
    case 'B':
    case 'E':
      return "Span";
    case 'C':
      return "Counter";
    case 'b':
    case 'e':
    case 'n':
      return "Async";
    default:
      return "Event";
  }
}

// An end need not have a name, and one that has another belongs to its begin all the same.
std::string TextOf(const ChromeStep& step) {
  const ChromeEvent& event = *step.event;
  if (step.kind == ChromeStep::Begin) return "Begin: " + event.name + event.args;
  if (step.kind == ChromeStep::End) return "End: " + event.name + (step.end ? step.end->args : "");
  const bool isEnd = event.phase == 'E' || event.phase == 'e';
  return (isEnd ? "End without a begin: " : "") + event.name + event.args;
}

}  // namespace

bool ChromeImport::Read(LineReader& reader, const std::string& name, std::string* why) {
  JsonPull pull(reader);
  ChromeEvents events(pull);
  ChromeEvent event;
  while (events.Next(event))
    if (!Take(event, why)) return false;
  if (reader.Stopped()) return FailWith(why, "interrupted");
  if (reader.Error() != 0) return FailWith(why, name + ": " + SystemReason(reader.Error()));
  if (!events.Why().empty())
    m_damaged.push_back(name + ": " + events.Why() + "; what is before it was kept");
  m_strange += events.Strange();
  m_hasStackFrames = m_hasStackFrames || events.HasStackFrames();
  if (!Give(true, why)) return false;
  m_processes.clear();
  m_threads.clear();
  m_tracks.clear();
  return true;
}

bool ChromeImport::Take(ChromeEvent& event, std::string* why) {
  constexpr std::string_view kCarried = "BEXiIRCben";
  if (event.phase == 'M') {
    TakeName(event);
    return true;
  }
  if (event.phase == 0 || kCarried.find(event.phase) == kCarried.npos) {
    ++(event.phase == 0 ? m_strange : m_others[static_cast<unsigned char>(event.phase)]);
    return true;
  }
  if (!event.hasTime) {
    ++m_untimed;
    return true;
  }
  const bool isAsync = CategoryOf(event) == "Async";
  m_held += BytesOf(event);
  ChromeTrackKey key{event.process, isAsync ? event.categories : event.thread, isAsync};
  m_tracks[std::move(key)].Add(std::move(event));
  if (m_held <= m_heldMost && m_tracks.size() <= kTracksMax) return true;
  if (!Give(false, why)) return false;
  // Begins without ends must not fill the memory either, nor threads without events.
  if (m_held > m_heldMost / 2 && !Give(true, why)) return false;
  if (m_tracks.size() > kTracksMax) m_tracks.clear();
  return true;
}

void ChromeImport::TakeName(const ChromeEvent& event) {
  const bool isProcess = event.name == "process_name";
  if (event.argsName.empty() || (!isProcess && event.name != "thread_name")) return;
  Names& names = isProcess ? m_processes : m_threads;
  const std::pair key(event.process, isProcess ? std::string() : event.thread);
  if (names.size() == kTracksMax && !names.contains(key)) {
    ++m_unnamed;
    return;
  }
  names[key] = event.argsName;
}

bool ChromeImport::Give(bool isLast, std::string* why) {
  struct Placed {
    const ChromeTrackKey* key;
    ChromeStep step;
  };
  std::vector<Placed> all;
  for (auto& [key, track] : m_tracks)
    for (const ChromeStep& step : track.Take(isLast)) all.push_back({&key, step});
  std::stable_sort(all.begin(), all.end(),
                   [](const Placed& a, const Placed& b) { return a.step.timeNs < b.step.timeNs; });
  for (const Placed& placed : all)
    if (!Put(*placed.key, placed.step, why)) return false;
  m_held = 0;
  for (auto& [key, track] : m_tracks) {
    track.Forget();
    for (const ChromeEvent& event : track.Events()) m_held += BytesOf(event);
  }
  return true;
}

bool ChromeImport::Put(const ChromeTrackKey& key, const ChromeStep& step, std::string* why) {
  const ChromeEvent& event = *step.event;
  ImportedTrace trace = m_fields.Begin();
  const bool isEnd = step.kind == ChromeStep::End;
  const std::int64_t time = step.end ? step.end->timeNs
                            : isEnd  ? event.timeNs + std::max<std::int64_t>(event.durationNs, 0)
                                     : event.timeNs;
  SetMoment(time, trace);
  trace.tic = TicOf(time);
  m_text = TextOf(step);
  trace.text = m_text;
  // An X has said all at its begin.
  const ChromeEvent* const said = isEnd ? step.end : &event;
  if (said && !said->stack.empty()) trace.stack = said->stack;
  m_thread = ThreadOf(key, step.lane);
  trace[ImportName::Pid] = key.process;
  trace[ImportName::Tid] = m_thread;
  const auto process = m_processes.find({key.process, {}});
  if (process != m_processes.end()) trace[ImportName::App] = process->second;
  const bool hasComponent = trace[ImportName::Component].data() != nullptr;
  const std::string_view categories =
      event.categories.empty() ? "Trace" : std::string_view(event.categories);
  if (!hasComponent) trace[ImportName::Component] = categories;
  trace[ImportName::Category] = hasComponent ? categories : CategoryOf(event);
  m_fields.Complete(trace);
  return m_parts.Put(trace, why);
}

// Names of threads are not unique in a process, so their numbers stand behind them.
std::string ChromeImport::ThreadOf(const ChromeTrackKey& key, std::uint32_t lane) const {
  std::string thread = key.thread;
  if (key.isAsync) {
    thread = "async " + key.thread;
  } else if (const auto name = m_threads.find({key.process, key.thread}); name != m_threads.end()) {
    thread = name->second + " (" + key.thread + ")";
  }
  return lane == 0 ? thread : thread + " lane " + std::to_string(lane + 1);
}

// Picoseconds from a day before the first event. 64 bits hold 213 days of them.
std::uint64_t ChromeImport::TicOf(std::int64_t ns) {
  if (!m_hasBase) m_baseNs = ns - kDayNs;
  m_hasBase = true;
  if (ns <= m_baseNs) return 0;
  // The difference of any two fits without a sign.
  const std::uint64_t since = static_cast<std::uint64_t>(ns) - static_cast<std::uint64_t>(m_baseNs);
  return since > UINT64_MAX / 1000 ? 0 : since * 1000;
}

std::vector<std::string> ChromeImport::Texts() const {
  std::vector<std::string> texts = m_damaged;
  const auto tell = [&texts](std::uint64_t number, const char* one, const char* many) {
    if (number != 0) texts.push_back(GroupDigits(number) + " " + (number == 1 ? one : many));
  };
  tell(m_strange, "event was not understood, and left out",
       "events were not understood, and left out");
  tell(m_untimed, "event has no time, and was left out", "events have no time, and were left out");
  const std::uint64_t flows = m_others['s'] + m_others['t'] + m_others['f'];
  tell(flows, "flow event is not carried over", "flow events are not carried over");
  std::uint64_t number = 0;
  std::string letters;
  for (std::size_t phase = 0; phase < m_others.size(); ++phase) {
    if (m_others[phase] == 0 || phase == 's' || phase == 't' || phase == 'f') continue;
    number += m_others[phase];
    letters += std::string(letters.empty() ? "" : ", ") +
               (phase > ' ' && phase < 127 ? std::string(1, static_cast<char>(phase)) : "?");
  }
  if (number != 0)
    texts.push_back(GroupDigits(number) + (number == 1 ? " event" : " events") +
                    " of other kinds " + (number == 1 ? "is" : "are") +
                    " not carried over: " + letters);
  tell(m_unnamed, "name of a thread or process was left out: there are too many",
       "names of threads and processes were left out: there are too many");
  if (m_hasStackFrames) texts.push_back("call stacks in stackFrames are not carried over");
  return texts;
}
