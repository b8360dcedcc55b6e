// The margin of a text control: the number of each line, and an arrow beside the marked one.
//
// Owner    The control owns it.
// Threads  Interface thread.
#pragma once

#include <QWidget>

class QtRichEdit;

class LineMargin final : public QWidget {
 public:
  explicit LineMargin(QtRichEdit& edit);

  // Room for the numbers of so many lines.
  int WidthFor(int lines) const;

 protected:
  void paintEvent(QPaintEvent* event) override;

 private:
  void PaintArrow(QPainter& painter, const QRect& line) const;

  const QtRichEdit& m_edit;
};
