#include "shell/goto/ui/go_to_face.h"

#include <QAccessible>
#include <QDialogButtonBox>
#include <QVBoxLayout>

namespace {

constexpr int kFieldCharacters = 56;

}  // namespace

GoToFace::GoToFace(CGoToDlg& dialog, QWidget* parent)
    : QtDialogFace(dialog, parent),
      m_goTo(dialog),
      m_text(new QLineEdit(this)),
      m_hint(new QLabel(this)),
      m_why(new QLabel(this)) {
  setObjectName("go to");
  setWindowTitle(dialog.Title());
  SetUpTexts();
  auto* label = new QLabel(QString::fromLatin1(dialog.Label()), this);
  label->setBuddy(m_text);
  auto* buttons = new QDialogButtonBox(QDialogButtonBox::Cancel, this);
  auto* go = buttons->addButton(tr("&Go"), QDialogButtonBox::AcceptRole);
  go->setObjectName("go");
  go->setDefault(true);
  connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
  connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
  connect(m_text, &QLineEdit::textChanged, this, [this](const QString& text) {
    m_goTo.SetText(text.toStdString());
    ShowWhy();
  });
  auto* column = new QVBoxLayout(this);
  for (QWidget* each : std::initializer_list<QWidget*>{label, m_text, m_hint, m_why, buttons})
    column->addWidget(each);
  m_text->setFocus();
}

void GoToFace::SetUpTexts() {
  m_text->setObjectName("text");
  m_hint->setObjectName("hint");
  m_why->setObjectName("why");
  m_text->setMinimumWidth(fontMetrics().averageCharWidth() * kFieldCharacters);
  for (QLabel* text : {m_hint, m_why}) {
    text->setTextFormat(Qt::PlainText);
    text->setWordWrap(true);
  }
  QFont strong = font();
  strong.setBold(true);
  m_why->setFont(strong);
  // A reason of two lines moves nothing.
  m_why->setMinimumHeight(2 * QFontMetrics(strong).lineSpacing());
  m_why->setAlignment(Qt::AlignLeft | Qt::AlignTop);
}

void GoToFace::UpdateData() {
  m_hint->setText(QString::fromStdString(m_goTo.Hint()));
  m_text->setText(QString::fromStdString(m_goTo.Text()));
  m_text->selectAll();
  adjustSize();
  ShowWhy();
  Grow();
}

// A layout asks its window for the height of unbroken texts only.
void GoToFace::Grow() {
  const int neededPx = layout()->totalHeightForWidth(width());
  if (neededPx > height()) resize(width(), neededPx);
  layout()->activate();
}

void GoToFace::OnAccept() {
  QtDialogFace::OnAccept();
  if (m_goTo.Ended()) return;
  ShowWhy();
  m_text->setFocus();
  m_text->selectAll();
}

// A reader of the screen says the reason with the field.
void GoToFace::ShowWhy() {
  const QString why = QString::fromStdString(m_goTo.Why());
  m_text->setAccessibleDescription(why.isEmpty() ? m_hint->text() : why);
  if (m_why->text() == why) return;
  m_why->setText(why);
  Grow();
  if (why.isEmpty()) return;
  QAccessibleEvent alert(m_text, QAccessible::Alert);
  QAccessible::updateAccessibility(&alert);
}
