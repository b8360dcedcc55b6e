#include "docview/ui/wrapped_label.h"

#include <algorithm>

WrappedLabel::WrappedLabel(const QString& text, QWidget* parent) : QLabel(text, parent) {
  setTextFormat(Qt::PlainText);
  setWordWrap(true);
}

QSize WrappedLabel::SizeAt(int chars) const {
  const QFontMetrics font = fontMetrics();
  const int inOneLine = font.size(Qt::TextShowMnemonic, text()).width();
  const int width = std::min(inOneLine + 1, font.averageCharWidth() * chars);
  return {width, heightForWidth(width)};
}
