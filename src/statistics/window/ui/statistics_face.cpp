#include "statistics/window/ui/statistics_face.h"

#include <QComboBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

#include "base/text.h"
#include "controls/report/ui/report_list_widget.h"
#include "docview/ui/dialog_parts.h"

namespace {

constexpr int kListChars = 160, kListRows = 22;

}  // namespace

StatisticsFace::StatisticsFace(CStatisticsDlg& dialog, QWidget* parent)
    : QtDialogFace(dialog, parent),
      m_statistics(dialog),
      m_field(new QComboBox(this)),
      m_list(new QtReportList(dialog, "Statistics", this)),
      m_status(MakePlainLabel("", this)),
      m_onlyThis(MakeButton(CDialog::kIdOk, "&Only This", this)),
      m_close(MakeButton(CDialog::kIdCancel, "Close", this)),
      m_help(MakeButton(kHelpButton, "Help", this)) {
  setWindowTitle(CStatisticsDlg::kCaption);
  setObjectName("statistics");
  m_list->setObjectName(IdName(CStatisticsDlg::kList));
  m_list->SetWantedSize(
      {fontMetrics().averageCharWidth() * kListChars, fontMetrics().lineSpacing() * kListRows});
  // Its text is its name, so that a reader of the screen says it.
  m_status->setObjectName(IdName(CStatisticsDlg::kStatus));
  m_status->setAccessibleDescription(QStringLiteral("Counted"));
  m_onlyThis->setDefault(true);
  for (QPushButton* const other : {m_close, m_help}) other->setAutoDefault(false);
  connect(m_onlyThis, &QPushButton::clicked, this, &QDialog::accept);
  connect(m_close, &QPushButton::clicked, this, &QDialog::reject);
  connect(m_help, &QPushButton::clicked, this, [this] { AskForHelp(); });
  LayOut();
  MakeFields();
  m_statistics.Attach(*this);
  m_list->setFocus();
}

StatisticsFace::~StatisticsFace() = default;

void StatisticsFace::MakeFields() {
  for (const StatField field : kAllStatFields) m_field->addItem(CStatisticsDlg::HeadingOf(field));
  m_field->setCurrentIndex(static_cast<int>(m_statistics.Field()));
  connect(m_field, &QComboBox::currentIndexChanged, this, [this](int index) {
    Forward(
        [this, index] { m_statistics.SetField(kAllStatFields[static_cast<std::size_t>(index)]); });
  });
}

void StatisticsFace::LayOut() {
  NameControl(*m_field, CStatisticsDlg::kField, "Count by:");
  QLabel* const label = MakePlainLabel("Count &by:", this);
  label->setBuddy(m_field);
  auto* const top = new QHBoxLayout;
  top->addWidget(label);
  top->addWidget(m_field);
  top->addStretch(1);
  auto* const buttons = new QHBoxLayout;
  buttons->addWidget(m_status, 1);
  for (QPushButton* const button : {m_onlyThis, m_close, m_help}) buttons->addWidget(button);
  auto* const layout = new QVBoxLayout(this);
  layout->addLayout(top);
  layout->addWidget(m_list, 1);
  layout->addLayout(buttons);
}

ReportList& StatisticsFace::List() {
  return *m_list;
}

void StatisticsFace::ShowStatus(const std::string& text) {
  m_status->setText(QString::fromStdString(ReplaceMalformed(text)));
}

void StatisticsFace::EnableOnlyThis(bool on) {
  m_onlyThis->setEnabled(on);
}
