// Counts the hits of a search in all rows that a view shows, in the background, and keeps the count
// true while rows come and go.
//
// Shape    Works in short steps with pauses between them, in which the user has his turn. The rows
//          of a large file are looked at by all processors (tree/find/scan), others row by row on
//          the interface thread. The count is that of testing each row: a search of a text is never
//          given up.
// Owner    The view owns it and reports whatever happens to its rows. It owns `rows`, borrows the
//          document, and has a plan of its own for the pattern.
// Errors   None: without memory for threads the rows are looked at one by one.
// Threads  Interface thread.
#pragma once

#include <chrono>
#include <memory>
#include <optional>

#include "documents/trace_doc.h"
#include "docview/host_timer.h"
#include "tree/find/hits/hit_bits.h"
#include "tree/find/hits/hit_rows.h"
#include "tree/find/scan/text_scan.h"
#include "tree/regex/plan/regex_matcher.h"

// The rows of a view: traces in the order of their document.
class CountedRows {
 public:
  virtual int CountedSize() const = 0;
  virtual const TraceEvent_i* CountedAt(int row) const = 0;
  // No more rows will come but those of new traces.
  virtual bool AreRowsWhole() const { return true; }
  // Some may be there and not be shown. Asked for rows with a hit, between two calls of BeginStep.
  virtual bool IsShown(int /*row*/) { return true; }
  virtual void BeginStep() {}
  // The row that the user is at; -1: none.
  virtual int CurrentRow() const { return -1; }
  // Leads the user to the row and its hit; the selection and the focus of the keys stay.
  virtual void GoTo(int /*row*/) {}
  virtual ~CountedRows() = default;
};

// How large a search must be for threads, and how they share it.
struct HitCountSetup {
  int rowsForThreads = 50'000;
  std::size_t threads = 0, perPiece = 0;  // 0: as TextScan chooses
};

class HitCount final : public FindHitRows {
 public:
  HitCount(CTraceDoc& document, std::unique_ptr<CountedRows> rows, const RegexProgram& program,
           const HitCountSetup& setup = {});

  const RegexProgram& Program() const { return m_program; }
  // The trace of a row; null if that is gone.
  const TraceEvent_i* TraceAt(int row) const;
  CTraceDoc& Document() const { return m_document; }
  void GoTo(int row) const { m_rows->GoTo(row); }
  // ---- what the view reports
  void OnAnew();   // other rows
  void OnAdded();  // rows at the end, or the rows are whole now
  void OnRemoved(int first, int count);

  // Counts on for about this long; true: not all is looked at. The steps call it by themselves.
  bool Step(std::chrono::milliseconds time);
  bool IsAtWork() const { return m_timer.has_value(); }
  // HitText for the row that the user is at.
  std::string Text() const { return HitText(*this, m_rows->CurrentRow()); }

  int Known() const override { return m_bits.Known(); }
  bool IsWhole() const override;
  int Count() const override { return m_bits.Count(); }
  bool Has(int row) const override { return m_bits.Has(row); }
  int Position(int row) const override { return m_bits.Position(row); }
  int Next(int row) const override { return m_bits.Next(row); }
  int RowOf(int hit) const override { return m_bits.RowOf(hit); }
  std::uint64_t Version() const override { return m_version; }
  // Null: there is no such hit, or its trace is gone.
  const TraceEvent_i* TraceOf(int hit) const { return TraceAt(RowOf(hit)); }

 private:
  using Clock = std::chrono::steady_clock;
  void Begin();
  void GoOn();
  bool StepScan(Clock::time_point until);
  bool StepRows(Clock::time_point until);
  // Passes to the row of the trace that the scan has found; false: it may still come.
  bool TakeFound(Clock::time_point until);
  int RowOfFound() const;
  RegexAnswer Test(int row);

  CTraceDoc& m_document;
  const std::unique_ptr<CountedRows> m_rows;
  const RegexProgram m_program;
  const RegexPlan m_plan;
  const HitCountSetup m_setup;
  RegexMatcher m_matcher;
  bool m_unfinished = false;  // the test of the first row that is not known
  HitBits m_bits;
  bool m_begun = false;
  std::uint64_t m_generation = 0;    // of the document's list
  std::unique_ptr<TextScan> m_scan;  // null: rows are looked at one by one
  bool m_found = false;              // by the scan, and its row is not known yet
  std::uint64_t m_version = 0;
  std::optional<HostTimer> m_timer;  // while there is something to do
};
