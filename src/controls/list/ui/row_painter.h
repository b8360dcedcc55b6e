// Paints the rows of a list, and measures their cells.
//
// Cost     By the visible cells. A text is made when its cell is painted and is not stored.
// Threads  Interface thread.
#pragma once

#include <QFontMetrics>
#include <QRect>
#include <vector>

#include "controls/list/row_list.h"
#include "controls/text/ui/row_look.h"

class QPainter;
class QtRowList;

class RowPainter {
 public:
  explicit RowPainter(QtRowList& list) : m_list(list) {}

  static int RowHeight(const QFontMetrics& metrics);
  void Paint(QPainter& painter, const QRect& clip) const;
  // The width that the cell needs, with its margins.
  int CellWidth(int row, ListColumn column) const;
  // The visible rectangle of the cell's first hit, in the viewport; empty without one.
  QRect HitRect(int row, ListColumn column) const;

 private:
  // Values that all rows of one paint have in common.
  struct Place {
    ListColumn column;
    ColumnAlign align;
    int left, width;
  };
  struct Canvas {
    QPainter& painter;
    QFontMetrics metrics;
    std::vector<Place> places;  // those inside the clip
  };
  RowLook LookOfRow(int row) const;
  void PaintRow(Canvas& canvas, int row) const;
  void PaintBelow(Canvas& canvas, const QRect& below) const;
  bool PaintEmpty(QPainter& painter) const;
  void PaintEndMark(QPainter& painter) const;
  void PaintIcon(Canvas& canvas, const QRect& cell, int icon) const;
  void PaintCell(Canvas& canvas, const RowLook& look, const QRect& cell, const Place& place,
                 int row) const;
  void PaintFocus(QPainter& painter, const RowLook& look, const QRect& row, bool selected) const;

  QtRowList& m_list;
};
