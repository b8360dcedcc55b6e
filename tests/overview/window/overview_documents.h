// Documents of random traces for tests of the overview, and what their slices must be.
#pragma once

#include "overview/slow_slices.h"
#include "overview/window/pane_slices.h"
#include "settings/globals.h"
#include "statistics/random_traces.h"
#include "statistics/window/counted_pane.h"
#include "support/recording_host.h"
#include "where/where_program.h"

inline WhereProgramPtr WhereOf(const std::string& text) {
  WhereError error;
  return WhereProgram::Compile(text, error);
}

inline SlicedTrace SlowTraceOf(const TraceEvent_i& event) {
  const int bits = event.GetAttributes();
  const auto moment = MomentOfStamp(std::uint64_t{event.GetDate()} << 32 | event.GetTime());
  return {moment ? *moment / 1'000'000 : TraceTimes::kNone,
          bits & 1   ? 0U
          : bits & 2 ? 1U
          : bits & 4 ? 2U
                     : 3U,
          event.GetComponentId() == 40 && event.GetCategoryId() == 50};
}

// Of a document, whose class is the test's: one that lends its traces to threads, or not.
template <class Document>
class OverviewDocument {
 public:
  explicit OverviewDocument(unsigned seed = 1) : m_random(seed) {
    m_document.m_loading = false;
    for (NameId id = 1; id < 60; ++id) m_document.m_names[id].name = "n" + std::to_string(id);
    m_document.m_names[40].name = "Quor";
    m_document.m_names[50].name = "Loss";
  }

  void Add(EventPtr event) { m_document.AddTrace(event.release()); }
  void AddRandom(unsigned count) {
    for (; count > 0; --count) {
      const unsigned kind = m_random.Below(400);
      if (kind == 0)
        Add(MakeEvent({.date = PackDate(1970, 1, 1), .time = 0}));
      else if (kind == 1)
        Add(MakeEvent({.date = 0, .time = 0}));
      else
        Add(m_random.Make());
    }
  }
  // At so many milliseconds behind 9:00.
  void AddAt(std::int64_t ms, int attributes = kAttributeInfo) {
    const auto part = static_cast<unsigned>(ms);
    Add(MakeEvent(
        {.date = PackDate(2026, 11, 21),
         .time = PackTime(9 + part / 3'600'000, part / 60'000 % 60, part / 1000 % 60, part % 1000),
         .attributes = static_cast<std::uint16_t>(attributes)}));
  }
  // As a monitor does.
  void Trim(std::size_t count) {
    CTraceHint oldest;
    TraceList_t& traces = m_document.m_traces;
    count = std::min(count, traces.size());
    for (std::size_t i = 0; i < count; ++i) oldest.m_events.push_back(traces[i]);
    m_document.UpdateAllViews(nullptr, kHintTrimmed, &oldest);
    for (std::size_t i = 0; i < count; ++i) traces.PopFront();
  }
  std::vector<SlicedTrace> Slow(const CTraceFilter& filter) {
    CTraceFilter asked = filter;
    std::vector<SlicedTrace> slow;
    m_document.m_traces.ForEach(0, [&](const TraceEvent_i* event) {
      if (asked.Matches(*event, m_document) == 1) slow.push_back(SlowTraceOf(*event));
    });
    return slow;
  }

  RecordingHost m_host;
  Document m_document{m_host};
  CountedPane m_pane{m_document};
  RandomTraces m_random;
};
