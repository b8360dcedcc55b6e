#include "listview/rows/ui/severity_icons.h"

#include <QLinearGradient>
#include <QPainter>
#include <QPolygonF>
#include <cmath>

namespace {

// Everything is drawn in a square of 16 units.
constexpr qreal kCentre = 8, kRadius = 7;

// A light ring around the sign separates it from dark rows and from the selection.
QPen Ring() {
  return QPen(QColor(255, 255, 255, 170), 1);
}

void Shade(QPainter& painter, const QColor& top, const QColor& bottom, const QColor& rim) {
  QLinearGradient gradient(0, 1, 0, 15);
  gradient.setColorAt(0, top);
  gradient.setColorAt(1, bottom);
  painter.setBrush(gradient);
  painter.setPen(QPen(rim, 1));
}

QPolygonF Octagon(qreal radius) {
  QPolygonF octagon;
  for (int corner = 0; corner < 8; ++corner) {
    const qreal angle = (corner + 0.5) * M_PI / 4;
    octagon << QPointF(kCentre + radius * std::cos(angle), kCentre + radius * std::sin(angle));
  }
  return octagon;
}

void PaintInfo(QPainter& painter) {
  Shade(painter, QColor(0x4a, 0x9b, 0xf0), QColor(0x1f, 0x6f, 0xd0), QColor(0x15, 0x57, 0xa8));
  painter.drawEllipse(QPointF(kCentre, kCentre), kRadius - 0.3, kRadius - 0.3);
  painter.setPen(Qt::NoPen);
  painter.setBrush(Qt::white);
  painter.drawEllipse(QPointF(kCentre, 4.75), 1.25, 1.25);
  painter.drawRoundedRect(QRectF(7, 7, 2, 5.5), 0.6, 0.6);
}

void PaintWarn(QPainter& painter) {
  Shade(painter, QColor(0xff, 0xdf, 0x5a), QColor(0xf7, 0xbe, 0x16), QColor(0xb8, 0x84, 0x00));
  painter.drawEllipse(QPointF(kCentre, kCentre), kRadius - 0.3, kRadius - 0.3);
  painter.setPen(Qt::NoPen);
  painter.setBrush(QColor(0x1c, 0x16, 0x00));
  painter.drawRoundedRect(QRectF(7, 3.5, 2, 5.75), 0.8, 0.8);
  painter.drawEllipse(QPointF(kCentre, 11.5), 1.2, 1.2);
}

void PaintError(QPainter& painter) {
  Shade(painter, QColor(0xf0, 0x5a, 0x55), QColor(0xcc, 0x22, 0x22), QColor(0x9c, 0x14, 0x14));
  painter.drawPolygon(Octagon(kRadius));
  painter.setPen(Qt::NoPen);
  painter.setBrush(Qt::white);
  painter.drawRoundedRect(QRectF(4, 7, 8, 2), 0.6, 0.6);
}

}  // namespace

void PaintSeverityIcon(QPainter& painter, const QRectF& square, int icon) {
  painter.save();
  painter.setRenderHint(QPainter::Antialiasing);
  painter.translate(square.topLeft());
  painter.scale(square.width() / 16, square.height() / 16);
  painter.setBrush(Qt::NoBrush);
  painter.setPen(Ring());
  if (icon == 2)
    painter.drawPolygon(Octagon(kRadius + 0.6));
  else
    painter.drawEllipse(QPointF(kCentre, kCentre), kRadius + 0.4, kRadius + 0.4);
  if (icon == 0) PaintInfo(painter);
  if (icon == 1) PaintWarn(painter);
  if (icon == 2) PaintError(painter);
  painter.restore();
}

const QPixmap& SeverityIcons::Get(int icon, qreal devicePixelRatio) {
  if (m_ratio != devicePixelRatio) {
    m_pixmaps = {};
    m_ratio = devicePixelRatio;
  }
  QPixmap& pixmap = m_pixmaps[static_cast<std::size_t>(icon)];
  if (pixmap.isNull()) {
    const int side = static_cast<int>(std::ceil(kSizePx * devicePixelRatio));
    pixmap = QPixmap(side, side);
    pixmap.setDevicePixelRatio(devicePixelRatio);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    PaintSeverityIcon(painter, QRectF(0, 0, kSizePx, kSizePx), icon);
  }
  return pixmap;
}

QString SeverityIcons::NameOf(int icon) const {
  static constexpr const char* kNames[kCount] = {"Info", "Warn", "Error"};
  return QString::fromLatin1(kNames[icon]);
}
