#include "listview/source/ui/rich_edit_widget.h"

#include <QContextMenuEvent>
#include <QDragEnterEvent>
#include <QFontDatabase>
#include <QMenu>
#include <QScopedValueRollback>
#include <QScrollBar>
#include <QTextBlock>

#include "docview/ui/dropped_files.h"
#include "listview/source/ui/line_margin.h"

namespace {

constexpr int kCaretPx = 2;  // wide, because only the caret shows the line

QFont FixedFont(const QString& face, const QFont& sized) {
  QFont font = QFontDatabase::hasFamily(face) ? QFont(face)
                                              : QFontDatabase::systemFont(QFontDatabase::FixedFont);
  font.setPointSizeF(sized.pointSizeF());
  font.setFixedPitch(true);
  font.setStyleHint(QFont::Monospace);
  font.setWeight(QFont::Normal);
  font.setItalic(false);
  return font;
}

}  // namespace

QtRichEdit::QtRichEdit(RichEditOwner& owner, QWidget* parent)
    : QPlainTextEdit(parent), m_margin(new LineMargin(*this)) {
  setFrameShape(QFrame::NoFrame);
  setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOn);
  setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOn);
  setCursorWidth(kCaretPx);
  setAccessibleName(tr("Source"));
  connect(document(), &QTextDocument::modificationChanged, this, [this, &owner](bool modified) {
    if (!m_settingText) owner.OnEditModified(modified);
  });
  for (const QScrollBar* bar : {verticalScrollBar(), horizontalScrollBar()})
    connect(bar, &QScrollBar::actionTriggered, this, [this] { m_keepCentred = false; });
  connect(this, &QPlainTextEdit::blockCountChanged, this, [this] { PlaceMargin(); });
  connect(this, &QPlainTextEdit::updateRequest, m_margin, [this] { m_margin->update(); });
  connect(this, &QPlainTextEdit::cursorPositionChanged, this, [this] { MarkLine(-1); });
  PlaceMargin();
}

void QtRichEdit::SetFormat(const RichEditFormat& format) {
  setFont(FixedFont(QString::fromStdString(format.face), font()));
  setTabStopDistance(format.tabCells * QFontMetricsF(font()).horizontalAdvance(QLatin1Char(' ')));
  setLineWrapMode(format.wrap ? WidgetWidth : NoWrap);
  PlaceMargin();
}

void QtRichEdit::SetText(const std::string& text) {
  // Qt would take it for an edit that is saved immediately.
  const QScopedValueRollback setting(m_settingText, true);
  setPlainText(QString::fromStdString(text));
}

// Line by line, because the document's own plain text replaces fixed blanks by blanks.
std::string QtRichEdit::GetText() const {
  std::string text;
  for (QTextBlock line = document()->begin(); line.isValid(); line = line.next()) {
    if (line.blockNumber() > 0) text += '\n';
    text += line.text().toStdString();
  }
  return text;
}

int QtRichEdit::LineIndex(int line) const {
  if (line == -1) return textCursor().block().position();
  const QTextBlock block = document()->findBlockByNumber(line);
  return block.isValid() ? block.position() : -1;
}

void QtRichEdit::SetSel(int from, int to) {
  QTextCursor cursor = textCursor();
  const int last = document()->characterCount() - 1;
  if (from == -1) {
    cursor.clearSelection();
  } else {
    cursor.setPosition(std::min(from, last));
    cursor.setPosition(std::min(to, last), QTextCursor::KeepAnchor);
  }
  GoTo(cursor);
}

void QtRichEdit::MarkLine(int line) {
  m_markedLine = line;
  m_margin->update();
}

std::vector<QtRichEdit::ShownLine> QtRichEdit::ShownLines() const {
  std::vector<ShownLine> lines;
  QTextBlock block = firstVisibleBlock();
  QRectF place = blockBoundingGeometry(block).translated(contentOffset());
  while (block.isValid() && place.top() <= viewport()->height()) {
    if (block.isVisible()) lines.push_back({block.blockNumber(), place.toAlignedRect()});
    block = block.next();
    place = QRectF(place.bottomLeft(), blockBoundingRect(block).size());
  }
  return lines;
}

void QtRichEdit::PlaceMargin() {
  const int widthPx = m_margin->WidthFor(blockCount());
  setViewportMargins(widthPx, 0, 0, 0);
  const QRect room = contentsRect();
  m_margin->setGeometry(room.left(), room.top(), widthPx, viewport()->height());
  m_margin->update();
}

// A distant position is scrolled to the middle, so that its context is visible.
void QtRichEdit::GoTo(const QTextCursor& cursor) {
  m_keepCentred = !isVisible() || !viewport()->rect().contains(cursorRect(cursor));
  setTextCursor(cursor);
  if (m_keepCentred) centerCursor();
}

std::string QtRichEdit::GetSelText() const {
  return textCursor().selectedText().replace(QChar::ParagraphSeparator, u'\n').toStdString();
}

bool QtRichEdit::FindText(const RichEditFind& find) {
  QTextDocument::FindFlags flags;
  flags.setFlag(QTextDocument::FindCaseSensitively, find.matchCase);
  flags.setFlag(QTextDocument::FindWholeWords, find.wholeWord);
  const QString text = QString::fromStdString(find.text);
  QTextCursor hit = document()->find(text, textCursor(), flags);
  if (hit.isNull()) hit = document()->find(text, 0, flags);
  if (hit.isNull()) return false;
  GoTo(hit);
  return true;
}

void QtRichEdit::resizeEvent(QResizeEvent* event) {
  QPlainTextEdit::resizeEvent(event);
  PlaceMargin();
  if (m_keepCentred) centerCursor();
}

void QtRichEdit::keyPressEvent(QKeyEvent* event) {
  m_keepCentred = false;
  if (event->matches(QKeySequence::InsertLineSeparator)) return EndLine();
  QPlainTextEdit::keyPressEvent(event);
}

// Qt has a character of its own for this key, which ends no line of a file.
void QtRichEdit::EndLine() {
  QKeyEvent plain(QEvent::KeyPress, Qt::Key_Return, Qt::NoModifier, QStringLiteral("\r"));
  QPlainTextEdit::keyPressEvent(&plain);
}

void QtRichEdit::mousePressEvent(QMouseEvent* event) {
  m_keepCentred = false;
  QPlainTextEdit::mousePressEvent(event);
}

// The usual menu without its keys, because some of them are commands of the main window. It has no
// loop of its own: the program may be closed while it is up, and the control goes with its menu.
void QtRichEdit::contextMenuEvent(QContextMenuEvent* event) {
  QMenu* const menu = createStandardContextMenu(event->pos());
  for (QAction* action : menu->actions()) {
    action->setText(action->text().section(QLatin1Char('\t'), 0, 0));
    action->setShortcut(QKeySequence());
  }
  menu->setAttribute(Qt::WA_DeleteOnClose);
  menu->popup(event->globalPos());
}

// Files are for the main window, which opens them. Other text is inserted.
void QtRichEdit::dragEnterEvent(QDragEnterEvent* event) {
  if (DroppedFiles(*event->mimeData()).empty())
    QPlainTextEdit::dragEnterEvent(event);
  else
    event->ignore();
}
