// The interface to the report list: rows of several columns under headings that can be clicked, any
// number of rows selected.
//
// Shape    Rows are 0..count-1 and columns 0..count-1. The list holds no texts: it asks its owner
//          for the rows that it paints. The owner sorts.
// Owner    The window owns the list, which borrows its ReportListOwner. The owner outlives it.
// Errors   A row or column that does not exist is ignored.
// Threads  Interface thread.
//
// The Qt class (controls/report/ui) and a fake (tests/support) pass the same contract test.
#pragma once

#include <string>
#include <vector>

// A small square in front of a cell's text. Marks stand at fixed places, so that the rows can be
// compared without reading.
struct ReportMark {
  enum class Tone { Plain, Info, Warn, Error };
  Tone tone = Tone::Plain;
  bool on = false;
};

enum class ReportAlign { Left, Right };  // right: numbers, whose digits stand below each other

class ReportListOwner {
 public:
  virtual std::string ReportText(int row, int column) = 0;
  virtual std::vector<ReportMark> ReportMarks(int row, int column) = 0;
  // Shown while there are no rows.
  virtual std::string ReportEmptyText() = 0;
  // The widths of all columns in a list of this width, which is without a vertical scroll bar.
  // Asked for every size of the list until the user has dragged a heading.
  virtual std::vector<int> ReportWidths(int roomPx) = 0;
  // What is selected has changed, by the user or by new rows.
  virtual void OnReportSelection() = 0;
  virtual void OnReportHeading(int column) = 0;  // a click on it, or its key
  virtual void OnReportDoubleClick() = 0;        // on a row

 protected:
  ~ReportListOwner() = default;
};

class ReportList {
 public:
  virtual ~ReportList() = default;

  // Behind the others. The heading is aligned as its cells are.
  virtual void InsertColumn(const std::string& heading, ReportAlign align = ReportAlign::Left) = 0;
  virtual int ColumnWidth(int column) const = 0;
  // Of a column that shows this text whole, as a cell or as the heading with its sort mark.
  virtual int WidthFor(const std::string& text) const = 0;
  // The heading that shows by which column the rows are sorted.
  virtual void ShowSort(int column, bool descending) = 0;

  // New rows, whatever was there: none is selected, and the first is at the top.
  virtual void SetItemCount(int rows) = 0;
  virtual int ItemCount() const = 0;
  virtual void Repaint() = 0;  // texts or marks have changed

  virtual std::vector<int> SelectedRows() const = 0;  // ascending
  virtual bool HasSelection() const = 0;
};
