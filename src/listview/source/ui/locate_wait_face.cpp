#include "listview/source/ui/locate_wait_face.h"

#include <QEventLoop>
#include <QLabel>
#include <QPointer>
#include <QProgressBar>
#include <QPushButton>
#include <QVBoxLayout>

namespace {

constexpr int kWidthPx = 260;

}  // namespace

LocateWaitFace::LocateWaitFace(LocateWait& dialog, QWidget* parent) : QtDialogFace(dialog, parent) {
  setWindowTitle(LocateWait::kCaption);
  setObjectName("locating source");
  auto* text = new QLabel(LocateWait::kText, this);
  auto* bar = new QProgressBar(this);
  bar->setRange(0, 0);  // moves, and comes to no end
  bar->setTextVisible(false);
  bar->setFixedWidth(kWidthPx);
  bar->setAccessibleName(LocateWait::kText);
  auto* cancel = new QPushButton(tr("Cancel"), this);
  cancel->setObjectName("cancel");
  cancel->setAutoDefault(false);
  connect(cancel, &QPushButton::clicked, this, [this] { reject(); });
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(16, 16, 16, 14);
  layout->setSpacing(10);
  layout->addWidget(text);
  layout->addWidget(bar);
  layout->addWidget(cancel, 0, Qt::AlignRight);
  layout->setSizeConstraint(QLayout::SetFixedSize);
  cancel->setFocus();
}

int LocateWaitFace::exec() {
  setWindowModality(Qt::NonModal);
  QEventLoop loop;
  connect(this, &QDialog::finished, &loop, &QEventLoop::quit);
  show();
  const QPointer<LocateWaitFace> alive(this);
  loop.exec();
  if (!alive) return Rejected;
  hide();
  return result();
}
