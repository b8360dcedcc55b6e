#include "listview/source/ui/find_text_face.h"

#include <QGridLayout>
#include <QLabel>

#include "docview/ui/prompt_button.h"

namespace {

constexpr int kFieldCharacters = 32;

}  // namespace

FindTextFace::FindTextFace(FindTextDialog& dialog, QWidget* parent)
    : QtDialogFace(dialog, parent),
      m_find(dialog),
      m_text(new QLineEdit(this)),
      m_matchCase(new PromptButton<QCheckBox>(tr("M&atch case"), this)),
      m_wholeWord(new PromptButton<QCheckBox>(tr("Match &whole word only"), this)),
      m_findNext(new PromptButton<QPushButton>(tr("&Find Next"), this)) {
  setWindowTitle(FindTextDialog::kTitle);
  setObjectName("find text");
  m_text->setObjectName("text");
  m_matchCase->setObjectName("match case");
  m_wholeWord->setObjectName("whole word");
  m_findNext->setObjectName("find next");
  m_text->setMinimumWidth(fontMetrics().averageCharWidth() * kFieldCharacters);
  auto* label = new QLabel(tr("Fi&nd what:"), this);
  label->setBuddy(m_text);
  auto* cancel = new QPushButton(tr("Cancel"), this);
  m_findNext->setDefault(true);
  cancel->setAutoDefault(false);
  connect(m_text, &QLineEdit::textChanged, this, [this] { TakeData(); });
  for (const QCheckBox* box : {m_matchCase, m_wholeWord})
    connect(box, &QCheckBox::toggled, this, [this] { TakeData(); });
  connect(m_findNext, &QPushButton::clicked, this, &QDialog::accept);
  connect(cancel, &QPushButton::clicked, this, &QDialog::reject);

  auto* grid = new QGridLayout(this);
  grid->addWidget(label, 0, 0);
  grid->addWidget(m_text, 0, 1);
  grid->addWidget(m_findNext, 0, 2);
  grid->addWidget(m_wholeWord, 1, 0, 1, 2);
  grid->addWidget(cancel, 1, 2);
  grid->addWidget(m_matchCase, 2, 0, 1, 2);
  grid->setSizeConstraint(QLayout::SetFixedSize);
  m_text->setFocus();
}

void FindTextFace::UpdateData() {
  const RichEditFind find = m_find.m_find;
  m_text->setText(QString::fromStdString(find.text));
  m_matchCase->setChecked(find.matchCase);
  m_wholeWord->setChecked(find.wholeWord);
  m_text->selectAll();
  TakeData();
}

void FindTextFace::TakeData() {
  m_find.m_find = {m_text->text().toStdString(), m_matchCase->isChecked(),
                   m_wholeWord->isChecked()};
  m_findNext->setEnabled(m_find.MayFind());
}
