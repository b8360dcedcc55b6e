// The button that leads to the end of a live list that the user has scrolled away from. It is over
// the lower right corner of the rows.
//
// Threads  Interface thread.
#pragma once

#include <QPushButton>

class ToEndButton final : public QPushButton {
 public:
  explicit ToEndButton(QWidget* parent);

  // The number of rows below the visible ones.
  void SetRowsBelow(int rows);
  QSize sizeHint() const override;

 protected:
  void paintEvent(QPaintEvent* event) override;
};
