// The three severity icons, drawn by code so that they are crisp at every scale.
//
// Shape    0 a blue round sign with a white "i", 1 a yellow round sign with a black "!", 2 a red
//          octagonal stop sign.
// Threads  Interface thread.
#pragma once

#include <QPixmap>
#include <array>

class QPainter;

void PaintSeverityIcon(QPainter& painter, const QRectF& square, int icon);

// Icons rendered once for a scale.
class SeverityIcons {
 public:
  static constexpr int kCount = 3;
  static constexpr int kSizePx = 16;
  static constexpr const char* kNames[kCount] = {"Info", "Warn", "Error"};

  // `icon` is 0..2; the pixmap is kSizePx square in device-independent pixels.
  const QPixmap& Get(int icon, qreal devicePixelRatio);

 private:
  std::array<QPixmap, kCount> m_pixmaps;
  qreal m_ratio = 0;
};
