// Makes a new procedure tree of the traces that pass a filter, in steps, while another one is
// shown.
//
// Shape    A TraceScan judges the traces that the document holds at the beginning, and each step
//          files some of its hits. Traces that come meanwhile are judged when they come, and filed
//          behind those. Then the nodes get their durations. The new tree has no items.
// Trims    A trace that was filed leaves the new tree as it leaves a shown one. One that was not
//          filed yet is left out, and its removal takes no other node with it.
// Owner    Owns the new tree; borrows the document and the filter, which the tree goes on using.
// Errors   Failed: no memory.
// Threads  Interface thread.
#pragma once

#include <deque>
#include <memory>

#include "panes/trace_scan.h"
#include "tree/proc/model/proc_model.h"

class TreePass {
 public:
  using State = TraceScan::State;
  using Clock = TraceScan::Clock;

  // `line` is asked for a step when threads have found something and when they have ended.
  TreePass(CTraceDoc& document, CTraceFilter& filter, const TraceScanSetup& setup,
           std::shared_ptr<PostedStep::Line> line);

  // Works until then, at least for a little while. `wait`: also for what threads find.
  State Step(Clock::time_point until, bool wait);
  // From now on threads judge what is left, if they can. False: Step must be called again.
  bool GoOn() { return m_scan && m_scan->GoOn(); }
  // The document has got these traces; it is about to remove these.
  void Add(const CTraceHint& newest);
  void Remove(const CTraceHint& oldest);
  int Thousandths() const;
  const ProcModel& Model() const { return *m_model; }
  // REQUIRES: Whole. Nothing else is called after it.
  std::unique_ptr<ProcModel> TakeModel() { return std::move(m_model); }

 private:
  bool FileLate();

  CTraceDoc& m_document;
  CTraceFilter& m_filter;
  std::unique_ptr<ProcModel> m_model;
  std::unique_ptr<TraceScan> m_scan;  // null: all its hits are filed
  std::deque<TraceEvent_i*> m_late;   // they pass, and came after the scan had begun
  std::size_t m_timed = 0;            // parts of the durations
};
