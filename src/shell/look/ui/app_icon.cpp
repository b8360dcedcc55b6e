#include "shell/look/ui/app_icon.h"

#include <QLinearGradient>
#include <QPainter>

namespace {

constexpr qreal kIconGrid = 64;

struct Stone {
  qreal x, y, width;
  QRgb colour;
};

// packaging/icons/tessera.svg holds the same drawing.
constexpr Stone kStones[] = {
    {10, 12, 8, 0xff4da3ff},  {21, 12, 33, 0xffdce6f2}, {10, 23, 8, 0xff4da3ff},
    {26, 23, 22, 0xffdce6f2}, {10, 34, 8, 0xfff4b740},  {26, 34, 28, 0xfff4b740},
    {10, 45, 8, 0xff4da3ff},  {21, 45, 24, 0xffdce6f2},
};

}  // namespace

QPixmap AppIconPixmap(int sizePx) {
  QPixmap picture(sizePx, sizePx);
  picture.fill(Qt::transparent);
  QPainter p(&picture);
  p.setRenderHint(QPainter::Antialiasing);
  p.scale(sizePx / kIconGrid, sizePx / kIconGrid);
  p.setPen(Qt::NoPen);
  QLinearGradient tile(0, 2, 0, 62);
  tile.setColorAt(0, QColor(0x2b, 0x4a, 0x6f));
  tile.setColorAt(1, QColor(0x16, 0x28, 0x40));
  p.setBrush(tile);
  p.drawRoundedRect(QRectF(2, 2, 60, 60), 13, 13);
  for (const Stone& stone : kStones) {
    p.setBrush(QColor(stone.colour));
    p.drawRoundedRect(QRectF(stone.x, stone.y, stone.width, 7), 2, 2);
  }
  return picture;
}

QIcon AppIcon() {
  QIcon icon;
  for (const int size : {16, 22, 24, 32, 48, 64, 128, 256}) icon.addPixmap(AppIconPixmap(size));
  return icon;
}
