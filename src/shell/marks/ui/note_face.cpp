#include "shell/marks/ui/note_face.h"

#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QShortcut>
#include <QVBoxLayout>

#include "docview/ui/dialog_parts.h"

namespace {

constexpr int kTextChars = 64, kTextLines = 8;

}  // namespace

NoteFace::NoteFace(CNoteDialog& dialog, QWidget* parent)
    : QtDialogFace(dialog, parent),
      m_note(dialog),
      m_trace(new QLineEdit(this)),
      m_text(new QPlainTextEdit(this)) {
  setWindowTitle(CNoteDialog::kCaption);
  setObjectName("note");
  setSizeGripEnabled(true);
  NameControl(*m_trace, CNoteDialog::kTrace, "Trace");
  m_trace->setReadOnly(true);
  m_trace->setText(QString::fromStdString(dialog.Trace()));
  m_trace->setCursorPosition(0);
  NameControl(*m_text, CNoteDialog::kText, "Note");
  m_text->setTabChangesFocus(true);
  m_text->setPlainText(QString::fromStdString(dialog.m_text));
  m_text->selectAll();
  m_text->setMinimumSize(fontMetrics().averageCharWidth() * kTextChars,
                         fontMetrics().lineSpacing() * kTextLines);
  auto* const label = new QLabel("&Note (Ctrl+Enter is OK; an empty text removes it):", this);
  label->setBuddy(m_text);
  auto* const layout = new QVBoxLayout(this);
  layout->addWidget(m_trace);
  layout->addWidget(label);
  layout->addWidget(m_text, 1);
  layout->addWidget(MakeDialogButtons(*this, true).box);
  for (const int enter : {Qt::Key_Return, Qt::Key_Enter})
    connect(new QShortcut(QKeySequence(Qt::CTRL | enter), this), &QShortcut::activated, this,
            &QDialog::accept);
  m_text->setFocus();
}

void NoteFace::OnAccept() {
  m_note.m_text = m_text->toPlainText().toStdString();
  QtDialogFace::OnAccept();
}
