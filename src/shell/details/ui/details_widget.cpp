#include "shell/details/ui/details_widget.h"

#include <QApplication>
#include <QClipboard>
#include <QContextMenuEvent>
#include <QHeaderView>
#include <QLabel>
#include <QMenu>
#include <QPushButton>
#include <QSplitter>
#include <QVBoxLayout>
#include <numeric>

#include "base/text.h"
#include "docview/ui/choice_menu.h"
#include "docview/ui/dialog_parts.h"
#include "docview/ui/hit_color.h"
#include "docview/ui/plain_tool_tip.h"
#include "listview/details/ui/shown_text.h"

namespace {

QString Shown(const std::string& text) {
  return QString::fromStdString(text);
}

}  // namespace

// ---- the fields

DetailFields::DetailFields(DetailsPane& pane) : m_pane(pane) {
  setObjectName(QStringLiteral("detailFields"));
  setAccessibleName(QStringLiteral("Fields"));
  setColumnCount(2);
  setHeaderLabels({QStringLiteral("Field"), QStringLiteral("Value")});
  setHeaderHidden(true);
  setRootIsDecorated(false);
  setUniformRowHeights(true);
  setSelectionMode(QAbstractItemView::ExtendedSelection);
  setFrameShape(QFrame::NoFrame);
  header()->setSectionResizeMode(0, QHeaderView::ResizeToContents);
  header()->setStretchLastSection(true);
  connect(this, &QTreeWidget::itemActivated, this, [this](QTreeWidgetItem* item) {
    m_pane.GotoSource(static_cast<std::size_t>(indexOfTopLevelItem(item)));
  });
}

// The items stay, so that the one that the user looks at stays where it is.
void DetailFields::Update() {
  const auto wanted = static_cast<int>(m_pane.Rows().size());
  while (topLevelItemCount() > wanted) delete takeTopLevelItem(topLevelItemCount() - 1);
  while (topLevelItemCount() < wanted) addTopLevelItem(new QTreeWidgetItem);
  for (std::size_t row = 0; row < m_pane.Rows().size(); ++row) ShowRow(row);
}

void DetailFields::ShowRow(std::size_t row) {
  const DetailRow& from = m_pane.Rows()[row];
  QTreeWidgetItem& item = *topLevelItem(static_cast<int>(row));
  const QString caption = Shown(from.caption), value = Shown(from.value);
  if (item.text(0) != caption) item.setText(0, caption);
  if (item.text(1) == value && from.hint.empty()) return;
  item.setText(1, value);
  item.setToolTip(1, PlainToolTip(from.hint.empty() ? value : Shown(from.hint)));
}

std::vector<std::size_t> DetailFields::Chosen() const {
  std::vector<std::size_t> rows;
  for (int row = 0; row < topLevelItemCount(); ++row)
    if (topLevelItem(row)->isSelected()) rows.push_back(static_cast<std::size_t>(row));
  return rows;
}

std::size_t DetailFields::Current() const {
  return static_cast<std::size_t>(currentIndex().row());
}

void DetailFields::Copy(const std::vector<std::size_t>& rows) const {
  // One value is what the user wants to have elsewhere; of several each needs its name.
  const std::string text =
      rows.size() == 1 ? m_pane.Rows().at(rows.front()).value : m_pane.CopyText(rows);
  if (!text.empty()) QApplication::clipboard()->setText(Shown(text));
}

bool DetailFields::event(QEvent* event) {
  return ClaimsKey(*event) || QTreeWidget::event(event);
}

void DetailFields::keyPressEvent(QKeyEvent* event) {
  if (event->matches(QKeySequence::Copy)) return Copy(Chosen());
  // It would search among the fields, and the window would not get the key.
  if (event->key() == Qt::Key_Escape) return event->ignore();
  QTreeWidget::keyPressEvent(event);
}

void DetailFields::contextMenuEvent(QContextMenuEvent* event) {
  const bool byMouse = event->reason() == QContextMenuEvent::Mouse;
  QTreeWidgetItem* const under =
      byMouse ? itemAt(viewport()->mapFromGlobal(event->globalPos())) : currentItem();
  if (!under) return;
  const QPoint below = viewport()->mapToGlobal(visualItemRect(under).bottomLeft());
  OpenMenu(static_cast<std::size_t>(indexOfTopLevelItem(under)),
           byMouse ? event->globalPos() : below);
}

// The pane may show another trace when the user chooses.
void DetailFields::OpenMenu(std::size_t row, const QPoint& screen) {
  std::vector<MenuChoice> choices = {{"&Copy\tCtrl+C"}, {"Copy &All"}, {}};
  choices.push_back({"&Goto Source", m_pane.HasSource(row)});
  std::vector<std::string> steps;
  for (const CellStep& step : m_pane.StepsOf(row)) {
    choices.push_back({step.label});
    steps.push_back(step.text);
  }
  OpenChoiceMenu(this, choices, screen, [this, row, steps](std::size_t place) {
    constexpr std::size_t kCopy = 0, kCopyAll = 1, kSource = 3, kSteps = 4;
    if (place == kCopy) Copy(Chosen());
    if (place == kCopyAll) CopyAll();
    if (place == kSource) return m_pane.GotoSource(row);
    if (place >= kSteps) m_pane.TakeStep(steps[place - kSteps]);
  });
}

void DetailFields::CopyAll() const {
  std::vector<std::size_t> all(m_pane.Rows().size());
  std::iota(all.begin(), all.end(), std::size_t{0});
  Copy(all);
}

// ---- the text

DetailText::DetailText(DetailsPane& pane) : m_pane(pane) {
  setObjectName(QStringLiteral("detailText"));
  setAccessibleName(QStringLiteral("Text"));
  setReadOnly(true);
  setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
  setTabChangesFocus(true);
  setFrameShape(QFrame::NoFrame);
}

// A text that cannot be edited claims no keys by itself.
bool DetailText::event(QEvent* event) {
  return ClaimsKey(*event) || QPlainTextEdit::event(event);
}

void DetailText::contextMenuEvent(QContextMenuEvent* event) {
  QMenu* const menu = createStandardContextMenu();
  menu->setAttribute(Qt::WA_DeleteOnClose);
  if (m_pane.Body().HasJson()) {
    menu->addSeparator();
    QAction* const pretty = menu->addAction(QStringLiteral("Pretty &JSON"));
    pretty->setCheckable(true);
    pretty->setChecked(m_pane.Body().IsPretty());
    connect(pretty, &QAction::toggled, this, [this](bool on) { m_pane.SetPretty(on); });
  }
  const bool byMouse = event->reason() == QContextMenuEvent::Mouse;
  menu->popup(byMouse ? event->globalPos() : viewport()->mapToGlobal(cursorRect().bottomLeft()));
}

void DetailText::ShowText() {
  const std::string text(m_pane.Body().Shown());
  const class ShownText shown(text);
  setPlainText(shown.Text());
  QList<QTextEdit::ExtraSelection> tinted;
  for (const HitRange& hit : shown.PlacesOf(m_pane.Body().Hits())) {
    QTextEdit::ExtraSelection tint;
    tint.cursor = QTextCursor(document());
    tint.cursor.setPosition(static_cast<int>(hit.begin));
    tint.cursor.setPosition(static_cast<int>(hit.end), QTextCursor::KeepAnchor);
    tint.format.setBackground(HitColor(palette()));
    tinted.append(tint);
  }
  setExtraSelections(tinted);
}

// ---- the pane

QtDetails::QtDetails(DetailsPane& pane)
    : m_pane(pane),
      m_message(MakePlainLabel({}, this)),
      m_split(new QSplitter(Qt::Horizontal, this)),
      m_fields(new DetailFields(pane)),
      m_text(new DetailText(pane)),
      m_all(new QPushButton(this)),
      m_pretty(new QPushButton(QStringLiteral("Pretty &JSON"), this)) {
  setObjectName(QStringLiteral("details"));
  setAccessibleName(QStringLiteral("Details"));
  setFocusProxy(m_fields);
  m_message->setObjectName(QStringLiteral("detailMessage"));
  m_message->setContentsMargins(6, 3, 6, 3);
  m_message->setWordWrap(true);
  // In the order of the key Tab.
  m_split->addWidget(m_fields);
  auto* const right = new QWidget;
  auto* const column = new QVBoxLayout(right);
  column->setContentsMargins(0, 0, 0, 0);
  column->setSpacing(0);
  column->addWidget(m_text, 1);
  column->addLayout(MakeButtons());
  m_split->addWidget(right);
  m_split->setStretchFactor(0, 2);
  m_split->setStretchFactor(1, 3);
  auto* const layout = new QVBoxLayout(this);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->setSpacing(0);
  layout->addWidget(m_message);
  layout->addWidget(m_split, 1);
}

QLayout* QtDetails::MakeButtons() {
  m_all->setObjectName(QStringLiteral("detailAll"));
  m_all->hide();
  m_pretty->setObjectName(QStringLiteral("detailPretty"));
  m_pretty->setCheckable(true);
  m_pretty->hide();
  connect(m_pretty, &QPushButton::toggled, this, [this](bool on) { m_pane.SetPretty(on); });
  connect(m_all, &QPushButton::clicked, this, [this] {
    m_pane.ShowAll();
    m_text->setFocus();
  });
  auto* const buttons = new QHBoxLayout;
  buttons->addWidget(m_pretty);
  buttons->addWidget(m_all, 1);
  return buttons;
}

void QtDetails::SetFocus() {
  if (!m_fields->currentItem() && m_fields->topLevelItemCount() > 0)
    m_fields->setCurrentItem(m_fields->topLevelItem(0), 0, QItemSelectionModel::NoUpdate);
  m_fields->setFocus(Qt::OtherFocusReason);
}

void QtDetails::Update() {
  const QString message = Shown(m_pane.Message());
  m_message->setText(message);
  m_message->setVisible(!message.isEmpty());
  m_fields->Update();
  m_text->ShowText();
  const DetailBody& body = m_pane.Body();
  m_pretty->setVisible(body.HasJson());
  m_pretty->setChecked(body.IsPretty());
  const std::size_t hidden = body.HiddenBytes();
  if (hidden > 0) m_all->setText(Shown("Show &All (" + GroupDigits(hidden) + " More Bytes)"));
  m_all->setVisible(hidden > 0);
}

void QtDetails::resizeEvent(QResizeEvent* event) {
  QWidget::resizeEvent(event);
  const auto wanted = width() > height() ? Qt::Horizontal : Qt::Vertical;
  if (m_split->orientation() != wanted) m_split->setOrientation(wanted);
}
