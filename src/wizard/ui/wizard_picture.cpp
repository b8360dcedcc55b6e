#include "wizard/ui/wizard_picture.h"

#include <QPainter>
#include <array>
#include <cmath>

namespace {

constexpr int kWidthPx = 132;
constexpr qreal kGrid = 40;  // the width in units of the drawing

struct Row {
  qreal indent, length;
  bool warn = false;
};
constexpr std::array<Row, 11> kRows = {{{0, 20},
                                        {3, 15},
                                        {3, 9},
                                        {0, 22},
                                        {3, 17, true},
                                        {6, 12},
                                        {6, 7},
                                        {3, 13},
                                        {0, 18},
                                        {3, 10},
                                        {0, 21}}};
constexpr qreal kLeft = 5, kTop = 6, kPitch = 6.5, kHeight = 4, kMark = 4.4, kGap = 1.6;
const QColor kInfo(0x4d, 0xa3, 0xff), kWarn(0xf4, 0xb7, 0x40), kText(0xdc, 0xe6, 0xf2);

void DrawRow(QPainter& p, const Row& row, qreal top, qreal strength) {
  p.setOpacity(strength);
  p.setBrush(row.warn ? kWarn : kInfo);
  p.drawRoundedRect(QRectF(kLeft + row.indent, top, kMark, kHeight), 1.1, 1.1);
  p.setBrush(row.warn ? kWarn : kText);
  p.drawRoundedRect(QRectF(kLeft + row.indent + kMark + kGap, top, row.length, kHeight), 1.1, 1.1);
}

}  // namespace

WizardPicture::WizardPicture(QWidget* parent) : QWidget(parent) {
  setObjectName("picture");
  setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Ignored);
}

QSize WizardPicture::sizeHint() const {
  return {kWidthPx, kWidthPx};
}

// The rows fade towards the top, where the older ones are.
void WizardPicture::paintEvent(QPaintEvent*) {
  QPainter p(this);
  p.setRenderHint(QPainter::Antialiasing);
  QLinearGradient ground(0, 0, 0, height());
  ground.setColorAt(0, QColor(0x2b, 0x4a, 0x6f));
  ground.setColorAt(1, QColor(0x16, 0x28, 0x40));
  p.fillRect(rect(), ground);
  p.setPen(Qt::NoPen);
  p.scale(width() / kGrid, width() / kGrid);
  const qreal bottom = height() * kGrid / width();
  const qreal lowest = bottom - kTop - kHeight;
  const int rows = static_cast<int>(std::ceil((lowest - kTop) / kPitch));
  for (int row = 0; row < rows; ++row) {
    const qreal top = lowest - row * kPitch;
    DrawRow(p, kRows[static_cast<std::size_t>(row) % kRows.size()], top,
            0.25 + 0.75 * top / bottom);
  }
}
