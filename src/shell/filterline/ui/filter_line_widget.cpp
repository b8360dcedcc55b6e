#include "shell/filterline/ui/filter_line_widget.h"

#include <QGridLayout>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QScopedValueRollback>
#include <QThread>
#include <algorithm>

#include "base/text.h"
#include "docview/ui/plain_tool_tip.h"

namespace {

QString Shown(const std::string& text) {
  return QString::fromStdString(ReplaceMalformed(text));
}

int CharactersIn(const std::string& text, std::size_t bytes) {
  return static_cast<int>(QString::fromStdString(text.substr(0, bytes)).size());
}

std::size_t BytesIn(const QString& text, int characters) {
  return static_cast<std::size_t>(text.left(characters).toUtf8().size());
}

}  // namespace

FilterLineWidget::FilterLineWidget(FilterLine& line)
    : m_line(&line),
      m_edit(new FilterEdit(this)),
      m_filters(new FilterMenu(line, this)),
      m_message(new QLabel(this)),
      m_bar(new QProgressBar(this)),
      m_stop(new QToolButton(this)) {
  setObjectName(QStringLiteral("filter line"));
  auto* label = new QLabel(QStringLiteral("Filter text:"), this);
  label->setBuddy(m_edit);
  m_edit->setObjectName(QStringLiteral("filter text"));
  m_edit->setAccessibleName(QStringLiteral("Filter text"));
  m_message->setTextFormat(Qt::PlainText);
  m_message->setIndent(0);
  // A long reason is cut; it must not widen the window.
  m_message->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
  auto* grid = new QGridLayout(this);
  const int gap = fontMetrics().averageCharWidth();
  grid->setContentsMargins(gap, gap / 2, gap, gap / 2);
  grid->setHorizontalSpacing(gap);
  grid->setVerticalSpacing(gap / 4);
  grid->addWidget(label, 0, 0);
  grid->addWidget(m_edit, 0, 1);
  grid->addWidget(m_filters, 0, 2);
  grid->addLayout(MakeMessageRow(), 1, 1, 1, 2);
  grid->setColumnStretch(1, 1);
  setFocusProxy(m_edit);
  m_edit->m_onKey = [this](const QKeyEvent& key) {
    const QScopedValueRollback inKey(m_inKey, true);
    return m_line && OnKey(key);
  };
  m_edit->m_onLeft = [this] { CloseList(); };
  connect(m_edit, &QLineEdit::textEdited, this, [this] { OnTyped(); });
  Update();
}

FilterLineWidget::~FilterLineWidget() {
  delete m_list;
}

void FilterLineWidget::Detach() {
  m_line = nullptr;
  m_filters->Detach();
  delete m_list;
}

void FilterLineWidget::Update() {
  if (!m_line || m_updating) return;
  const QScopedValueRollback updating(m_updating, true);
  const QString text = QString::fromStdString(m_line->Text());
  if (m_edit->text() != text) m_edit->setText(text);
  ShowState();
}

// Behind the message and no higher than it, so that the rows below do not move.
QLayout* FilterLineWidget::MakeMessageRow() {
  const int height = fontMetrics().height();
  m_bar->setObjectName(QStringLiteral("filter progress"));
  m_bar->setAccessibleName(QStringLiteral("Filter progress"));
  m_bar->setTextVisible(false);
  m_bar->setFixedSize(fontMetrics().averageCharWidth() * 20, height / 2);
  m_stop->setObjectName(QStringLiteral("stop filter"));
  m_stop->setText(QStringLiteral("Stop"));
  m_stop->setAutoRaise(true);
  m_stop->setFixedHeight(height);
  m_stop->setFocusPolicy(Qt::NoFocus);
  connect(m_stop, &QToolButton::clicked, this, [this] {
    if (m_line) m_line->Stop();
  });
  auto* row = new QHBoxLayout;
  row->setSpacing(fontMetrics().averageCharWidth());
  row->addWidget(m_message, 1);
  row->addWidget(m_bar, 0, Qt::AlignVCenter);
  row->addWidget(m_stop);
  return row;
}

void FilterLineWidget::ShowProgress() {
  const std::optional<int> percent = m_line->Percent();
  if (percent) m_bar->setValue(*percent);
  m_bar->setVisible(percent.has_value());
  m_stop->setVisible(percent.has_value());
}

void FilterLineWidget::ShowState() {
  ShowProgress();
  const QString message = Shown(m_line->Message());
  m_message->setText(message);
  SetPlainToolTip(*m_message, message);
  const FilterLine::State state = m_line->GetState();
  SetPlainToolTip(*m_edit, message);
  // The text that is not in force is in another frame than the one that is.
  QFont font = m_message->font();
  font.setBold(state == FilterLine::State::Edited);
  m_message->setFont(font);
  const auto& error = m_line->Error();
  QPalette colors = palette();
  // Colours of high contrast may have a dark window with light edits.
  if (error)
    colors.setColor(QPalette::WindowText, FilterEdit::ErrorColor(colors.color(QPalette::Window)));
  m_message->setPalette(colors);
  if (!error) return m_edit->Underline(0, 0);
  const std::string& all = m_line->Text();
  int from = CharactersIn(all, error->place);
  int length = CharactersIn(all, error->place + error->length) - from;
  // What is missing at the end is shown at the last character.
  if (length == 0 && from > 0) {
    --from;
    length = 1;
  }
  m_edit->Underline(from, length);
}

// The underline has the colour of the palette.
void FilterLineWidget::changeEvent(QEvent* event) {
  QWidget::changeEvent(event);
  if (event->type() == QEvent::PaletteChange && m_line) ShowState();
}

void FilterLineWidget::OnTyped() {
  if (!m_line) return;
  m_line->Edit(m_edit->text().toStdString());
  Offer();
}

// ---- keys

bool FilterLineWidget::OnKey(const QKeyEvent& key) {
  if (IsListOpen() && OnListKey(key)) return true;
  switch (key.key()) {
    case Qt::Key_Escape:
      m_line->Escape();
      return true;
    case Qt::Key_Return:
    case Qt::Key_Enter:
      CloseList();
      m_line->Apply();
      return true;
    case Qt::Key_Up:
      m_line->ShowOlder();
      return true;
    case Qt::Key_Down:
      m_line->ShowNewer();
      return true;
    case Qt::Key_Space:
      if (key.modifiers() != Qt::ControlModifier) return false;
      Offer();
      return true;
    default:
      return false;
  }
}

bool FilterLineWidget::OnListKey(const QKeyEvent& key) {
  switch (key.key()) {
    case Qt::Key_Escape:
      CloseList();
      return true;
    case Qt::Key_Tab:
      TakeCompletion();
      return true;
    case Qt::Key_Return:
    case Qt::Key_Enter:
      // While nothing is selected Enter applies what is typed.
      if (!m_list->HasSelected()) return false;
      TakeCompletion();
      return true;
    case Qt::Key_Up:
      m_list->Move(-1);
      return true;
    case Qt::Key_Down:
      m_list->Move(1);
      return true;
    case Qt::Key_PageUp:
      m_list->Move(-10);
      return true;
    case Qt::Key_PageDown:
      m_list->Move(10);
      return true;
    default:
      return false;
  }
}

// ---- completions

void FilterLineWidget::Offer() {
  if (!m_list) {
    m_list = new CompletionList(*window());
    m_list->m_onClicked = [this] { TakeCompletion(); };
  }
  const std::size_t caret = BytesIn(m_edit->text(), m_edit->cursorPosition());
  // A long text is scrolled when it is painted, and until then its caret stands outside.
  const QPoint below(std::clamp(m_edit->CaretRect().left(), 0, m_edit->width()), m_edit->height());
  m_list->Offer(m_line->CompletionsAt(caret), m_edit->mapTo(window(), below));
}

void FilterLineWidget::TakeCompletion() {
  if (!m_line || !IsListOpen()) return;
  const WhereCompletion chosen = m_list->Chosen();
  const std::size_t caret = m_line->Complete(chosen);
  m_edit->setCursorPosition(CharactersIn(m_line->Text(), caret));
  Offer();
}

void FilterLineWidget::CloseList() {
  if (m_list) m_list->hide();
}

// ---- the face

// It may go while its edit handles a key.
QtFilterLine::~QtFilterLine() {
  if (!m_widget) return;
  m_widget->Detach();
  ReleaseControl(*m_widget);
  if (m_widget->IsInKey() || QThread::currentThread()->loopLevel() > 0)
    m_widget->deleteLater();
  else
    delete m_widget;
}

void QtFilterLine::SetFocus() {
  if (!m_widget) return;
  m_widget->Edit().setFocus(Qt::ShortcutFocusReason);
  m_widget->Edit().selectAll();
}
