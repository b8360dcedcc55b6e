#include "shell/ui/about_box.h"

#include <QDialogButtonBox>
#include <QGridLayout>
#include <QLabel>
#include <QPushButton>

#include "shell/look/ui/app_icon.h"

namespace {

constexpr int kIconPx = 64;

}  // namespace

AboutBox::AboutBox(const QString& versionLine, QWidget* parent) : QDialog(parent) {
  setWindowTitle(tr("About Tessera"));
  auto* icon = new QLabel(this);
  icon->setPixmap(AppIcon().pixmap(QSize(kIconPx, kIconPx), devicePixelRatio()));
  icon->setAccessibleName(tr("Tessera's icon"));
  auto* line = new QLabel(versionLine, this);
  line->setTextInteractionFlags(Qt::TextSelectableByMouse);
  auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok, this);
  connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);

  auto* grid = new QGridLayout(this);
  grid->setContentsMargins(24, 24, 24, 16);
  grid->setHorizontalSpacing(20);
  grid->setVerticalSpacing(20);
  grid->addWidget(icon, 0, 0);
  grid->addWidget(line, 0, 1, Qt::AlignVCenter);
  grid->addWidget(buttons, 1, 0, 1, 2);
  grid->setColumnMinimumWidth(1, 220);
  grid->setSizeConstraint(QLayout::SetFixedSize);
  buttons->button(QDialogButtonBox::Ok)->setFocus();
}
