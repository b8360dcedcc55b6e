#include "shell/help/ui/help_search.h"

#include <QFile>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QTextDocument>
#include <algorithm>

#include "docview/ui/hit_color.h"

namespace {

constexpr int kFieldLetters = 22;
constexpr int kFieldLettersLeast = 6;  // on a small screen

QString TopicOf(const QTextBrowser& pages) {
  return pages.source().fileName().section(u'.', 0, 0);
}

// Cut in the same way as in the browser, so that positions in both are equal.
QString TextOf(const QString& topic) {
  QFile file(QStringLiteral(":/help/%1.md").arg(topic));
  if (!file.open(QIODevice::ReadOnly)) return {};
  QTextDocument page;
  page.setMarkdown(QString::fromUtf8(file.readAll()));
  QTextCursor all(&page);
  all.select(QTextCursor::Document);
  return all.selectedText();
}

}  // namespace

HelpSearch::HelpSearch(QTextBrowser& pages, const QStringList& topics,
                       std::function<void(const QString&)> show, QWidget* parent)
    : QWidget(parent),
      m_pages(pages),
      m_topics(topics),
      m_show(std::move(show)),
      m_field(new QLineEdit(this)),
      m_said(new QLabel(this)) {
  m_field->setPlaceholderText(tr("Search (Ctrl+F)"));
  m_field->setAccessibleName(tr("Search the help"));
  m_field->setClearButtonEnabled(true);
  const int letter = m_field->fontMetrics().averageCharWidth();
  m_field->setMinimumWidth(letter * kFieldLettersLeast);
  m_field->setMaximumWidth(letter * kFieldLetters);
  m_said->setAccessibleDescription(tr("Hits"));
  auto* const row = new QHBoxLayout(this);
  row->setContentsMargins(0, 0, 6, 0);
  row->addStretch(1);
  row->addWidget(m_said);
  row->addWidget(m_field, kFieldLetters);  // its maximum length; the stretch takes the rest
  connect(m_field, &QLineEdit::textChanged, this, [this] { Search(); });
  connect(&m_pages, &QTextBrowser::sourceChanged, this, [this] { OnOtherPage(); });
}

void HelpSearch::Begin() {
  m_field->setFocus();
  m_field->selectAll();
}

void HelpSearch::Search() {
  Collect();
  if (!m_hits.empty()) m_current = 0;
  ShowHit();
}

// Begins with the shown page.
void HelpSearch::Collect() {
  const QString wanted = m_field->text().trimmed();
  m_hits.clear();
  m_current.reset();
  QStringList topics = m_topics;
  const auto here = static_cast<int>(topics.indexOf(TopicOf(m_pages)));
  if (here > 0) std::rotate(topics.begin(), topics.begin() + here, topics.end());
  for (const QString& topic : wanted.isEmpty() ? QStringList() : topics) {
    const QString text = TextOf(topic);
    for (auto at = text.indexOf(wanted, 0, Qt::CaseInsensitive); at >= 0;
         at = text.indexOf(wanted, at + wanted.size(), Qt::CaseInsensitive))
      m_hits.push_back({topic, static_cast<int>(at)});
  }
}

void HelpSearch::OnOtherPage() {
  if (m_showing) return;
  Collect();
  ShowStatus();
  MarkHits(TopicOf(m_pages));
}

void HelpSearch::Step(int by) {
  if (m_hits.empty()) return;
  const auto count = static_cast<int>(m_hits.size());
  const int before = m_current ? static_cast<int>(*m_current) : by > 0 ? -1 : count;
  m_current = static_cast<std::size_t>((before + by + count) % count);
  ShowHit();
}

void HelpSearch::ShowStatus() {
  if (m_hits.empty())
    m_said->setText(m_field->text().trimmed().isEmpty() ? QString() : tr("not found"));
  else if (m_current)
    m_said->setText(tr("%1 of %2").arg(*m_current + 1).arg(m_hits.size()));
  else
    m_said->setText(tr("%1 found").arg(m_hits.size()));
}

void HelpSearch::ShowHit() {
  ShowStatus();
  if (!m_current) {
    m_pages.setExtraSelections({});
    return;
  }
  const Hit& hit = m_hits[*m_current];
  m_showing = true;
  if (TopicOf(m_pages) != hit.topic) m_show(hit.topic);
  m_showing = false;
  QTextCursor found(m_pages.document());
  found.setPosition(hit.position);
  found.setPosition(hit.position + static_cast<int>(m_field->text().trimmed().size()),
                    QTextCursor::KeepAnchor);
  m_pages.setTextCursor(found);
  MarkHits(hit.topic);
}

// Marks all hits of the page besides the selected one.
void HelpSearch::MarkHits(const QString& topic) {
  QList<QTextEdit::ExtraSelection> marks;
  for (const Hit& hit : m_hits) {
    if (hit.topic != topic) continue;
    QTextEdit::ExtraSelection mark;
    mark.cursor = QTextCursor(m_pages.document());
    mark.cursor.setPosition(hit.position);
    mark.cursor.setPosition(hit.position + static_cast<int>(m_field->text().trimmed().size()),
                            QTextCursor::KeepAnchor);
    mark.format.setBackground(HitColor(m_pages.palette()));
    marks << mark;
  }
  m_pages.setExtraSelections(marks);
}

void HelpSearch::keyPressEvent(QKeyEvent* event) {
  if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter)
    Step(event->modifiers() & Qt::ShiftModifier ? -1 : 1);
  else
    QWidget::keyPressEvent(event);
}
