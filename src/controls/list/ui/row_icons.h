// The icons of a row list's rows: their pictures and names, by the owner's numbers.
//
// Owner    The list owns them.
// Threads  Interface thread.
#pragma once

#include <QPixmap>
#include <QString>

class RowIcons {
 public:
  static constexpr int kSizePx = 16;

  virtual ~RowIcons() = default;
  virtual int Count() const = 0;
  // `icon` is 0..Count()-1 here and below; the pixmap is kSizePx square in device-independent
  // pixels.
  virtual const QPixmap& Get(int icon, qreal devicePixelRatio) = 0;
  virtual QString NameOf(int icon) const = 0;
};
