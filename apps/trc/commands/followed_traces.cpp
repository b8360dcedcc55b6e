#include "commands/followed_traces.h"

#include <algorithm>
#include <utility>

#include "input/whole_records.h"

namespace {

TraceOptions Uncounted(TraceOptions options) {
  options.count = TraceOptions::kAll;
  options.context = 0;
  return options;
}

// The ids of all files are those of one. The other numbers the ids themselves anew.
constexpr std::size_t kFile = 0, kOldIds = 1;

}  // namespace

struct FollowedTraces::NameSink {
  FollowedTraces& traces;
  Bytes last = {};

  void OnName(NameId id, std::string_view utf8) const {
    NameEntry_t& entry = traces.m_ofFile[id];
    if (entry.name == utf8 && !utf8.empty()) return;
    entry.name = utf8;
    traces.m_names.Forget(kFile, id);
  }
  bool OnTrace(Bytes record) {
    last = record;
    return true;
  }
  static void OnUnknownTag(std::uint64_t) {}
};

struct FollowedTraces::CountSink {
  FollowedTraces& traces;

  static void OnName(NameId, std::string_view) {}
  bool OnTrace(Bytes record) const {
    TraceEvent_i* const trace = traces.Own(record);
    return trace && traces.m_counter->Add(trace, [](const TakenTrace& taken) {
      ReleaseTrace(taken.trace);
      return true;
    });
  }
  static void OnUnknownTag(std::uint64_t) {}
};

struct FollowedTraces::TraceSink {
  FollowedTraces& traces;

  static void OnName(NameId, std::string_view) {}
  bool OnTrace(Bytes record) const { return traces.Add(record); }
  void OnUnknownTag(std::uint64_t position) const { traces.m_damage.Skip(position); }
};

FollowedTraces::FollowedTraces(const DumpOptions& options, Test test, Output& output)
    : m_options(options),
      m_counted(Uncounted(options.traces)),
      m_output(output),
      m_test(std::move(test)),
      m_choice(options.traces, m_names.Names()),
      m_lines(MakeTraceLines({options.format, options.coloured, options.colours, true},
                             options.traces, m_names.Names(), output)) {
  KeepTested(m_choice);
  CountAnew();
}

void FollowedTraces::KeepTested(LiveChoice& choice) {
  if (m_test) choice.Keep([this](const TraceEvent_i& trace) { return m_test(trace, m_output); });
}

void FollowedTraces::CountAnew() {
  m_counter.emplace(m_counted, m_names.Names());
  KeepTested(*m_counter);
}

// What was counted is of the file as it was.
void FollowedTraces::BeginFile() {
  m_names.Forget(kFile);
  m_ofFile.clear();
  m_damage = {};
  m_choice.Skip(0);
  CountAnew();
}

std::size_t FollowedTraces::LearnNames(Bytes piece) {
  NameSink sink{*this};
  const std::size_t taken = WalkWholeRecords(piece, 0, sink);
  if (!sink.last.empty()) {
    const auto end = MomentOfStamp(StampOf(RawTrace(sink.last.data())));
    m_choice.SetEnd(end);
    m_counter->SetEnd(end);
  }
  return taken;
}

std::size_t FollowedTraces::Count(Bytes piece) {
  return WalkWholeRecords(piece, 0, CountSink{*this});
}

void FollowedTraces::LeaveTail() {
  const std::uint64_t chosen = m_counter->Chosen();
  m_choice.Skip(chosen - std::min(chosen, m_options.traces.tail));
}

std::size_t FollowedTraces::Give(Bytes piece, std::uint64_t position, bool named) {
  if (!named) WalkWholeRecords(piece, position, NameSink{*this});
  return WalkWholeRecords(piece, position, TraceSink{*this});
}

// What is left are the names of the traces that are held; those of the file come as they are used.
void FollowedTraces::GiveIdsBack() {
  MergedNames fresh;
  const NewId newId = [&](NameId id) {
    fresh.Translate(kOldIds, m_names.Names(), id, id);
    return id;
  };
  m_choice.Renumber(newId);
  m_counter->Renumber(newId);
  m_previous = Renumbered(m_previous, newId);
  m_lines->ForgetIds();
  fresh.Forget(kOldIds);
  m_names = std::move(fresh);
}

// Null: there are too many names at once.
TraceEvent_i* FollowedTraces::Own(Bytes record) {
  for (const bool again : {false, true}) {
    if (again) GiveIdsBack();
    std::vector<std::uint8_t> own(record.begin(), record.end());
    if (TranslateIds(m_names, kFile, m_ofFile, own.data()))
      return new OwnedTraceEvent_t(std::move(own));
  }
  m_why = kTooManyNames;
  m_over = true;
  return nullptr;
}

bool FollowedTraces::Add(Bytes record) {
  TraceEvent_i* const trace = Own(record);
  if (!trace) return false;
  const bool goesOn = m_choice.Add(trace, [&](const TakenTrace& taken) {
    const bool more = m_lines->Add(taken, m_previous);
    ReleaseTrace(std::exchange(m_previous, taken.trace));
    return more;
  });
  m_over = m_over || !goesOn;
  return !IsOver();
}
