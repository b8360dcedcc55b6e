#include "listview/source/ui/locate_wait_face.h"

#include <QEventLoop>
#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPointer>
#include <QProgressBar>
#include <QPushButton>
#include <QVBoxLayout>

#include "docview/ui/dialog_parts.h"
#include "docview/ui/plain_tool_tip.h"

namespace {

constexpr int kPathChars = 56;

QLineEdit* MakePath(const std::string& path, const char* label, QWidget* parent) {
  auto* field = new QLineEdit(QString::fromStdString(path), parent);
  field->setReadOnly(true);
  field->setAccessibleName(AccessibleName(label));
  field->setMinimumWidth(field->fontMetrics().averageCharWidth() * kPathChars);
  SetPlainToolTip(*field, QString::fromStdString(path));
  return field;
}

}  // namespace

LocateWaitFace::LocateWaitFace(LocateWait& dialog, QWidget* parent) : QtDialogFace(dialog, parent) {
  setWindowTitle(LocateWait::kCaption);
  setObjectName("locating source");
  auto* text = new QLabel(LocateWait::kText, this);
  auto* bar = new QProgressBar(this);
  bar->setRange(0, 0);  // moves, and comes to no end
  bar->setTextVisible(false);
  bar->setAccessibleName(LocateWait::kText);
  auto* cancel = new QPushButton(tr("Cancel"), this);
  cancel->setObjectName("cancel");
  cancel->setAutoDefault(false);
  connect(cancel, &QPushButton::clicked, this, [this] { reject(); });
  QLabel* const reason = MakePlainLabel(QString::fromStdString(dialog.Reason()), this);
  reason->setWordWrap(true);
  auto* paths = new QFormLayout;
  paths->addRow(LocateWait::kRecordedLabel,
                MakePath(dialog.m_recorded, LocateWait::kRecordedLabel, this));
  paths->addRow(LocateWait::kLocatedLabel,
                MakePath(dialog.m_located, LocateWait::kLocatedLabel, this));
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(16, 16, 16, 14);
  layout->setSpacing(10);
  layout->addWidget(text);
  layout->addWidget(bar);
  layout->addLayout(paths);
  layout->addWidget(reason);
  layout->addWidget(cancel, 0, Qt::AlignRight);
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
