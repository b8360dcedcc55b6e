#include "listview/details/ui/trace_detail_face.h"

#include <QComboBox>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRegularExpression>
#include <QVBoxLayout>
#include <cstring>
#include <limits>

#include "docview/ui/plain_tool_tip.h"

namespace {

constexpr int kWidthChars = 104, kHeightLines = 46;
constexpr int kStackLines = 20;  // shown at once when the list is open
constexpr int kStackChars = 20;  // the width that the list wants at least

QString NameOf(unsigned id) {
  return QString::number(id);
}

// The caption of a value, for programs that read the screen: "Tic Count".
QString SpokenName(const char* caption) {
  return QString::fromLatin1(caption).remove(u':');
}

}  // namespace

TraceDetailFace::TraceDetailFace(CTraceDetailDialog& dialog, QWidget* parent)
    : QtDialogFace(dialog, parent), m_dialog(dialog) {
  setWindowTitle(CTraceDetailDialog::kCaption);
  setObjectName("properties");
  setSizeGripEnabled(true);
  resize(fontMetrics().averageCharWidth() * kWidthChars,
         fontMetrics().lineSpacing() * kHeightLines);
  auto* top = new QHBoxLayout;
  top->addWidget(MakeGroup("Trace Info"), 1);
  top->addWidget(MakeGroup("Process Info"), 1);
  auto* layout = new QVBoxLayout(this);
  layout->addLayout(top);
  layout->addWidget(MakeGroup("Time Info"));
  QGroupBox* location = MakeGroup("Location");
  AddStack(*static_cast<QGridLayout*>(location->layout()));
  layout->addWidget(location);
  layout->addWidget(MakeText(), 1);
  layout->addLayout(MakeButtons());
}

// The group's values beside their captions.
QGroupBox* TraceDetailFace::MakeGroup(const char* name) {
  auto* group = new QGroupBox(name, this);
  auto* grid = new QGridLayout(group);
  grid->setVerticalSpacing(2);
  int row = 0;
  for (const CTraceDetailDialog::Field& field : CTraceDetailDialog::Fields()) {
    if (std::strcmp(field.group, name) != 0) continue;
    auto* caption = new QLabel(field.caption, group);
    QLineEdit* value = MakeValue(field);
    caption->setBuddy(value);
    grid->addWidget(caption, row, 0);
    grid->addWidget(value, row++, 1);
  }
  grid->setColumnStretch(1, 1);
  grid->setRowStretch(row + 1, 1);
  return group;
}

// A value can be selected and copied, however long it is.
QLineEdit* TraceDetailFace::MakeValue(const CTraceDetailDialog::Field& field) {
  auto* value = new QLineEdit(this);
  value->setObjectName(NameOf(field.id));
  value->setAccessibleName(SpokenName(field.caption));
  value->setReadOnly(true);
  value->setMaxLength(std::numeric_limits<int>::max());
  if (field.id != CTraceDetailDialog::kSource) {
    value->setFrame(false);
    value->setFocusPolicy(Qt::ClickFocus);
    QPalette plain = value->palette();
    plain.setColor(QPalette::Base, Qt::transparent);
    value->setPalette(plain);
  }
  m_values.emplace_back(&field, value);
  return value;
}

void TraceDetailFace::AddStack(QGridLayout& grid) {
  auto* caption = new QLabel("Stack:", grid.parentWidget());
  m_stack = new QComboBox(grid.parentWidget());
  m_stack->setObjectName(NameOf(CTraceDetailDialog::kStack));
  m_stack->setAccessibleName("Stack");
  m_stack->setMaxVisibleItems(kStackLines);
  m_stack->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
  m_stack->setMinimumContentsLength(kStackChars);
  caption->setBuddy(m_stack);
  grid.addWidget(caption, 1, 0);
  grid.addWidget(m_stack, 1, 1);
}

QPlainTextEdit* TraceDetailFace::MakeText() {
  m_text = new QPlainTextEdit(this);
  m_text->setObjectName(NameOf(CTraceDetailDialog::kText));
  m_text->setAccessibleName("Text");
  m_text->setReadOnly(true);
  m_text->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
  m_text->setTabChangesFocus(true);
  m_text->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOn);
  return m_text;
}

QHBoxLayout* TraceDetailFace::MakeButtons() {
  auto* row = new QHBoxLayout;
  row->addStretch(1);
  m_back = MakeButton(CTraceDetailDialog::kBack, "< &Back");
  m_next = MakeButton(CTraceDetailDialog::kNext, "&Next >");
  m_next->setDefault(true);
  QPushButton* cancel = MakeButton(CDialog::kIdCancel, "Cancel");
  QPushButton* help = MakeButton(CTraceDetailDialog::kHelp, "Help");
  for (QPushButton* button : {m_back, m_next, cancel, help}) row->addWidget(button);
  connect(m_back, &QPushButton::clicked, this, [this] {
    Forward([this] { m_dialog.OnBack(); });
    ShowTrace();
  });
  connect(m_next, &QPushButton::clicked, this, [this] {
    Forward([this] { m_dialog.OnNext(); });
    ShowTrace();
  });
  connect(cancel, &QPushButton::clicked, this, &QDialog::reject);
  connect(help, &QPushButton::clicked, this, [this] { AskForHelp(); });
  return row;
}

QPushButton* TraceDetailFace::MakeButton(unsigned id, const char* text) {
  auto* button = new QPushButton(text, this);
  button->setObjectName(NameOf(id));
  button->setAccessibleName(QString(text).remove(QRegularExpression("[&<>]")).trimmed());
  return button;
}

void TraceDetailFace::UpdateData() {
  for (const auto& [field, value] : m_values) {
    const QString text = QString::fromStdString(m_dialog.*(field->value));
    value->setText(text);
    value->setToolTip(PlainToolTip(text));
    value->setCursorPosition(0);
  }
  m_stack->clear();
  for (const std::string& line : m_dialog.m_stack) m_stack->addItem(QString::fromStdString(line));
  m_stack->setEnabled(m_dialog.m_stackEnabled);
  static const QRegularExpression lineEnd("\r+\n");
  m_text->setPlainText(QString::fromStdString(m_dialog.m_text).replace(lineEnd, "\n"));
  m_back->setEnabled(m_dialog.m_hasBack);
  m_next->setEnabled(m_dialog.m_hasNext);
}

// A button that goes grey hands its focus on to the one behind it, and the next Enter would close
// the dialog: the text takes it.
void TraceDetailFace::ShowTrace() {
  const QWidget* const pressed = focusWidget();
  UpdateData();
  if (pressed && !pressed->isEnabled()) m_text->setFocus();
}
