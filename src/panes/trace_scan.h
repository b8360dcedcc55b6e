// Finds the traces of a document that pass a filter: in the background, and in order.
//
// A scan is about the traces that the document holds at its beginning, with the filter, the names
// and the newest trace of that moment: it finds what a pass without a break would have found then.
//
// Shape    It works while it is asked for hits, and from GoOn on by itself. Traces that lie in a
//          mapped file are shared by threads, as many as there are processors: each takes the next
//          piece, with a filter and a matcher of its own, and reads the trace before its first one
//          where `delta` needs that. The hits of the pieces come in their order. A document whose
//          traces come and go is walked on the interface thread only, in steps: so nothing reads a
//          trace while it is removed.
// Owner    Borrows the document until its end. The threads share what they read (LentTraces) and
//          outlive the scan where they must: neither the end of the scan nor that of the document
//          waits for them.
// Errors   Failed: no memory.
// Threads  Interface thread.
#pragma once

#include <chrono>
#include <cstddef>
#include <functional>
#include <memory>
#include <vector>

#include "documents/trace_doc.h"
#include "docview/posted_step.h"
#include "tree/filter/filter_pass.h"

// Parameters of a scan, 0: by the filter. Tests that need small pieces change them.
struct TraceScanSetup {
  std::size_t perLook = 0;   // traces until the clock and a stop are looked at
  std::size_t perPiece = 0;  // traces that a thread takes at a time
  std::size_t threads = 0;
};

class TraceScan {
 public:
  enum class State { More, Whole, Failed };
  using Clock = std::chrono::steady_clock;

  // `line` is asked when threads have found something and when they have ended.
  TraceScan(CTraceDoc& document, const CTraceFilter& filter, const TraceScanSetup& setup,
            std::shared_ptr<PostedStep::Line> line);
  ~TraceScan();
  TraceScan(const TraceScan&) = delete;
  TraceScan& operator=(const TraceScan&) = delete;

  // Gives the next hits, at least for a little while and about until then. Without threads it walks
  // on. With threads it takes what they have; `wait`: if that is nothing, it waits for something.
  using Hit = std::function<void(TraceEvent_i*)>;
  State Take(Clock::time_point until, const Hit& hit, bool wait = false);
  // From now on threads do what is left, if the document lends its traces. False: Take must be
  // called again.
  bool GoOn();
  // The document is about to remove these, its oldest traces.
  void OnTrim(const CTraceHint& oldest);
  int Thousandths() const;
  // Steps of Take so far.
  std::size_t Steps() const { return m_steps; }

 private:
  class Pieces;
  void Walk(Clock::time_point until, const Hit& hit);
  State TakeFromThreads(Clock::time_point until, const Hit& hit, bool wait);
  bool NextPiece(Clock::time_point patience);
  bool GiveSome(const Hit& hit);
  std::uint64_t Left() const { return m_end - m_next; }

  CTraceDoc& m_document;
  const std::shared_ptr<PostedStep::Line> m_line;
  TraceScanSetup m_setup;
  CTraceFilter m_filter;
  const std::shared_ptr<const NameMap> m_names;
  const WhereClock m_clock;
  FilterPass m_pass;
  // Counted from the first trace that the document ever had (TraceList_t::Popped).
  const std::uint64_t m_begin, m_end;
  std::uint64_t m_next;
  std::shared_ptr<Pieces> m_pieces;   // null: no threads
  std::vector<TraceEvent_i*> m_hits;  // of the piece that is being given
  std::size_t m_given = 0;
  std::size_t m_steps = 0;
};
