// The picture at the left of the wizard: rows of traces that come in, in the colours of the
// program's icon.
//
// Threads  Interface thread.
#pragma once

#include <QWidget>

class WizardPicture final : public QWidget {
 public:
  explicit WizardPicture(QWidget* parent);
  QSize sizeHint() const override;

 protected:
  void paintEvent(QPaintEvent* event) override;
};
