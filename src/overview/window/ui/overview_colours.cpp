#include "overview/window/ui/overview_colours.h"

namespace {

bool IsDark(const QColor& ground) {
  return qGray(ground.rgb()) < 128;
}

QColor Faint(QColor colour, int alpha) {
  colour.setAlpha(alpha);
  return colour;
}

}  // namespace

OverviewColours OverviewColoursOn(const QColor& ground, const QColor& text,
                                  const QColor& highlight) {
  OverviewColours colours;
  colours.ground = ground;
  colours.text = text;
  colours.line = Faint(text, 110);
  colours.page = Faint(text, 36);
  colours.chosen = Faint(highlight, 90);
  colours.cursor = text;
  if (IsDark(ground)) {
    colours.severities[0] = QColor(0x6a, 0xa9, 0xea);
    colours.severities[1] = QColor(0xf0, 0xb4, 0x3c);
    colours.severities[2] = QColor(0xff, 0x7a, 0x70);
    colours.severities[3] = QColor(0x93, 0x9c, 0xa6);
    colours.loss = QColor(0xe0, 0x9a, 0xff);
    colours.mark = QColor(0x5f, 0xd0, 0x8a);
    colours.hit = QColor(0xe6, 0xd5, 0x4a);
  } else {
    colours.severities[0] = QColor(0x2f, 0x74, 0xb8);
    colours.severities[1] = QColor(0xb3, 0x6b, 0x00);
    colours.severities[2] = QColor(0xc0, 0x1c, 0x28);
    colours.severities[3] = QColor(0x7c, 0x86, 0x91);
    colours.loss = QColor(0x8a, 0x2b, 0xb8);
    colours.mark = QColor(0x1b, 0x7f, 0x48);
    colours.hit = QColor(0x7a, 0x6a, 0x00);
  }
  return colours;
}
