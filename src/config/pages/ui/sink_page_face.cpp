#include "config/pages/ui/sink_page_face.h"

#include <QButtonGroup>
#include <QCheckBox>
#include <QComboBox>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QRadioButton>
#include <QScopedValueRollback>
#include <QToolButton>
#include <QWheelEvent>
#include <limits>
#include <utility>

#include "docview/ui/dialog_parts.h"
#include "docview/ui/prompt_button.h"

namespace {

using Page = CAppSinkCfgPropertyPage;
constexpr int kIndentPx = 22, kGroupGapPx = 14, kNumberChars = 12, kUnitGapPx = 6;

// A name that is no UTF-8 cannot be shown as it is. It stays until the user changes the field.
void Take(const QLineEdit& field, std::string& text) {
  if (field.text() != QString::fromStdString(text)) text = field.text().toStdString();
}

// A wheel that is turned over it while another control has the focus scrolls nothing here.
class NumberBox final : public QComboBox {
 public:
  using QComboBox::QComboBox;

 protected:
  void wheelEvent(QWheelEvent* event) override {
    if (hasFocus())
      QComboBox::wheelEvent(event);
    else
      event->ignore();
  }
};

void ShowNumber(QComboBox& box, const std::string& number) {
  const QString text = QString::fromStdString(number);
  box.setCurrentIndex(box.findText(text, Qt::MatchExactly));  // the arrow keys step from it
  box.setEditText(text);
}

}  // namespace

SinkPageFace::SinkPageFace(CAppSinkCfgPropertyPage& page, QWidget* parent)
    : QtPageFace(parent), m_page(page) {
  auto* const grid = new QGridLayout(this);
  grid->setHorizontalSpacing(8);
  m_server = MakeRadio(Page::kServer, "Trace &Server", [this] { m_page.OnTraceServer(); });
  m_file = MakeRadio(Page::kFile, "&File", [this] { m_page.OnFile(); });
  auto* const group = new QButtonGroup(this);
  group->addButton(m_server);
  group->addButton(m_file);
  MakeServer(*grid);
  grid->setRowMinimumHeight(grid->rowCount(), kGroupGapPx);
  MakeFile(*grid);
  grid->setColumnMinimumWidth(0, kIndentPx);
  grid->setColumnStretch(2, 1);
  grid->setRowStretch(grid->rowCount(), 1);
}

QRadioButton* SinkPageFace::MakeRadio(unsigned id, const char* text, std::function<void()> press) {
  auto* const radio = new PromptButton<QRadioButton>(text, this);
  NameControl(*radio, id, text);
  connect(radio, &QRadioButton::clicked, this,
          [this, press = std::move(press)] { Forward(press); });
  return radio;
}

void SinkPageFace::AddLabel(const char* text, QWidget* buddy, QGridLayout& grid) {
  auto* const label = new QLabel(text, this);
  label->setBuddy(buddy);
  grid.addWidget(label, grid.rowCount(), 1);
}

QLineEdit* SinkPageFace::MakeField(unsigned id, const char* label, QGridLayout& grid) {
  auto* const field = new QLineEdit(this);
  NameControl(*field, id, label);
  field->setMaxLength(std::numeric_limits<int>::max());  // else it cuts a long name
  connect(field, &QLineEdit::textEdited, this, [this] { OnEdit(); });
  AddLabel(label, field, grid);
  grid.addWidget(field, grid.rowCount() - 1, 2);
  return field;
}

// The choices are proposals: nothing is completed while the user types.
QComboBox* SinkPageFace::MakeCombo(unsigned id, const char* label,
                                   const std::vector<std::string>& choices, QGridLayout& grid) {
  auto* const combo = new NumberBox(this);
  NameControl(*combo, id, label);
  combo->setEditable(true);
  combo->setInsertPolicy(QComboBox::NoInsert);
  combo->setCompleter(nullptr);
  combo->setMinimumContentsLength(kNumberChars);
  for (const std::string& choice : choices) combo->addItem(QString::fromStdString(choice));
  connect(combo, &QComboBox::editTextChanged, this, [this] { OnEdit(); });
  AddLabel(label, combo, grid);
  return combo;
}

void SinkPageFace::MakeServer(QGridLayout& grid) {
  grid.addWidget(m_server, grid.rowCount(), 0, 1, 4);
  m_machine = MakeField(Page::kMachine, "&Machine:", grid);
  m_browse = new QToolButton(this);
  m_browse->setText("&...");
  NameControl(*m_browse, Page::kBrowse, "Browse");
  m_browse->setFocusPolicy(Qt::StrongFocus);
  connect(m_browse, &QToolButton::clicked, this,
          [this] { Forward([this] { m_page.OnBrowse(); }); });
  grid.addWidget(m_browse, grid.rowCount() - 1, 3);
}

void SinkPageFace::MakeFile(QGridLayout& grid) {
  grid.addWidget(m_file, grid.rowCount(), 0, 1, 4);
  m_fileName = MakeField(Page::kFileName, "File &Name:", grid);
  m_flush = MakeCheckBox(Page::kFlush, "Force F&lush", this);
  connect(m_flush, &QCheckBox::clicked, this, [this] { OnEdit(); });
  grid.addWidget(m_flush, grid.rowCount(), 2);
  m_historicFiles = MakeCombo(Page::kHistoricFiles,
                              "Number of &Historic Files:", Page::HistoricFilesChoices(), grid);
  m_historicFiles->setToolTip("0: all older files are kept");
  m_historicFiles->setAccessibleDescription(m_historicFiles->toolTip());
  grid.addWidget(m_historicFiles, grid.rowCount() - 1, 2, Qt::AlignLeft);
  m_maxSize = MakeCombo(Page::kMaxSize, "Ma&ximum File Size:", Page::MaxSizeChoices(), grid);
  auto* const size = new QHBoxLayout;
  size->addWidget(m_maxSize);
  size->addSpacing(kUnitGapPx);
  size->addWidget(MakePlainLabel("MB", this));
  size->addStretch(1);
  grid.addLayout(size, grid.rowCount() - 1, 2);
}

void SinkPageFace::OnEdit() {
  if (!m_showing) Forward([this] { m_page.OnEdit(); });
}

void SinkPageFace::ShowData() {
  const QScopedValueRollback<bool> showing(m_showing, true);
  m_server->setChecked(m_page.m_nSinkType == 0);
  m_file->setChecked(m_page.m_nSinkType == 1);
  m_machine->setText(QString::fromStdString(m_page.m_strMachine));
  m_fileName->setText(QString::fromStdString(m_page.m_strFileName));
  m_flush->setChecked(m_page.m_bForceFlush != 0);
  ShowNumber(*m_historicFiles, m_page.m_strHistoricFiles);
  ShowNumber(*m_maxSize, m_page.m_strMaxSize);
  for (QWidget* const each : {static_cast<QWidget*>(m_machine), static_cast<QWidget*>(m_browse)})
    each->setEnabled(m_page.MachineEnabled());
  for (QWidget* const each :
       {static_cast<QWidget*>(m_fileName), static_cast<QWidget*>(m_flush),
        static_cast<QWidget*>(m_historicFiles), static_cast<QWidget*>(m_maxSize)})
    each->setEnabled(m_page.FileEnabled());
}

bool SinkPageFace::TakeData() {
  m_page.m_nSinkType = m_server->isChecked() ? 0 : m_file->isChecked() ? 1 : -1;
  Take(*m_machine, m_page.m_strMachine);
  Take(*m_fileName, m_page.m_strFileName);
  m_page.m_bForceFlush = m_flush->isChecked();
  m_page.m_strHistoricFiles = m_historicFiles->currentText().toStdString();
  m_page.m_strMaxSize = m_maxSize->currentText().toStdString();
  return true;
}
