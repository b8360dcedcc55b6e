#include "controls/text/ui/line_painter.h"

#include <QPainter>
#include <algorithm>

#include "controls/text/ui/font_runs.h"

namespace {

constexpr int kHitInsetPx = 2;  // above and below a tinted text
constexpr int kAroundHitChars = 4;

// The end of the piece from `begin` that has one look; `hit` is the first hit that ends after
// `begin`.
qsizetype PieceEnd(const QString& text, qsizetype begin, qsizetype runEnd, const LinePart* hit) {
  if (text[begin] == kLineEndMark) return begin + 1;
  qsizetype end = runEnd;
  if (const qsizetype mark = text.indexOf(kLineEndMark, begin); mark != -1)
    end = std::min(end, mark);
  return hit ? std::min(end, begin < hit->first ? hit->first : hit->End()) : end;
}

}  // namespace

CellLayout::CellLayout(const QFontMetrics& metrics, const QRect& room, ColumnAlign align,
                       const QString& whole)
    : m_metrics(metrics), m_room(room), m_text(whole), m_dots(whole.size()), m_left(room.left()) {
  int width = LineWidth(metrics, whole);
  if (width > room.width()) {
    m_text = ElidedLine(metrics, whole, room.width());
    m_dots = m_text.size() - 1;
    width = LineWidth(metrics, m_text);
    if (width > room.width()) m_text.clear();
  }
  if (align == ColumnAlign::Right) m_left += room.width() - width;
  if (align == ColumnAlign::Centre) m_left += (room.width() - width) / 2;
}

std::vector<LinePart> CellLayout::Seen(const std::vector<LinePart>& parts) const {
  std::vector<LinePart> seen;
  for (const LinePart& part : parts) {
    if (part.first < m_dots)
      seen.push_back({part.first, std::min(part.End(), m_dots) - part.first});
    if (part.End() > m_dots && m_dots < m_text.size()) {
      seen.push_back({m_dots, 1});
      break;
    }
  }
  return seen;
}

QRect CellLayout::RectOf(const LinePart& part) const {
  const std::vector<LinePart> seen = Seen({part});
  if (m_text.isEmpty() || seen.empty()) return {};
  const qsizetype first = seen.front().first, end = seen.back().End();
  return QRect(m_left + LineWidth(m_metrics, m_text.left(first)), m_room.top(),
               LineWidth(m_metrics, m_text.mid(first, end - first)), m_room.height());
}

void CellLayout::Paint(QPainter& painter, const RowLook& look,
                       const std::vector<LinePart>& hits) const {
  if (m_text.isEmpty()) return;
  int x = m_left;
  const int y = m_room.top() + (m_room.height() - m_metrics.height()) / 2 + m_metrics.ascent();
  const std::vector<qsizetype> runs = FontRuns(m_text);
  const std::vector<LinePart> tinted = Seen(hits);
  auto run = runs.begin();
  auto hit = tinted.begin();
  for (qsizetype begin = 0; begin < m_text.size();) {
    while (*run <= begin) ++run;
    while (hit != tinted.end() && hit->End() <= begin) ++hit;
    const LinePart* const next = hit == tinted.end() ? nullptr : &*hit;
    const qsizetype end = PieceEnd(m_text, begin, *run, next);
    const QString piece = m_text.mid(begin, end - begin);
    const int width = m_metrics.horizontalAdvance(piece);
    const bool found = next && begin >= next->first;
    if (found)
      painter.fillRect(x, m_room.top() + kHitInsetPx, width, m_room.height() - 2 * kHitInsetPx,
                       look.hit);
    const bool mark = piece == kLineEndMark;
    painter.setPen(mark ? look.soft : found ? look.hitText : look.text);
    painter.drawText(x, y, piece);
    x += width;
    begin = end;
  }
}

int ScrollToHit(const QRect& hit, int viewPx, const QFontMetrics& metrics) {
  if (hit.isEmpty() || (hit.left() >= 0 && hit.right() < viewPx)) return 0;
  const int aroundPx = kAroundHitChars * metrics.averageCharWidth();
  const int toLeft = hit.left() - aroundPx;
  return std::min(toLeft, hit.right() + aroundPx - viewPx + 1);
}
