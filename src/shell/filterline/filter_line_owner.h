// What the line of filter text needs of its window, and the line's face.
//
// Threads  Interface thread.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "docview/view.h"
#include "tree/filter/trace_filter.h"
#include "where/text/where_parser.h"

class FilterLineOwner {
 public:
  // What filters the shown pane; null: no text.
  virtual WhereProgramPtr WhereInForce() const = 0;
  // Null: all that the filter dialog shows. False: the user cancelled, and nothing has changed. A
  // text may go on being applied for a while; it counts as in force meanwhile.
  virtual bool ApplyWhere(const WhereProgramPtr& program) = 0;
  // The thousandths that are applied; none: nothing is under way. The line is told of a change
  // (OnStatus).
  virtual std::optional<int> WhereProgress() const = 0;
  // Ends it; the text before is in force again, if not all rows are there.
  virtual void CancelWhere() = 0;
  // The marks of the filter dialog's tree together with the text.
  virtual CTraceFilter FilterInForce() const = 0;
  virtual bool ApplyFilter(const CTraceFilter& filter) = 0;
  // Can the filter dialog's tree say this? False, the place in the text and the reason. True also
  // where that would take longer to find out than a menu may take to open.
  virtual bool IsTree(const WhereExpr& expr, WhereError& error) const = 0;
  // Shows the dialog with the tree of what the marks in force and this text show. False, the place
  // and the reason: no tree says this, or it takes too long to find out.
  virtual bool OpenAsTree(const WhereExpr& expr, WhereError& error) = 0;
  // The names that the document has for a field.
  virtual std::vector<std::string> WhereNamesOf(WhereField field) const = 0;
  // Escape in the line.
  virtual void PutAwayFilterLine() = 0;

 protected:
  ~FilterLineOwner() = default;
};

// The line's window. SetFocus gives its text the focus, all of it selected.
class FilterLineFace : public ViewControl {
 public:
  virtual bool HasFocus() const = 0;
  // The text, its error or what is in force have changed.
  virtual void Update() = 0;
};
