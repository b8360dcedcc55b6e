#include "controls/list/ui/to_end_button.h"

#include <QLocale>
#include <QPainter>

#include "docview/ui/mixed_color.h"
#include "docview/ui/plain_tool_tip.h"

namespace {
constexpr int kSidePx = 12, kUpPx = 5;
constexpr double kEdge = 0.3, kOver = 0.12;
}  // namespace

ToEndButton::ToEndButton(QWidget* parent) : QPushButton(parent) {
  setObjectName("toEnd");
  setAccessibleName("To the end");
  const QString tip = "The list does not follow. Click to go to its end and follow again";
  SetPlainToolTip(*this, tip);
  setFocusPolicy(Qt::NoFocus);
  setCursor(Qt::ArrowCursor);
  setAttribute(Qt::WA_Hover);
  hide();
}

void ToEndButton::SetRowsBelow(int rows) {
  const QLocale grouping(QLocale::English);
  const QString text = QChar(0x2193) + QStringLiteral("  %1 more").arg(grouping.toString(rows));
  if (text == this->text()) return;
  setText(text);
  updateGeometry();
}

QSize ToEndButton::sizeHint() const {
  return QSize(fontMetrics().horizontalAdvance(text()) + 2 * kSidePx,
               fontMetrics().height() + 2 * kUpPx);
}

void ToEndButton::paintEvent(QPaintEvent*) {
  QPainter painter(this);
  painter.setRenderHint(QPainter::Antialiasing);
  const QColor highlight = palette().color(QPalette::Active, QPalette::Highlight);
  const QColor text = palette().color(QPalette::Active, QPalette::HighlightedText);
  painter.setBrush(Mixed(highlight, text, isDown() ? 0 : underMouse() ? kOver : 0));
  painter.setPen(QPen(Mixed(highlight, palette().color(QPalette::Active, QPalette::Base), kEdge)));
  const QRectF pill = QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5);
  painter.drawRoundedRect(pill, pill.height() / 2, pill.height() / 2);
  painter.setPen(text);
  painter.drawText(rect(), Qt::AlignCenter, this->text());
}
