#include "shell/ui/load_status_face.h"

#include <QGridLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QPushButton>
#include <algorithm>

#include "docview/ui/plain_tool_tip.h"

namespace {

constexpr int kPathWidthPx = 380, kWidestPathPx = 720;
constexpr int kPathEdgesPx = 16;  // of the field, beside its text
// A file may be larger than a signed number can count, so the bar counts in thousandths.
constexpr int kSteps = 1000;

}  // namespace

LoadStatusFace::LoadStatusFace(CLoadStatus& dialog, QWidget* parent)
    : QtDialogFace(dialog, parent),
      m_status(dialog),
      m_path(new QLineEdit(this)),
      m_bar(new QProgressBar(this)) {
  auto* label = new QLabel(tr("File:"), this);
  label->setBuddy(m_path);
  m_path->setReadOnly(true);
  m_path->setFixedWidth(kPathWidthPx);
  m_path->setAccessibleName(tr("File"));
  m_bar->setRange(0, kSteps);
  m_bar->setTextVisible(false);
  m_bar->setAccessibleName(tr("Progress"));
  auto* cancel = new QPushButton(tr("Cancel"), this);
  cancel->setAutoDefault(false);
  connect(cancel, &QPushButton::clicked, this, [this] { reject(); });

  auto* grid = new QGridLayout(this);
  grid->setContentsMargins(16, 16, 16, 14);
  grid->setHorizontalSpacing(10);
  grid->setVerticalSpacing(12);
  grid->addWidget(label, 0, 0);
  grid->addWidget(m_path, 0, 1);
  grid->addWidget(m_bar, 1, 0, 1, 2);
  grid->addWidget(cancel, 2, 0, 1, 2, Qt::AlignRight);
  grid->setSizeConstraint(QLayout::SetFixedSize);
  cancel->setFocus();
}

// Called for every position: updates only what has changed.
void LoadStatusFace::UpdateData() {
  const QString caption = QString::fromStdString(m_status.m_caption);
  if (windowTitle() != caption) setWindowTitle(caption);
  ShowPath(QString::fromStdString(m_status.m_path));
  const std::uint64_t position = m_status.m_position;
  m_bar->setValue(m_status.m_range ? static_cast<int>(position * kSteps / m_status.m_range) : 0);
}

// The field has the whole path, to be read and copied. It is as wide as the path, within limits; of
// a longer path the end is shown, with the file's name.
void LoadStatusFace::ShowPath(const QString& path) {
  if (m_path->text() == path) return;
  SetPlainToolTip(*m_path, path);
  m_path->setText(path);
  const int wantedPx = m_path->fontMetrics().horizontalAdvance(path) + kPathEdgesPx;
  m_path->setFixedWidth(std::clamp(wantedPx, kPathWidthPx, kWidestPathPx));
}

// Enter must not end the box, not even by the focused button.
void LoadStatusFace::keyPressEvent(QKeyEvent* event) {
  if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) {
    accept();
  } else {
    QtDialogFace::keyPressEvent(event);
  }
}
