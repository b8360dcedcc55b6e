// One line of text in a cell: where it stands, and how it is drawn.
//
// Threads  Interface thread.
#pragma once

#include <QFontMetrics>
#include <QRect>
#include <QString>
#include <vector>

#include "controls/text/ui/row_look.h"
#include "controls/text/ui/row_text.h"

class QPainter;

// In the height of `room` and cut with dots at its width; nothing where not even the dots fit.
class CellLayout {
 public:
  CellLayout(const QFontMetrics& metrics, const QRect& room, ColumnAlign align,
             const QString& whole);

  // Marks of line ends are softer than the text. The parts that a search has found are tinted, and
  // so are dots that hide some of them.
  void Paint(QPainter& painter, const RowLook& look, const std::vector<LinePart>& hits) const;
  // Where the part is seen: the dots when they hide it.
  QRect RectOf(const LinePart& part) const;

 private:
  std::vector<LinePart> Seen(const std::vector<LinePart>& parts) const;

  const QFontMetrics& m_metrics;
  const QRect m_room;
  QString m_text;
  qsizetype m_dots;  // where they stand; behind the text when there are none
  int m_left = 0;
};

// How far a view scrolls across, to the right, so that a hit and a little around it is on view; 0
// when it is, or when there is none. The beginning of one that is wider than the view.
int ScrollToHit(const QRect& hit, int viewPx, const QFontMetrics& metrics);
