// The picture at the left of the wizard: the stones of the program's icon, as traces that come in.
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
