// One line of text in a cell: its layout and its painting.
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

// Vertically centred in `room` and cut with dots at its width; nothing if not even the dots fit.
class CellLayout {
 public:
  CellLayout(const QFontMetrics& metrics, const QRect& room, ColumnAlign align,
             const QString& whole);

  // Marks of line ends are softer than the text. Hits are tinted, and so are dots that hide a hit.
  void Paint(QPainter& painter, const RowLook& look, const std::vector<LinePart>& hits) const;
  // The rectangle of the part; of the dots if they hide it.
  QRect RectOf(const LinePart& part) const;

 private:
  std::vector<LinePart> Seen(const std::vector<LinePart>& parts) const;

  const QFontMetrics& m_metrics;
  const QRect m_room;
  QString m_text;
  qsizetype m_dots;  // their position; after the text if there are none
  int m_left = 0;
};

// How far a view must scroll to the right so that a hit and a little around it is visible; 0 if it
// is, or if there is no hit. For a hit that is wider than the view, its beginning.
int ScrollToHit(const QRect& hit, int viewPx, const QFontMetrics& metrics);
