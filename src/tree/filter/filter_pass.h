// One walk of a filter over many traces: the same answers and the same additions to the filter as
// CTraceFilter::Matches, at the cost of reading the ids and of what the text looks at.
//
// Shape    The marks are copied into a byte per id and field. The verdicts on machine, process and
//          thread are kept in a small direct-mapped table when they are first needed. For an id
//          that the filter does not know Matches is called, which may add the id. The text is
//          asked about what the marks let through.
// Owner    Borrows the filter and the document. REQUIRES: nobody else changes the filter while the
//          pass is in use. A text needs the traces in the document's order, each of them from the
//          first that is asked about: `delta` looks at the trace before, whether it is shown or
//          not. `end` is the newest trace at the beginning of the pass.
// Threads  That of the filter.
#pragma once

#include <array>
#include <cstdint>
#include <memory>

#include "records/trace_list.h"
#include "settings/globals.h"
#include "tree/filter/trace_filter.h"
#include "where/where_matcher.h"

class FilterPass {
 public:
  // The marks alone.
  explicit FilterPass(CTraceFilter& filter);
  // The marks, and the text if there is one.
  // `utc`: times without a zone are in UTC.
  FilterPass(CTraceFilter& filter, const CTraceDoc& document, bool utc = g_useUtc);
  // The same without the document, also on another thread: if NeedsBefore, BeginBehind comes first.
  // Borrows the names too.
  FilterPass(CTraceFilter& filter, const NameMap& names, const WhereClock& clock);
  ~FilterPass();
  // `end` is the document's newest trace now.
  static WhereClock ClockOf(const CTraceDoc& document, bool utc = g_useUtc);

  bool Matches(const TraceEvent_i& event) {
    if (m_plainText) {
      const std::uint8_t* const record = event.Record();
      if (record) return (m_all || MatchesRecord(RawTrace(record))) && m_plainText->Matches(record);
    }
    if (m_text) return MatchesText(event);
    return m_all || MatchesMarks(event);
  }
  // The same for traces in any order: `before` is the document's trace before it, null for its
  // first one. Needed only if NeedsBefore.
  bool NeedsBefore() const;
  // The next trace that is asked about follows on this one; null: it is the document's first one.
  void BeginBehind(const TraceEvent_i* before);
  bool MatchesBehind(const TraceEvent_i& event, const TraceEvent_i* before);
  // Searches of the text that took too long and were given up.
  std::uint64_t GivenUp() const;

 private:
  struct Text;
  FilterPass(CTraceFilter& filter, const NameMap& names, const WhereClock& clock,
             const TraceList_t* list);
  bool MatchesMarks(const TraceEvent_i& event) {
    const std::uint8_t* const record = event.Record();
    return record ? MatchesRecord(RawTrace(record)) : m_filter.Matches(event) != 0;
  }
  bool MatchesText(const TraceEvent_i& event);

  // Verdicts, combined by AND: a trace is hidden if any field hides it. kUnknown is checked first.
  static constexpr std::uint8_t kHidden = 0, kShown = 1, kUnknown = 0x80;
  struct Tables {
    std::array<std::uint8_t, 65536> components, categories, applications;
  };
  static constexpr unsigned kSlotBits = 10;
  // A slot holds machine, process and thread (48 bits), a used bit and above them the verdict.
  static constexpr std::uint64_t kUsed = std::uint64_t{1} << 48;

  static std::uint64_t KeyOf(const RawTrace& trace) {
    return kUsed | std::uint64_t{trace.MachineId()} << 32 | std::uint64_t{trace.PidId()} << 16 |
           trace.TidId();
  }
  static std::size_t SlotOf(std::uint64_t key) {
    // Multiplying by the golden ratio spreads keys that differ in any field over the top bits.
    return (key * 0x9E3779B97F4A7C15u) >> (64 - kSlotBits);
  }

  // Traces vary, so a branch on a verdict is often predicted wrongly: they are combined without
  // one.
  bool MatchesRecord(const RawTrace& trace) {
    const std::uint8_t severity = m_attributes[trace.Attributes() & 31];
    const std::uint8_t component = m_tables->components[trace.ComponentId()];
    const std::uint8_t category = m_tables->categories[trace.CategoryId()];
    const std::uint8_t application = m_tables->applications[trace.AppId()];
    std::uint8_t thread = kShown;
    if (!m_filter.allThreads) {
      const std::uint64_t key = KeyOf(trace);
      const std::uint64_t slot = m_threads[SlotOf(key)];
      thread = (slot & (kUsed * 2 - 1)) == key ? static_cast<std::uint8_t>(slot >> 49) : kUnknown;
    }
    if ((component | category | application | thread) & kUnknown) return MatchesUnknown(trace);
    return severity & component & category & application & thread;
  }
  bool MatchesUnknown(const RawTrace& trace);
  void LearnThread(const RawTrace& trace);

  CTraceFilter& m_filter;
  const bool m_all;  // of the marks
  std::unique_ptr<Text> m_text;
  WhereMatcher* m_plainText = nullptr;  // that of m_text, if it does not look at the trace before
  std::array<std::uint8_t, 32> m_attributes;
  std::unique_ptr<Tables> m_tables;
  std::array<std::uint64_t, std::size_t{1} << kSlotBits> m_threads = {};
};
