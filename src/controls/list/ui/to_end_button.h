// The way back to the end of a live list that the user has scrolled away from: it lies over the
// lower right corner of the rows.
//
// Threads  Interface thread.
#pragma once

#include <QPushButton>

class ToEndButton final : public QPushButton {
 public:
  explicit ToEndButton(QWidget* parent);

  // How many rows are further down than what is on view.
  void SetRowsBelow(int rows);
  QSize sizeHint() const override;

 protected:
  void paintEvent(QPaintEvent* event) override;
};
