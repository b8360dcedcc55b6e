// Paints the rows of a tree (lines, button, label) and computes their positions.
//
// Cost     By the visible rows and their depth. A text is made when its row is painted.
// Threads  Interface thread.
#pragma once

#include <QColor>
#include <QFontMetrics>
#include <QRect>
#include <QString>

#include "controls/text/ui/row_look.h"
#include "controls/tree/tree_control.h"

class QPainter;
class QtTreeControl;

enum class TreePart { None, Button, Label };

class TreePainter {
 public:
  explicit TreePainter(QtTreeControl& tree) : m_tree(tree) {}

  static int RowHeight(const QFontMetrics& metrics);
  void Paint(QPainter& painter, const QRect& clip) const;
  // The shown part of a label, in one line.
  static QString LineOf(const std::string& text);

  // From the left edge of the content, unscrolled.
  int LabelX(int depth) const;
  // In the viewport.
  QRect LabelRect(TreeItem item, std::int64_t row) const;
  // The position of the first hit in its label; empty without one.
  QRect HitRect(TreeItem item, std::int64_t row) const;
  TreePart PartAt(const QPoint& point) const;
  // The width of the visible rows.
  int WidthOnView() const;

 private:
  struct Look {
    RowLook label, selected;
    QColor base, text, soft, line, button;
  };
  Look LookOf() const;
  int Step() const;  // one level's width
  QRect ButtonRect(int depth, const QRect& row) const;
  void PaintRow(QPainter& painter, const Look& look, TreeItem item, const QRect& row) const;
  void PaintLines(QPainter& painter, const Look& look, TreeItem item, int depth,
                  const QRect& row) const;
  void PaintButton(QPainter& painter, const Look& look, const QRect& button, bool open) const;
  void PaintLabel(QPainter& painter, const Look& look, TreeItem item, const QRect& label) const;

  QtTreeControl& m_tree;
};
