// The three severity icons, drawn by code so that they are crisp at every scale.
//
// Shape    0 a blue round sign with a white "i", 1 a yellow round sign with a black "!", 2 a red
//          octagonal stop sign.
// Threads  Interface thread.
#pragma once

#include <array>

#include "controls/list/ui/row_icons.h"

class QPainter;

void PaintSeverityIcon(QPainter& painter, const QRectF& square, int icon);

// Icons rendered once for a scale.
class SeverityIcons final : public RowIcons {
 public:
  int Count() const override { return kCount; }
  const QPixmap& Get(int icon, qreal devicePixelRatio) override;
  QString NameOf(int icon) const override;

 private:
  static constexpr int kCount = 3;
  std::array<QPixmap, kCount> m_pixmaps;
  qreal m_ratio = 0;
};
