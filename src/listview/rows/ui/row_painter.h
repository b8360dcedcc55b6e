// Paints the rows of a list, and measures their cells.
//
// Cost     By the cells that are seen. A text is made when its cell is painted and kept nowhere.
// Threads  Interface thread.
#pragma once

#include <QPen>

#include "listview/rows/row_list.h"
#include "listview/rows/ui/severity_icons.h"

class QFontMetrics;
class QPainter;
class QtRowList;

class RowPainter {
 public:
  explicit RowPainter(QtRowList& list) : m_list(list) {}

  static int RowHeight(const QFontMetrics& metrics);
  void Paint(QPainter& painter, const QRect& clip);
  // What the cell needs to show whole, with its margins.
  int CellWidth(int row, Column column) const;

 private:
  struct Look {  // of one row
    QColor background, text, soft;
  };
  Look LookOf(int row) const;
  void PaintRow(QPainter& painter, int row, const QRect& clip);
  void PaintText(QPainter& painter, const Look& look, const QRect& cell, ColumnAlign align,
                 const QString& text) const;
  void PaintFocus(QPainter& painter, const Look& look, const QRect& row) const;

  QtRowList& m_list;
  SeverityIcons m_icons;
};
