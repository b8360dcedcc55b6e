#include "shell/views/ui/profiles_face.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QVBoxLayout>

#include "base/text.h"
#include "docview/ui/dialog_parts.h"

namespace {

using Dialog = CProfilesDialog;

constexpr int kListCharacters = 48, kListRows = 10;

QString Shown(const std::string& text) {
  return QString::fromStdString(ReplaceMalformed(text));
}

}  // namespace

ProfilesFace::ProfilesFace(CProfilesDialog& dialog, QWidget* parent)
    : QtDialogFace(dialog, parent),
      m_dialog(dialog),
      m_profiles(new QListWidget(this)),
      m_name(new QLineEdit(this)),
      m_description(MakePlainLabel("", this)) {
  setWindowTitle(Dialog::Title());
  setObjectName("profiles");
  auto* layout = new QVBoxLayout(this);
  layout->addLayout(MakeName());
  layout->addLayout(MakeList(), 1);
  m_description->setObjectName("description");
  m_description->setWordWrap(true);
  m_description->setMinimumHeight(fontMetrics().lineSpacing() * 2);
  layout->addWidget(m_description);
  layout->addLayout(MakeEnd());
  (dialog.BeginsWithName() ? static_cast<QWidget*>(m_name) : m_profiles)->setFocus();
}

QPushButton* ProfilesFace::MakePress(unsigned id, const char* text, void (Dialog::*press)()) {
  QPushButton* const button = MakeButton(id, text, this);
  button->setAutoDefault(false);
  connect(button, &QPushButton::clicked, this, [this, press] {
    Forward([&] { (m_dialog.*press)(); });
    ShowNames();
  });
  return button;
}

QLayout* ProfilesFace::MakeName() {
  auto* const label = new QLabel("&Name:", this);
  label->setBuddy(m_name);
  NameControl(*m_name, Dialog::kName, label->text());
  connect(m_name, &QLineEdit::textEdited, this, [this](const QString& said) {
    m_dialog.m_name = said.toStdString();
    ShowState();
  });
  QPushButton* const save = MakePress(Dialog::kSave, "&Save", &Dialog::Save);
  save->setToolTip("Save what the window shows as a profile of this name");
  auto* row = new QHBoxLayout;
  row->addWidget(label);
  row->addWidget(m_name, 1);
  row->addWidget(save);
  // Enter in the name.
  connect(m_name, &QLineEdit::returnPressed, save, &QPushButton::click);
  return row;
}

QLayout* ProfilesFace::MakeList() {
  NameControl(*m_profiles, Dialog::kProfiles, "Profiles");
  m_profiles->setMinimumWidth(fontMetrics().averageCharWidth() * kListCharacters);
  m_profiles->setMinimumHeight(fontMetrics().height() * kListRows);
  connect(m_profiles, &QListWidget::currentRowChanged, this, [this](int row) {
    if (m_showing) return;
    m_dialog.Select(row);
    ShowState();
  });
  QPushButton* const apply = MakePress(Dialog::kApply, "&Apply", &Dialog::ApplyCurrent);
  connect(m_profiles, &QListWidget::itemActivated, apply, &QPushButton::click);
  auto* column = new QVBoxLayout;
  column->addWidget(apply);
  column->addWidget(MakePress(Dialog::kRename, "&Rename", &Dialog::Rename));
  column->addWidget(MakePress(Dialog::kDelete, "&Delete...", &Dialog::Delete));
  column->addStretch(1);
  column->addWidget(MakePress(Dialog::kImport, "&Import...", &Dialog::Import));
  column->addWidget(MakePress(Dialog::kExport, "&Export...", &Dialog::Export));
  auto* row = new QHBoxLayout;
  row->addWidget(m_profiles, 1);
  row->addLayout(column);
  return row;
}

QLayout* ProfilesFace::MakeEnd() {
  QPushButton* const close = MakeButton(CDialog::kIdCancel, "Close", this);
  close->setAutoDefault(false);
  connect(close, &QPushButton::clicked, this, [this] { reject(); });
  QPushButton* const help = MakeButton(kHelpButton, "Help", this);
  help->setAutoDefault(false);
  connect(help, &QPushButton::clicked, this, [this] { AskForHelp(); });
  auto* row = new QHBoxLayout;
  row->addStretch(1);
  row->addWidget(close);
  row->addWidget(help);
  return row;
}

void ProfilesFace::UpdateData() {
  ShowNames();
}

void ProfilesFace::ShowNames() {
  m_showing = true;
  m_profiles->clear();
  for (const std::string& name : m_dialog.Names()) m_profiles->addItem(Shown(name));
  m_profiles->setCurrentRow(m_dialog.Current());
  m_showing = false;
  ShowState();
}

void ProfilesFace::ShowState() {
  const QString name = QString::fromStdString(m_dialog.m_name);
  if (m_name->text() != name) m_name->setText(name);
  m_description->setText(Shown(m_dialog.Description()));
  m_profiles->setAccessibleDescription(m_description->text());
  const bool chosen = m_dialog.Current() >= 0;
  for (const unsigned id : {Dialog::kApply, Dialog::kDelete, Dialog::kExport})
    findChild<QPushButton*>(IdName(id))->setEnabled(chosen);
  findChild<QPushButton*>(IdName(Dialog::kSave))->setEnabled(m_dialog.HasName());
  findChild<QPushButton*>(IdName(Dialog::kRename))->setEnabled(chosen && m_dialog.HasName());
}
