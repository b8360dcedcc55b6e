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
  QSize minimumSizeHint() const override { return SizeAt(kLeastChars); }

 private:
  static constexpr int kWantedChars = 76, kLeastChars = 40;
  QSize SizeAt(int chars) const;
};
