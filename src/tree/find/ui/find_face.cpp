#include "tree/find/ui/find_face.h"

#include <QCheckBox>
#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

#include "docview/ui/dialog_parts.h"

namespace {

constexpr int kTextCharacters = 42;

}  // namespace

FindFace::FindFace(CFindDialog& dialog, QWidget* parent)
    : QtDialogFace(dialog, parent),
      m_dialog(dialog),
      m_text(new QLineEdit(this)),
      m_ignoreCase(MakeCheckBox(CFindDialog::kIgnoreCase, "Ignore &Case", this)),
      m_backward(MakeCheckBox(CFindDialog::kBackward, "&Backward", this)),
      m_regularExpression(
          MakeCheckBox(CFindDialog::kRegularExpression, "&Regular Expression", this)),
      m_wordSearch(MakeCheckBox(CFindDialog::kWordSearch, "&Word Search", this)) {
  setWindowTitle(CFindDialog::Title());
  setObjectName("find");
  auto* label = new QLabel("Search &Text:", this);
  label->setBuddy(m_text);
  NameControl(*m_text, CFindDialog::kText, label->text());
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
  const DialogButtons buttons = MakeDialogButtons(*this, true);
  m_ok = buttons.ok;
  grid->addWidget(buttons.box, 4, 0, 1, 3);
  grid->setSizeConstraint(QLayout::SetFixedSize);
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
