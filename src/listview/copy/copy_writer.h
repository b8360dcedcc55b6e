// One form of copied traces: it is given each trace and makes the text.
//
// Shape    UTF-8 as in the traces.
//          Text, Tabs   the cells as the list shows them, uncut, the severity as a word; a tab, a
//                       line break or another control character in a cell is a blank.
//          Csv          the values that `trc` exports as csv-rfc4180, quoted where needed, lines
//                       that end in CR LF.
//          Json         the objects that `trc` dumps as jsonl; "i" is the place in the document.
//          FilterText   `count in {1, 5..9}`; a trace without a number is meant by time and text.
//          In Tabs and Csv a text that a spreadsheet would take for a formula, because it begins
//          with = + - @, gets a ' before it; numbers do not.
// Errors   IsTooLong: no filter text can be so long.
// Threads  Pure.
#pragma once

#include <memory>

#include "listview/copy/copied_traces.h"
#include "listview/copy/copy_form.h"
#include "records/moments/trace_moments.h"

class CopyWriter {
 public:
  virtual ~CopyWriter() = default;

  // A first pass over all traces, if it is needed.
  virtual bool NeedsMeasure() const { return false; }
  virtual void Measure(const CopiedTrace&) {}
  // Does it need the place of a trace in the document, and all moments of the document learned?
  virtual bool NeedsMoments() const { return false; }

  virtual void Begin(std::string&) {}  // headings
  virtual void Add(std::string& out, const CopiedTrace& trace, std::uint64_t place) = 0;
  virtual void End(std::string&) {}
  virtual bool IsTooLong() const { return false; }
};

// What the writers borrow.
struct CopyContext {
  CopiedTraces& traces;
  const NameMap& names;
  TraceMoments& moments;
  bool utc;
  bool headings;
};
std::unique_ptr<CopyWriter> MakeCopyWriter(CopyForm form, const CopyContext& context);
