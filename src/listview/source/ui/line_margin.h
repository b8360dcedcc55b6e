// The margin of a text control: the number of each line, and an arrow beside the marked one.
//
// Owner    The control owns it.
// Threads  Interface thread.
#pragma once

#include <QColor>
#include <QWidget>

class QtRichEdit;

class LineMargin final : public QWidget {
 public:
  explicit LineMargin(QtRichEdit& edit);
  // The colour of the arrow: a palette's own highlight is hard to see on a dark background.
  static QColor ArrowColor() { return {0xe8, 0x8a, 0x00}; }

  // The width for the numbers of so many lines.
  int WidthFor(int lines) const;

 protected:
  void paintEvent(QPaintEvent* event) override;

 private:
  void PaintArrow(QPainter& painter, const QRect& line) const;

  const QtRichEdit& m_edit;
};
