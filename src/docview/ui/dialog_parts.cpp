#include "docview/ui/dialog_parts.h"

#include <QCheckBox>
#include <QLabel>
#include <QPushButton>
#include <QRegularExpression>

#include "docview/ui/prompt_button.h"
#include "docview/ui/qt_dialog_face.h"

QString IdName(unsigned id) {
  return QString::number(id);
}

void SetPlainTitle(QWidget& window, QString title) {
  window.setWindowTitle(title.replace("[*]", "[*][*]"));
}

QString AccessibleName(QString text) {
  // "&&" is an ampersand that is shown.
  static const QRegularExpression marks("&(?!&)|[<>]|:$");
  return text.replace("&&", QChar(1)).remove(marks).replace(QChar(1), "&").trimmed();
}

void NameControl(QWidget& control, unsigned id, const QString& spoken) {
  control.setObjectName(IdName(id));
  control.setAccessibleName(AccessibleName(spoken));
}

QPushButton* MakeButton(unsigned id, const QString& text, QWidget* parent) {
  auto* const button = new PromptButton<QPushButton>(text, parent);
  NameControl(*button, id, text);
  return button;
}

QCheckBox* MakeCheckBox(unsigned id, const QString& text, QWidget* parent) {
  auto* const box = new PromptButton<QCheckBox>(text, parent);
  NameControl(*box, id, text);
  return box;
}

QLabel* MakePlainLabel(const QString& text, QWidget* parent) {
  auto* const label = new QLabel(text, parent);
  label->setTextFormat(Qt::PlainText);
  return label;
}

QPushButton* AddButton(QDialogButtonBox& box, unsigned id, const QString& text,
                       QDialogButtonBox::ButtonRole role) {
  QPushButton* const button = box.addButton(text, role);
  NameControl(*button, id, text);
  return button;
}

DialogButtons MakeDialogButtons(QtDialogFace& dialog, bool withHelp) {
  auto* const box = new QDialogButtonBox(&dialog);
  QPushButton* const ok = AddButton(*box, CDialog::kIdOk, "OK", QDialogButtonBox::AcceptRole);
  ok->setDefault(true);
  AddButton(*box, CDialog::kIdCancel, "Cancel", QDialogButtonBox::RejectRole);
  if (withHelp) AddButton(*box, kHelpButton, "Help", QDialogButtonBox::HelpRole);
  QObject::connect(box, &QDialogButtonBox::accepted, &dialog, &QDialog::accept);
  QObject::connect(box, &QDialogButtonBox::rejected, &dialog, &QDialog::reject);
  QObject::connect(box, &QDialogButtonBox::helpRequested, &dialog,
                   [&dialog] { dialog.AskForHelp(); });
  return {box, ok};
}
