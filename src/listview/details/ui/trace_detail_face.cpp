#include "listview/details/ui/trace_detail_face.h"

#include <QComboBox>
#include <QContextMenuEvent>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTextEdit>
#include <QVBoxLayout>
#include <algorithm>
#include <cstring>
#include <limits>
#include <utility>

#include "docview/ui/dialog_parts.h"
#include "docview/ui/hit_color.h"
#include "docview/ui/plain_tool_tip.h"
#include "listview/details/ui/shown_text.h"

namespace {

constexpr int kWidthChars = 84;                     // at least
constexpr int kLinesMin = 5, kLinesMax = 20;        // of the text, at the start
constexpr int kValueChars = 44, kSourceChars = 92;  // a longer value is scrolled in its field
constexpr int kValueEdgesPx = 14;
constexpr int kMeasuredMax = 8192;  // letters: as many fill any window
constexpr int kStackLines = 20;     // shown at once when the list is open
constexpr int kStackChars = 20;     // the width that the list wants at least

}  // namespace

TraceDetailFace::TraceDetailFace(CTraceDetailDialog& dialog, QWidget* parent)
    : QtDialogFace(dialog, parent), m_dialog(dialog) {
  setWindowTitle(CTraceDetailDialog::kCaption);
  setObjectName("properties");
  setSizeGripEnabled(true);
  auto* top = new QHBoxLayout;
  top->addWidget(MakeGroup("Trace Info"), 1);
  QGroupBox* process = MakeGroup("Process Info");
  m_process = static_cast<QGridLayout*>(process->layout());
  top->addWidget(process, 1);
  auto* layout = new QVBoxLayout(this);
  layout->addLayout(top);
  layout->addWidget(MakeGroup("Time Info"));
  QGroupBox* location = MakeGroup("Location");
  AddStack(*static_cast<QGridLayout*>(location->layout()));
  layout->addWidget(location);
  layout->addWidget(MakeText(), 1);
  layout->addLayout(MakeButtons());
  m_dialog.m_whenNamed = [this] { ShowStack(); };
}

TraceDetailFace::~TraceDetailFace() {
  m_dialog.m_whenNamed = nullptr;
}

// The group's values beside their captions.
QGroupBox* TraceDetailFace::MakeGroup(const char* name) {
  auto* group = new QGroupBox(name, this);
  auto* grid = new QGridLayout(group);
  grid->setVerticalSpacing(2);
  int row = 0;
  for (const CTraceDetailDialog::Field& field : CTraceDetailDialog::Fields()) {
    if (std::strcmp(field.group, name) == 0) AddField(*grid, row++, field);
  }
  grid->setColumnStretch(1, 1);
  grid->setRowStretch(row + 1, 1);
  return group;
}

void TraceDetailFace::AddField(QGridLayout& grid, int row, const CTraceDetailDialog::Field& field) {
  auto* caption = new QLabel(field.caption, grid.parentWidget());
  QLineEdit* value = MakeValue(field);
  caption->setBuddy(value);
  grid.addWidget(caption, row, 0);
  grid.addWidget(value, row, 1);
}

// A field whose value can be selected and copied, however long it is.
QLineEdit* TraceDetailFace::MakeValue(const CTraceDetailDialog::Field& field) {
  auto* value = new QLineEdit(this);
  NameControl(*value, field.id, field.caption);
  // Otherwise the description would be the tool tip with its markup.
  value->setAccessibleDescription(QString::fromLatin1(field.group));
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
  NameControl(*m_stack, CTraceDetailDialog::kStack, caption->text());
  m_stack->setMaxVisibleItems(kStackLines);
  m_stack->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
  m_stack->setMinimumContentsLength(kStackChars);
  m_stack->installEventFilter(this);
  caption->setBuddy(m_stack);
  grid.addWidget(caption, 1, 0);
  grid.addWidget(m_stack, 1, 1);
}

QPlainTextEdit* TraceDetailFace::MakeText() {
  m_text = new QPlainTextEdit(this);
  NameControl(*m_text, CTraceDetailDialog::kText, "Text");
  m_text->setReadOnly(true);
  m_text->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
  m_text->setTabChangesFocus(true);
  m_text->setMinimumHeight(fontMetrics().lineSpacing() * kLinesMin);
  m_text->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOn);
  return m_text;
}

QHBoxLayout* TraceDetailFace::MakeButtons() {
  auto* row = new QHBoxLayout;
  row->addStretch(1);
  m_back = MakeButton(CTraceDetailDialog::kBack, "< &Back", this);
  m_next = MakeButton(CTraceDetailDialog::kNext, "&Next >", this);
  m_next->setDefault(true);
  QPushButton* cancel = MakeButton(CDialog::kIdCancel, "Cancel", this);
  QPushButton* help = MakeButton(kHelpButton, "Help", this);
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

// Most traces have none, and their window has no such row.
void TraceDetailFace::ShowAccount() {
  const bool has = !m_dialog.m_account.empty();
  if (has && m_accountRow == 0) {
    m_accountRow = m_process->count() / 2;  // below the others, each with its caption
    AddField(*m_process, m_accountRow, CTraceDetailDialog::AccountField());
  }
  if (m_accountRow == 0) return;
  for (const int column : {0, 1})
    m_process->itemAtPosition(m_accountRow, column)->widget()->setVisible(has);
}

void TraceDetailFace::UpdateData() {
  ShowAccount();
  for (const auto& [field, value] : m_values) {
    const QString text = QString::fromStdString(m_dialog.*(field->value));
    value->setText(text);
    value->setToolTip(PlainToolTip(text));
    value->setCursorPosition(0);
    Widen(*value, field->id == CTraceDetailDialog::kSource ? kSourceChars : kValueChars);
  }
  ShowStack();
  ShowText();
  m_back->setEnabled(m_dialog.m_hasBack);
  m_next->setEnabled(m_dialog.m_hasNext);
  if (!std::exchange(m_sized, true)) SizeByContent();
}

// Fields grow with their values and never shrink, so that the window does not change with each
// trace.
void TraceDetailFace::Widen(QLineEdit& value, int mostChars) {
  const QFontMetrics metrics = value.fontMetrics();
  const int wantedPx = std::min(metrics.horizontalAdvance(value.text()) + kValueEdgesPx,
                                metrics.averageCharWidth() * mostChars);
  value.setMinimumWidth(std::max(value.minimumWidth(), wantedPx));
}

void TraceDetailFace::ShowStack() {
  m_stack->clear();
  m_stack->setEnabled(m_dialog.m_stackEnabled);
  if (m_dialog.m_stackNames.frames.empty()) {
    for (const std::string& line : m_dialog.m_stack) m_stack->addItem(QString::fromStdString(line));
    return;
  }
  const auto add = [this](const std::string& text, const std::string& tip) {
    m_stack->addItem(QString::fromStdString(text));
    m_stack->setItemData(m_stack->count() - 1, PlainToolTip(QString::fromStdString(tip)),
                         Qt::ToolTipRole);
  };
  for (const NamedFrame& frame : m_dialog.m_stackNames.frames) add(frame.text, frame.recorded);
  for (const std::string& missing : m_dialog.m_stackNames.missing)
    add("(" + missing + ")", missing);
}

bool TraceDetailFace::GotoSource() {
  bool found = false;
  Forward([&] {
    found = m_stack->currentIndex() >= 0 &&
            m_dialog.OnGotoFrame(static_cast<std::size_t>(m_stack->currentIndex()));
  });
  return found;
}

void TraceDetailFace::OfferSource(const QPoint& at) {
  QMenu menu(this);
  const QAction* const action =
      menu.addAction("&Goto Source", QKeySequence(Qt::CTRL | Qt::Key_G), this, [] {});
  menu.actions().front()->setEnabled(
      m_dialog.HasSource(static_cast<std::size_t>(std::max(m_stack->currentIndex(), 0))));
  if (menu.exec(at) == action) GotoSource();
}

// Where the source is not known, Enter stays that of the default button. The list that drops down
// has keys of its own.
bool TraceDetailFace::eventFilter(QObject* object, QEvent* event) {
  if (event->type() == QEvent::ContextMenu) {
    OfferSource(static_cast<QContextMenuEvent*>(event)->globalPos());
    return true;
  }
  if (event->type() == QEvent::KeyPress) {
    const auto& key = static_cast<const QKeyEvent&>(*event);
    const bool enter = key.key() == Qt::Key_Return || key.key() == Qt::Key_Enter;
    const bool go = key.key() == Qt::Key_G && key.modifiers() == Qt::ControlModifier;
    if ((enter || go) && GotoSource()) return true;
  }
  return QtDialogFace::eventFilter(object, event);
}

void TraceDetailFace::ShowText() {
  const ShownText shown(m_dialog.m_text);
  m_text->setPlainText(shown.Text());
  QList<QTextEdit::ExtraSelection> tinted;
  for (const HitRange& hit : shown.PlacesOf(m_dialog.m_hits)) {
    QTextEdit::ExtraSelection tint;
    tint.cursor = QTextCursor(m_text->document());
    tint.cursor.setPosition(static_cast<int>(hit.begin));
    tint.cursor.setPosition(static_cast<int>(hit.end), QTextCursor::KeepAnchor);
    tint.format.setBackground(HitColor(m_text->palette()));
    tinted.append(tint);
  }
  m_text->setExtraSelections(tinted);
}

// The text gets the lines that it needs, within limits; the rest of the window gets what it needs.
void TraceDetailFace::SizeByContent() {
  const QFontMetrics metrics = fontMetrics();
  const QSize least = layout()->minimumSize();
  const int widthPx = std::max(least.width(), metrics.averageCharWidth() * kWidthChars);
  const QRect room(0, 0, widthPx - 4 * metrics.averageCharWidth(), metrics.lineSpacing() * 100);
  const int linesPx = metrics
                          .boundingRect(room, Qt::TextWrapAnywhere | Qt::TextExpandTabs,
                                        m_text->toPlainText().left(kMeasuredMax))
                          .height() +
                      metrics.lineSpacing();
  const int morePx = std::min(linesPx, metrics.lineSpacing() * kLinesMax) - m_text->minimumHeight();
  resize(widthPx, least.height() + std::max(morePx, 0));
}

// When a button becomes disabled the focus moves to the next one, and the next Enter would close
// the dialog. So the text gets the focus.
void TraceDetailFace::ShowTrace() {
  const QWidget* const pressed = focusWidget();
  UpdateData();
  if (pressed && !pressed->isEnabled()) m_text->setFocus();
}
