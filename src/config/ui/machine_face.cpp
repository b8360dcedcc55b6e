#include "config/ui/machine_face.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QToolButton>
#include <QVBoxLayout>

#include "docview/ui/dialog_parts.h"

namespace {

constexpr int kFieldCharacters = 32;

}  // namespace

MachineFace::MachineFace(CMachineDlg& dialog, QWidget* parent)
    : QtDialogFace(dialog, parent), m_query(dialog), m_machine(new QLineEdit(this)) {
  setWindowTitle(CMachineDlg::kCaption);
  setObjectName("machine query");
  m_machine->setObjectName("machine");
  m_machine->setAccessibleName(tr("Machine"));
  m_machine->setMinimumWidth(fontMetrics().averageCharWidth() * kFieldCharacters);
  auto* browse = new QToolButton(this);
  browse->setObjectName("browse");
  browse->setText("&...");
  browse->setAccessibleName(tr("Browse"));
  connect(browse, &QToolButton::clicked, this, [this] { Browse(); });
  auto* field = new QHBoxLayout;
  field->addWidget(m_machine, 1);
  field->addWidget(browse);

  auto* layout = new QVBoxLayout(this);
  layout->addWidget(MakePlainLabel(QString::fromStdString(dialog.m_strPrompt), this));
  layout->addWidget(MakePlainLabel(CMachineDlg::kDefaultHint, this));
  layout->addLayout(field);
  layout->addSpacing(8);
  layout->addWidget(MakeDialogButtons(*this, true).box);
  layout->setSizeConstraint(QLayout::SetFixedSize);
  m_machine->setFocus();
}

void MachineFace::UpdateData() {
  m_machine->setText(QString::fromStdString(m_query.m_strMachine));
  m_machine->selectAll();
}

void MachineFace::OnAccept() {
  m_query.SetMachine(m_machine->text().toStdString());
  m_query.OnOK();
}

void MachineFace::Browse() {
  Forward([this] {
    m_query.SetMachine(m_machine->text().toStdString());
    m_query.OnBrowse();
    UpdateData();
    m_machine->setFocus();
  });
}

MachineBrowserFace::MachineBrowserFace(CMachineBrowser& dialog, QWidget* parent)
    : QtDialogFace(dialog, parent), m_browser(dialog), m_machines(new QListWidget(this)) {
  setWindowTitle(CMachineDlg::kCaption);
  setObjectName("machine browser");
  m_machines->setObjectName("machines");
  m_machines->setAccessibleName(tr("Machines"));
  const DialogButtons buttons = MakeDialogButtons(*this, false);
  m_ok = buttons.ok;
  connect(m_machines, &QListWidget::currentRowChanged, this, [this](int row) {
    m_browser.OnSelect(row);
    m_ok->setEnabled(m_browser.MayOK());
  });
  connect(m_machines, &QListWidget::itemDoubleClicked, this, &QDialog::accept);
  auto* layout = new QVBoxLayout(this);
  layout->addWidget(MakePlainLabel(CMachineBrowser::kTitle, this));
  layout->addWidget(m_machines);
  layout->addWidget(buttons.box);
}

void MachineBrowserFace::UpdateData() {
  m_machines->clear();
  for (const std::string& machine : m_browser.m_machines)
    m_machines->addItem(QString::fromStdString(machine));
  m_ok->setEnabled(m_browser.MayOK());
}
