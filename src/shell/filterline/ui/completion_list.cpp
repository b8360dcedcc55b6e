#include "shell/filterline/ui/completion_list.h"

#include <QScrollBar>
#include <algorithm>

#include "base/text.h"

namespace {

constexpr int kRows = 10, kNarrowestChars = 24, kWidestChars = 72;

QString Readable(const std::string& text) {
  return QString::fromStdString(ReplaceMalformed(text));
}

QString LabelOf(const WhereCompletion& completion) {
  QString label = Readable(completion.insert);
  if (!completion.note.empty()) label += QStringLiteral("   ") + Readable(completion.note);
  return label;
}

}  // namespace

CompletionList::CompletionList(QWidget& window) : QListWidget(&window) {
  setObjectName(QStringLiteral("completions"));
  setAccessibleName(QStringLiteral("Completions"));
  setFocusPolicy(Qt::NoFocus);
  setUniformItemSizes(true);
  setTextElideMode(Qt::ElideRight);
  setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
  setFrameShape(QFrame::Box);
  connect(this, &QListWidget::itemClicked, this, [this] {
    if (m_onClicked) m_onClicked();
  });
  hide();
}

void CompletionList::Offer(std::vector<WhereCompletion> completions, const QPoint& below) {
  m_completions = std::move(completions);
  clear();
  if (m_completions.empty()) return hide();
  int widest = fontMetrics().averageCharWidth() * kNarrowestChars;
  for (const WhereCompletion& completion : m_completions) {
    const QString label = LabelOf(completion);
    addItem(label);
    widest = std::max(widest, fontMetrics().horizontalAdvance(label));
  }
  setCurrentRow(-1);
  const QWidget& window = *parentWidget();
  const int frame = 2 * frameWidth();
  const int width = std::min({widest + fontMetrics().averageCharWidth() * 4 +
                                  verticalScrollBar()->sizeHint().width() + frame,
                              fontMetrics().averageCharWidth() * kWidestChars, window.width()});
  const int rows = std::min(count(), kRows);
  const int height = std::min(rows * sizeHintForRow(0) + frame, window.height() - below.y());
  setGeometry(std::clamp(below.x(), 0, window.width() - width), below.y(), width, height);
  scrollToTop();
  raise();
  show();
}

const WhereCompletion& CompletionList::Chosen() const {
  return m_completions[static_cast<std::size_t>(std::max(currentRow(), 0))];
}

void CompletionList::Move(int rows) {
  setCurrentRow(std::clamp(currentRow() + rows, 0, count() - 1));
}
