#include "shell/look/ui/tool_icons.h"

#include <QGuiApplication>
#include <QIconEngine>
#include <QPainter>
#include <QPalette>

#include "shell/look/ui/tool_pictures.h"

namespace {

constexpr qreal kGrid = 16;

PictureInk InkOf(QIcon::Mode mode) {
  const QPalette palette = QGuiApplication::palette();
  const bool dark = palette.color(QPalette::Window).lightness() < 128;
  PictureInk ink{palette.color(QPalette::Active, QPalette::ButtonText),
                 dark ? QColor(0x6f, 0xb4, 0xff) : QColor(0x1b, 0x62, 0xc4)};
  if (mode == QIcon::Disabled) {
    ink.line.setAlphaF(0.35f);
    ink.accent = ink.line;
  }
  return ink;
}

class PathIcon : public QIconEngine {
 public:
  explicit PathIcon(DrawPicture draw) : m_draw(draw) {}
  void paint(QPainter* p, const QRect& rect, QIcon::Mode mode, QIcon::State) override {
    p->save();
    p->setRenderHint(QPainter::Antialiasing);
    p->translate(rect.topLeft());
    p->scale(rect.width() / kGrid, rect.height() / kGrid);
    m_draw(*p, InkOf(mode));
    p->restore();
  }
  QPixmap pixmap(const QSize& size, QIcon::Mode mode, QIcon::State state) override {
    QPixmap picture(size);
    picture.fill(Qt::transparent);
    QPainter p(&picture);
    paint(&p, QRect(QPoint(0, 0), size), mode, state);
    return picture;
  }
  QIconEngine* clone() const override { return new PathIcon(m_draw); }

 private:
  DrawPicture m_draw;
};

}  // namespace

QIcon ToolIcon(unsigned command) {
  const DrawPicture draw = PictureOf(command);
  return draw ? QIcon(new PathIcon(draw)) : QIcon();
}
