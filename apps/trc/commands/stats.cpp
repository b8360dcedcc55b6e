#include "commands/stats.h"

#include <chrono>

#include "commands/notes.h"
#include "filter/shown_traces.h"
#include "input/trace_input.h"
#include "overview/slice_count.h"
#include "statistics/trace_count.h"
#include "terminal/exit_status.h"
#include "terminal/interrupt.h"
#include "terminal/output.h"

namespace {

constexpr const char* kCounting = "Counting...";

// Places of a list, all from one on or those that are given.
class ChosenTraces final : public CountedTraces {
 public:
  ChosenTraces(const TraceList_t& list, std::size_t first, std::size_t end)
      : m_list(list), m_first(first), m_size(end - first) {}
  ChosenTraces(const TraceList_t& list, std::vector<std::uint32_t> places)
      : m_list(list), m_places(std::move(places)), m_size(m_places.size()) {}

  std::size_t Size() const override { return m_size; }
  std::unique_ptr<Reader> MakeReader() const override { return std::make_unique<Walk>(*this); }

 private:
  class Walk final : public Reader {
   public:
    explicit Walk(const ChosenTraces& all) : m_all(all) {}
    void Take(std::size_t from, std::size_t end, Events& events) override {
      if (m_all.m_places.empty()) {
        m_all.m_list.ForEachIn(m_all.m_first + from, m_all.m_first + end,
                               [&](const TraceEvent_i* event) { events.push_back(event); });
        return;
      }
      for (; from < end; ++from) events.push_back(m_all.m_list[m_all.m_places[from]]);
    }

   private:
    const ChosenTraces& m_all;
  };

  const TraceList_t::Reader m_list;
  const std::vector<std::uint32_t> m_places;
  const std::size_t m_first = 0, m_size;
};

// Null after an interrupt.
std::shared_ptr<const CountedTraces> Choose(ShownTraces& shown, const TraceOptions& options,
                                            ProgressLine& progress) {
  shown.OnLook([&](std::size_t place) {
    progress.Show(kCounting, place, shown.All());
    return !Interrupted();
  });
  std::size_t row = shown.Limit(options);
  const TraceList_t& list = shown.Document().m_traces;
  if (!shown.IsSearched())
    return std::make_shared<ChosenTraces>(list, row, std::max(row, shown.Count()));
  std::vector<std::uint32_t> places;
  for (; shown.Has(row); ++row) places.push_back(static_cast<std::uint32_t>(shown.PlaceOf(row)));
  return Interrupted() ? nullptr : std::make_shared<ChosenTraces>(list, std::move(places));
}

// False after an interrupt, or a message.
bool Count(const std::shared_ptr<const CountedTraces>& traces, StatField field, StatTable& table,
           ProgressLine& progress) {
  constexpr std::chrono::milliseconds kLook(50);
  TraceCount count(traces, field);
  TraceCount::State state = TraceCount::State::More;
  while (state == TraceCount::State::More && !Interrupted()) {
    state = count.Take(TraceCount::Clock::now() + kLook);
    progress.Show(kCounting, static_cast<std::uint64_t>(count.Thousandths()), 1000);
  }
  if (state == TraceCount::State::Failed) PrintError("not enough memory");
  if (state == TraceCount::State::Whole) table = count.Table();
  return state == TraceCount::State::Whole;
}

// False after one, or a message.
bool CountSlices(const std::shared_ptr<const CountedTraces>& traces, const NameMap& names,
                 TimeSlices& slices, ProgressLine& progress) {
  constexpr std::chrono::milliseconds kLook(50);
  SliceCount count(traces, LossNames(names));
  SliceCount::State state = SliceCount::State::More;
  while (state == SliceCount::State::More && !Interrupted()) {
    state = count.Take(SliceCount::Clock::now() + kLook);
    progress.Show(kCounting, static_cast<std::uint64_t>(count.Thousandths()), 1000);
  }
  if (state == SliceCount::State::Failed) PrintError("not enough memory");
  if (state == SliceCount::State::Whole) slices = count.Slices();
  return state == SliceCount::State::Whole;
}

void WriteSlices(const StatsOptions& options, const std::shared_ptr<const CountedTraces>& traces,
                 const NameMap& names, ProgressLine& progress, Output& output) {
  TimeSlices slices;
  if (!traces || !CountSlices(traces, names, slices, progress)) return;
  progress.Clear();
  slices.WidenTo(options.slices);
  (options.json ? WriteSlicesAsJson : WriteSlicesAsText)(slices, options, output);
}

}  // namespace

int RunStats(const StatsOptions& options) {
  TerminalHost host;
  TraceInput input(host);
  if (!input.Open(options.files)) return StatusWithoutInput();
  ShownTraces shown(input.Document());
  if (!UseNotes(input, options.traces, shown) || !shown.Filter(options.traces)) return kExitBad;
  Output output;
  const auto traces = Choose(shown, options.traces, host.Progress());
  const bool areSlices = options.slices > 0;
  if (areSlices) WriteSlices(options, traces, input.Document().m_names, host.Progress(), output);
  bool goesOn = traces != nullptr && !areSlices;
  for (std::size_t i = 0; goesOn && i < options.fields.size(); ++i) {
    const StatField field = options.fields[i];
    const NameMap& names = input.Document().m_names;
    StatTable counted;
    if (!Count(traces, field, counted, host.Progress())) break;
    host.Progress().Clear();
    StatsTable table{field, StatRowsOf(field, counted, names), counted.All().count, names};
    SortStatRows(table.rows, options.sortedBy, IsFirstDescending(options.sortedBy));
    if (i > 0 && !options.json) goesOn = output.Line("");
    const auto write = options.json ? WriteStatsAsJson : WriteStatsAsText;
    goesOn = goesOn && write(table, options, output);
  }
  host.Progress().Clear();
  const int status = output.Finish();
  return input.StatusOfAnswer(status == kExitGood && Interrupted() ? kExitInterrupted : status);
}
