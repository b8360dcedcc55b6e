#include <QPainter>
#include <QPainterPath>
#include <algorithm>

#include "overview/window/bar_heights.h"
#include "overview/window/ui/overview_widget.h"

OverviewColours OverviewWidget::Colours() const {
  const QPalette& colours = palette();
  return OverviewColoursOn(colours.color(QPalette::Base), colours.color(QPalette::Text),
                           colours.color(QPalette::Highlight));
}

QRect OverviewWidget::RectOf(const TimeLimits& time) const {
  const OverviewScale scale = m_strip->Scale();
  const int from = std::clamp(scale.PxOf(time.from), 0, scale.widthPx - 2);
  const int to = std::min(scale.PxOf(time.to), scale.widthPx);
  return {Margin() + from, 0, std::max(to - from, 2), RowsOf().labels};
}

void OverviewWidget::PaintImage() {
  const double dots = devicePixelRatioF();
  m_image = QPixmap(size() * dots);
  m_image.setDevicePixelRatio(dots);
  const OverviewColours colours = Colours();
  m_image.fill(colours.ground);
  QPainter painter(&m_image);
  painter.fillRect(Margin(), RowsOf().base, width() - 2 * Margin(), 1, colours.line);
  if (!m_strip) return;
  PaintBars(painter, colours);
  painter.setRenderHint(QPainter::Antialiasing);
  PaintSigns(painter, colours);
  PaintTicks(painter, colours);
  painter.setRenderHint(QPainter::Antialiasing, false);
  painter.setFont(LabelFont());
  painter.setPen(colours.text);
  PaintLabels(painter, colours);
}

void OverviewWidget::PaintBars(QPainter& painter, const OverviewColours& colours) const {
  const std::vector<OverviewBar> bars = m_strip->Bars();
  std::uint64_t highest = 0;
  for (const OverviewBar& bar : bars) highest = std::max(highest, bar.counts.Traces());
  const Rows rows = RowsOf();
  for (const OverviewBar& bar : bars) {
    const auto heights = HeightsOf(bar.counts, highest, rows.base - rows.bars);
    const int gap = bar.toPx - bar.fromPx > 3 ? 1 : 0;
    int bottom = rows.base;
    for (std::size_t i = 0; i < heights.size(); ++i) {
      bottom -= heights[i];
      painter.fillRect(Margin() + bar.fromPx, bottom, bar.toPx - bar.fromPx - gap, heights[i],
                       colours.severities[kBarOrder[i]]);
    }
  }
}

// Errors are triangles and losses crosses above their bars, so that nobody needs to tell colours.
// Signs do not cover one another.
void OverviewWidget::PaintSigns(QPainter& painter, const OverviewColours& colours) const {
  constexpr std::size_t kError = 2;
  const double size = SignPx() - 1, y = RowsOf().signs;
  double freePx = 0;
  for (const OverviewBar& bar : m_strip->Bars()) {
    const double x = Margin() + (bar.fromPx + bar.toPx) / 2.0;
    const bool isLoss = bar.counts.losses > 0;
    if (x < freePx || (!isLoss && bar.counts.severities[kError] == 0)) continue;
    freePx = x + size;
    if (isLoss) {
      painter.setPen(QPen(colours.loss, std::max(size / 4, 1.5)));
      painter.drawLine(QPointF(x - size / 2, y), QPointF(x + size / 2, y + size));
      painter.drawLine(QPointF(x - size / 2, y + size), QPointF(x + size / 2, y));
      continue;
    }
    QPainterPath sign(QPointF(x - size / 2, y));
    sign.lineTo(x + size / 2, y);
    sign.lineTo(x, y + size);
    sign.closeSubpath();
    painter.fillPath(sign, colours.severities[kError]);
  }
}

// Marks are squares and hits thin lines below the base.
void OverviewWidget::PaintTicks(QPainter& painter, const OverviewColours& colours) const {
  const double size = SignPx() - 2, y = RowsOf().base + 2;
  for (const int px : m_strip->HitTicks())
    painter.fillRect(QRectF(Margin() + px, y, 1, SignPx() - 1), colours.hit);
  for (const int px : m_strip->MarkTicks())
    painter.fillRect(QRectF(Margin() + px - size / 2, y, size, size), colours.mark);
}

void OverviewWidget::PaintLabels(QPainter& painter, const OverviewColours& colours) const {
  const QFontMetrics metrics(LabelFont());
  const Rows rows = RowsOf();
  const QString empty = QString::fromStdString(m_strip->EmptyText());
  if (!empty.isEmpty()) {
    const QRect room(Margin(), 0, width() - 2 * Margin(), rows.base);
    painter.drawText(room, Qt::AlignCenter,
                     metrics.elidedText(empty, Qt::ElideRight, room.width()));
    return;
  }
  const auto widthOf = [&](const std::string& text) {
    return metrics.horizontalAdvance(QString::fromStdString(text));
  };
  for (const OverviewLabel& label : m_strip->Labels(widthOf)) {
    painter.drawText(Margin() + label.px, rows.labels + metrics.ascent(),
                     QString::fromStdString(label.text));
    if (label.isEnd) continue;
    const int x = Margin() + label.px + widthOf(label.text) / 2;
    painter.fillRect(x, rows.base + 1, 1, SignPx() - 1, colours.line);
  }
}

void OverviewWidget::PaintOver(QPainter& painter, const OverviewColours& colours) const {
  if (const auto page = m_strip->Page()) {
    const QRect rect = RectOf(*page);
    painter.fillRect(rect, colours.page);
    painter.setPen(colours.line);
    painter.drawRect(rect.adjusted(0, 0, -1, -1));
  }
  if (const auto chosen = m_strip->Chosen()) painter.fillRect(RectOf(*chosen), colours.chosen);
  if (!hasFocus()) return;
  if (const auto cursor = m_strip->Cursor()) {
    painter.setPen(QPen(colours.cursor, 1, Qt::DotLine));
    painter.drawRect(RectOf(*cursor).adjusted(0, 0, -1, -1));
  }
  painter.setPen(palette().color(QPalette::Highlight));
  painter.drawRect(rect().adjusted(0, 0, -1, -1));
}

void OverviewWidget::paintEvent(QPaintEvent*) {
  if (m_image.isNull() || m_image.devicePixelRatio() != devicePixelRatioF()) PaintImage();
  QPainter painter(this);
  painter.drawPixmap(0, 0, m_image);
  if (m_strip) PaintOver(painter, Colours());
}
