#include "listview/source/ui/line_margin.h"

#include <QPaintEvent>
#include <QPainter>
#include <QPainterPath>

#include "listview/source/ui/rich_edit_widget.h"

namespace {

constexpr int kSidePx = 6;
constexpr int kDigitsMin = 3;  // so that the text of short files begins at the same place
constexpr float kPaleAlpha = 0.55f;

// The arrow is as high as a digit.
int ArrowPx(const QFontMetrics& metrics) {
  return metrics.capHeight();
}

}  // namespace

LineMargin::LineMargin(QtRichEdit& edit) : QWidget(&edit), m_edit(edit) {
  setObjectName(QStringLiteral("margin"));
}

int LineMargin::WidthFor(int lines) const {
  const QFontMetrics metrics(m_edit.font());
  const auto digits =
      static_cast<int>(std::max(QString::number(lines).size(), static_cast<qsizetype>(kDigitsMin)));
  return kSidePx + ArrowPx(metrics) + digits * metrics.horizontalAdvance(u'9') + 2 * kSidePx;
}

void LineMargin::paintEvent(QPaintEvent* event) {
  QPainter painter(this);
  painter.fillRect(event->rect(), palette().color(QPalette::Window));
  const QColor ink = palette().color(QPalette::WindowText);
  QColor pale = ink;
  pale.setAlphaF(kPaleAlpha);
  QFont plain = m_edit.font(), bold = plain;
  bold.setBold(true);
  for (const QtRichEdit::ShownLine& line : m_edit.ShownLines()) {
    const bool marked = line.number == m_edit.MarkedLine();
    const QRect place(0, line.place.top(), width() - kSidePx, line.place.height());
    painter.setFont(marked ? bold : plain);
    painter.setPen(marked ? ink : pale);
    painter.drawText(place, Qt::AlignRight | Qt::AlignVCenter, QString::number(line.number + 1));
    if (marked) PaintArrow(painter, place);
  }
}

void LineMargin::PaintArrow(QPainter& painter, const QRect& line) const {
  const qreal side = ArrowPx(QFontMetrics(m_edit.font()));
  const QPointF top(kSidePx, line.center().y() + 0.5 - side / 2);
  QPainterPath arrow(top);
  arrow.lineTo(top + QPointF(side * 0.85, side / 2));
  arrow.lineTo(top + QPointF(0, side));
  arrow.closeSubpath();
  painter.setRenderHint(QPainter::Antialiasing);
  painter.fillPath(arrow, ArrowColor());
  painter.setRenderHint(QPainter::Antialiasing, false);
}
