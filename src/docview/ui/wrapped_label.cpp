#include "docview/ui/wrapped_label.h"

#include <algorithm>

#include "docview/ui/screen_fit.h"

namespace {

constexpr int kBesideTextPx = 160;  // a dialog's margins, and buttons beside the text

}  // namespace

WrappedLabel::WrappedLabel(const QString& text, QWidget* parent) : QLabel(text, parent) {
  setTextFormat(Qt::PlainText);
  setWordWrap(true);
}

int WrappedLabel::LeastChars() const {
  const int room = ScreenRoom(*this).width() - kBesideTextPx;
  return std::clamp(room / fontMetrics().averageCharWidth(), kLeastChars, kLeastCharsWithRoom);
}

QSize WrappedLabel::SizeAt(int chars) const {
  const QFontMetrics font = fontMetrics();
  const int inOneLine = font.size(Qt::TextShowMnemonic, text()).width();
  const int width = std::min(inOneLine + 1, font.averageCharWidth() * chars);
  return {width, heightForWidth(width)};
}
