// Paints the rows of a tree: the lines that lead to an item, its button, its label; and says where
// they are.
//
// Cost     By the rows that are seen and their depth. A text is made when its row is painted.
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
  // What is shown of a label, in one line.
  static QString LineOf(const std::string& text);

  // From the left edge of the content, unscrolled.
  int LabelX(int depth) const;
  // In the viewport.
  QRect LabelRect(TreeItem item, std::int64_t row) const;
  // Where the first hit in its label stands; empty without one.
  QRect HitRect(TreeItem item, std::int64_t row) const;
  TreePart PartAt(const QPoint& point) const;
  // How wide the rows on view are.
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
