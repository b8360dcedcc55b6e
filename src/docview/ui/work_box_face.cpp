#include "docview/ui/work_box_face.h"

#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

#include "docview/ui/dialog_parts.h"

namespace {

constexpr int kBarWidthPx = 280;
constexpr int kUpdateMs = 100;
constexpr int kThousandths = 1000;

}  // namespace

WorkBoxFace::WorkBoxFace(CWorkBox& dialog, QWidget* parent)
    : QtDialogFace(dialog, parent), m_box(dialog), m_bar(new QProgressBar(this)) {
  setWindowTitle(dialog.Title());
  setObjectName("working");
  auto* message = new QLabel(dialog.Message(), this);
  m_bar->setFixedWidth(kBarWidthPx);
  m_bar->setTextVisible(false);
  m_bar->setAccessibleName("Progress");
  QPushButton* const cancel = MakeButton(CDialog::kIdCancel, "Cancel", this);
  // The Enter that started the work may still be in the event queue.
  cancel->setAutoDefault(false);
  connect(cancel, &QPushButton::clicked, this, &QDialog::reject);
  auto* layout = new QVBoxLayout(this);
  layout->setSpacing(10);
  layout->addWidget(message);
  layout->addWidget(m_bar);
  layout->addWidget(cancel, 0, Qt::AlignRight);
  layout->setSizeConstraint(QLayout::SetFixedSize);
  startTimer(kUpdateMs);
}

// Without a known end the bar only moves.
void WorkBoxFace::UpdateData() {
  const std::optional<int> progress = m_box.Progress();
  m_bar->setRange(0, progress ? kThousandths : 0);
  if (progress) m_bar->setValue(*progress);
}

void WorkBoxFace::timerEvent(QTimerEvent*) {
  UpdateData();
}
