#include "tree/find/ui/search_box_face.h"

#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QVBoxLayout>

namespace {

constexpr int kWidthPx = 280;

}  // namespace

SearchBoxFace::SearchBoxFace(CSearchBox& dialog, QWidget* parent) : QtDialogFace(dialog, parent) {
  setWindowTitle(CSearchBox::Title());
  setObjectName("searching");
  auto* message = new QLabel(CSearchBox::Message(), this);
  auto* bar = new QProgressBar(this);
  bar->setRange(0, 0);  // moves without telling how far
  bar->setFixedWidth(kWidthPx);
  bar->setAccessibleName("Progress");
  auto* cancel = new QPushButton("Cancel", this);
  cancel->setObjectName(QString::number(CDialog::kIdCancel));
  cancel->setAccessibleName("Cancel");
  connect(cancel, &QPushButton::clicked, this, &QDialog::reject);
  auto* layout = new QVBoxLayout(this);
  layout->setSpacing(10);
  layout->addWidget(message);
  layout->addWidget(bar);
  layout->addWidget(cancel, 0, Qt::AlignRight);
  layout->setSizeConstraint(QLayout::SetFixedSize);
}
