#include "listview/columns/ui/options_face.h"

#include <QCheckBox>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QRegularExpressionValidator>
#include <QVBoxLayout>

#include "docview/ui/dialog_parts.h"

namespace {

constexpr unsigned kUtcBox = 1167, kTintBox = 1168, kRememberBox = 1169, kLimitEdit = 1074;
constexpr int kBoxColumns = 3;
constexpr int kLimitDigits = 10;

}  // namespace

OptionsFace::OptionsFace(COptionsDlg& dialog, QWidget* parent)
    : QtDialogFace(dialog, parent), m_dialog(dialog) {
  setWindowTitle(COptionsDlg::Title());
  setObjectName("options");
  auto* layout = new QVBoxLayout(this);
  layout->setSpacing(12);
  layout->addWidget(MakeColumns());
  layout->addWidget(MakeDisplay());
  layout->addWidget(MakePerformance());
  layout->addStretch(1);
  layout->addWidget(MakeDialogButtons(*this, true).box);
  layout->setSizeConstraint(QLayout::SetFixedSize);
}

QCheckBox* OptionsFace::MakeBox(unsigned id, const QString& text) {
  QCheckBox* const box = MakeCheckBox(id, text, this);
  connect(box, &QCheckBox::clicked, this,
          [this, id] { Forward([this, id] { m_dialog.OnBoxClicked(id); }); });
  return box;
}

QGroupBox* OptionsFace::MakeColumns() {
  auto* group = new QGroupBox("Display Colums", this);  // kept: the screen has always said so
  auto* grid = new QGridLayout(group);
  grid->setHorizontalSpacing(24);
  const auto& boxes = COptionsDlg::Boxes();
  const int rows = (static_cast<int>(boxes.size()) + kBoxColumns - 1) / kBoxColumns;
  int place = 0;
  for (const COptionsDlg::Box& box : boxes) {
    QCheckBox* check = MakeBox(box.id, box.text);
    check->setEnabled(box.enabled);
    grid->addWidget(check, place % rows, place / rows);
    m_boxes.emplace_back(&box, check);
    ++place;
  }
  for (int column = 0; column < kBoxColumns; ++column) grid->setColumnStretch(column, 1);
  return group;
}

QGroupBox* OptionsFace::MakeDisplay() {
  auto* group = new QGroupBox("Display Options", this);
  auto* layout = new QVBoxLayout(group);
  m_utc = MakeBox(kUtcBox, "Use Coordinated Universal Time (UTC)");
  layout->addWidget(m_utc);
  m_tint = MakeBox(kTintBox, "Tint rows of warnings and errors");
  layout->addWidget(m_tint);
  m_remember = MakeBox(kRememberBox, "Remember the view of each file and monitor");
  layout->addWidget(m_remember);
  return group;
}

QGroupBox* OptionsFace::MakePerformance() {
  auto* group = new QGroupBox("Performance Options", this);
  auto* layout = new QHBoxLayout(group);
  auto* label = new QLabel("Size of Trace History Buffer for each Monitor:", group);
  m_limit = new QLineEdit(group);
  NameControl(*m_limit, kLimitEdit, label->text());
  m_limit->setMaxLength(kLimitDigits);
  m_limit->setValidator(new QRegularExpressionValidator(QRegularExpression("[0-9]*"), m_limit));
  m_limit->setAlignment(Qt::AlignRight);
  m_limit->setFixedWidth(fontMetrics().horizontalAdvance('0') * (kLimitDigits + 3));
  label->setBuddy(m_limit);
  const QString range = QString::fromStdString(COptionsDlg::LimitRange());
  m_limit->setToolTip(range + " traces");
  m_limit->setAccessibleDescription(range);
  layout->addWidget(label);
  layout->addStretch(1);
  layout->addWidget(m_limit);
  auto* limits = new QLabel(range, group);
  limits->setObjectName("range");
  layout->addWidget(limits);
  return group;
}

void OptionsFace::UpdateData() {
  for (const auto& [box, check] : m_boxes) check->setChecked(m_dialog.*(box->member) != 0);
  m_utc->setChecked(m_dialog.m_utc != 0);
  m_tint->setChecked(m_dialog.m_tint != 0);
  m_remember->setChecked(m_dialog.m_remember != 0);
  m_limit->setText(QString::number(m_dialog.m_limit));
}

void OptionsFace::OnAccept() {
  std::vector<std::pair<unsigned, bool>> boxes;
  for (const auto& [box, check] : m_boxes) boxes.emplace_back(box->id, check->isChecked());
  if (m_dialog.Exchange(boxes, m_utc->isChecked(), m_limit->text().toStdString(),
                        m_tint->isChecked(), m_remember->isChecked())) {
    m_dialog.OnOK();
    return;
  }
  m_limit->setFocus();
  m_limit->selectAll();
}
