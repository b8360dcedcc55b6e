#include "tree/find/ui/find_face.h"

#include <QCheckBox>
#include <QDialogButtonBox>
#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

#include "docview/ui/prompt_button.h"

namespace {

constexpr int kTextCharacters = 42;

QString NameOf(unsigned id) {
  return QString::number(id);
}

// The text without the mark of its access key.
QString PlainText(QString text) {
  return text.remove('&');
}

}  // namespace

FindFace::FindFace(CFindDialog& dialog, QWidget* parent)
    : QtDialogFace(dialog, parent),
      m_dialog(dialog),
      m_text(new QLineEdit(this)),
      m_ignoreCase(MakeBox(CFindDialog::kIgnoreCase, "Ignore &Case")),
      m_backward(MakeBox(CFindDialog::kBackward, "&Backward")),
      m_regularExpression(MakeBox(CFindDialog::kRegularExpression, "&Regular Expression")),
      m_wordSearch(MakeBox(CFindDialog::kWordSearch, "&Word Search")) {
  setWindowTitle(CFindDialog::Title());
  setObjectName("find");
  auto* label = new QLabel("Search &Text:", this);
  label->setBuddy(m_text);
  m_text->setObjectName(NameOf(CFindDialog::kText));
  m_text->setAccessibleName("Search Text");
  m_text->setMinimumWidth(fontMetrics().averageCharWidth() * kTextCharacters);
  connect(m_text, &QLineEdit::textChanged, this, [this](const QString& text) {
    Forward([this, &text] { m_dialog.OnChangeText(text.toStdString()); });
    ShowOkState();
  });

  auto* grid = new QGridLayout(this);
  grid->setHorizontalSpacing(16);
  grid->addWidget(label, 0, 0);
  grid->addWidget(m_text, 0, 1, 1, 2);
  grid->addWidget(m_ignoreCase, 1, 1);
  grid->addWidget(m_backward, 1, 2);
  grid->addWidget(m_regularExpression, 2, 1);
  grid->addWidget(m_wordSearch, 2, 2);
  grid->setRowMinimumHeight(3, 8);
  grid->addWidget(MakeButtons(), 4, 0, 1, 3);
  grid->setSizeConstraint(QLayout::SetFixedSize);
}

QCheckBox* FindFace::MakeBox(unsigned id, const QString& text) {
  auto* box = new PromptButton<QCheckBox>(text, this);
  box->setObjectName(NameOf(id));
  box->setAccessibleName(PlainText(text));
  return box;
}

QDialogButtonBox* FindFace::MakeButtons() {
  auto* buttons = new QDialogButtonBox(this);
  const auto add = [&](unsigned id, const char* text, QDialogButtonBox::ButtonRole role) {
    QPushButton* button = buttons->addButton(text, role);
    button->setObjectName(NameOf(id));
    button->setAccessibleName(text);
    return button;
  };
  m_ok = add(CDialog::kIdOk, "OK", QDialogButtonBox::AcceptRole);
  m_ok->setDefault(true);
  add(CDialog::kIdCancel, "Cancel", QDialogButtonBox::RejectRole);
  add(CFindDialog::kHelp, "Help", QDialogButtonBox::HelpRole);
  connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
  connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
  connect(buttons, &QDialogButtonBox::helpRequested, this, [this] { AskForHelp(); });
  return buttons;
}

void FindFace::ShowOkState() {
  m_ok->setEnabled(m_dialog.OkEnabled());
}

void FindFace::UpdateData() {
  m_text->setText(QString::fromStdString(m_dialog.searchText));
  m_text->selectAll();
  m_text->setFocus();
  m_ignoreCase->setChecked(m_dialog.ignoreCase != 0);
  m_backward->setChecked(m_dialog.backward != 0);
  m_regularExpression->setChecked(m_dialog.regularExpression != 0);
  m_wordSearch->setChecked(m_dialog.wordSearch != 0);
  ShowOkState();
}

void FindFace::OnAccept() {
  m_dialog.searchText = m_text->text().toStdString();
  m_dialog.ignoreCase = m_ignoreCase->isChecked();
  m_dialog.backward = m_backward->isChecked();
  m_dialog.regularExpression = m_regularExpression->isChecked();
  m_dialog.wordSearch = m_wordSearch->isChecked();
  m_dialog.OnOK();
  if (m_dialog.Ended()) return;
  m_text->setFocus();
  m_text->selectAll();
}
