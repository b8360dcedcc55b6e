// A monitor's document without the connection: adds and trims like a drain, and notifies its views.
//
// Shape    Threads take turns, with 20 traces each; of five traces two open and close a block. The
//          category goes from 4 to 10 in a circle, so a filter on one of them hides six of seven
//          traces. With whole blocks no trace is outside its block, and all have one category.
// Owner    Owns the document, the views are the caller's.
#pragma once

#include "bench/bench_host.h"
#include "documents/trace_doc.h"
#include "tree/filter/trace_filter.h"

class LiveDocument {
 public:
  LiveDocument(BenchHost& host, std::size_t limit, int threads)
      : m_document(host), m_limit(limit), m_threads(static_cast<unsigned>(threads)) {
    m_document.m_loading = false;
  }

  CTraceDoc& Document() { return m_document; }
  void Fill() { Tick(static_cast<int>(m_limit)); }
  // Without blocks.
  void FillPlain() {
    m_blocks = false;
    Fill();
  }

  void FillWithWholeBlocks() {
    m_wholeBlocks = true;
    Fill();
  }
  // The next trace has number 1 again, as after a restart of the service.
  void BeginAnew() { m_count = 0; }

  void Tick(int traces) {
    CTraceHint batch;
    for (int i = 0; i < traces; ++i) {
      if (m_document.m_traces.size() >= m_limit) Trim(batch);
      m_document.AddTrace(Next());
      batch.m_events.push_back(m_document.m_traces.back());
    }
    m_document.UpdateAllViews(nullptr, kHintAdded, &batch);
  }

  static CTraceFilter HideMost(CTraceFilter filter = {}) {
    filter.allTraces = filter.allCategories = 0;
    for (NameId id = 4; id < 11; ++id) filter.categories[id] = id == 4;
    return filter;
  }
  static CTraceFilter HideSome() {
    CTraceFilter filter;
    filter.allTraces = filter.allCategories = 0;
    for (NameId id = 4; id < 11; ++id) filter.categories[id] = id != 4;
    return filter;
  }

 private:
  TraceEvent_i* Next() {
    const unsigned n = ++m_count;
    const unsigned step = m_blocks ? n % 5 : 0;
    const unsigned last = m_wholeBlocks ? 0 : 4;
    const char* const text = step == 1 ? "Begin: handle a request of ordinary length from a peer"
                             : step == last && m_blocks
                                 ? "End: handle a request of ordinary length from a peer"
                                 : "a request of ordinary length was taken from the queue";
    const unsigned turn = m_wholeBlocks ? (n - 1) / 5 : n;
    const auto thread = static_cast<unsigned short>((n - 1) / 20 % m_threads);
    return TraceEvent_i::Create(
        n, 1, 2, 3, static_cast<unsigned short>(4 + turn % 7), PackDate(2026, 11, 21),
        PackTime(9, 41, 7, 5), std::uint64_t{1000} * n,
        static_cast<unsigned short>(20 + thread / 4), static_cast<unsigned short>(100 + thread),
        kAttributeInfo, 30, 99, text, "");
  }

  void Trim(CTraceHint& batch) {
    CTraceHint oldest;
    for (std::size_t i = 0; i < 100; ++i) oldest.m_events.push_back(m_document.m_traces[i]);
    m_document.UpdateAllViews(nullptr, kHintTrimmed, &oldest);
    for (const TraceEvent_i* const event : oldest.m_events) {
      if (!batch.m_events.empty() && batch.m_events.front() == event) batch.m_events.pop_front();
      m_document.m_traces.PopFront();
    }
  }

  CTraceDoc m_document;
  const std::size_t m_limit;
  const unsigned m_threads;
  unsigned m_count = 0;
  bool m_blocks = true;
  bool m_wholeBlocks = false;
};
