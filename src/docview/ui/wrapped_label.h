// A plain text of one or more lines that is never cut: at its least width it has room for all
// lines.
//
// The widths are in characters, so that the text fits at any font size.
//
// Owner    Its parent.
// Threads  Interface thread.
#pragma once

#include <QLabel>

class WrappedLabel final : public QLabel {
 public:
  WrappedLabel(const QString& text, QWidget* parent);
  QSize sizeHint() const override { return SizeAt(kWantedChars); }
  // As wide as the screen has room for, so that the lines are few.
  QSize minimumSizeHint() const override { return SizeAt(LeastChars()); }

 private:
  static constexpr int kWantedChars = 76, kLeastChars = 40, kLeastCharsWithRoom = 64;
  int LeastChars() const;
  QSize SizeAt(int chars) const;
};
