#include "shell/mdi/ui/view_split.h"

#include <QEvent>
#include <algorithm>

#include "docview/ui/qt_control.h"

namespace {

constexpr int kLinesKept = 7;  // three rows, which are higher, a heading and a scroll bar
constexpr int kCharsKept = 24;
constexpr int kStandsMs = 200;  // a border that did not move for so long stands

QWidget* MakeRoom(QWidget* parent) {
  auto* const room = new QWidget(parent);
  auto* const layout = new QVBoxLayout(room);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->setSpacing(0);
  // As small as need be: the splitter would else take the smallest size of what is inside.
  room->setMinimumSize(1, 1);
  return room;
}

}  // namespace

ViewSplit::ViewSplit(QWidget* parent)
    : QSplitter(parent), m_views(MakeRoom(this)), m_aside(MakeRoom(this)) {
  setChildrenCollapsible(false);
  m_aside->hide();
  m_moved.setSingleShot(true);
  m_moved.setInterval(kStandsMs);
  connect(this, &QSplitter::splitterMoved, this, [this] {
    m_extentPx = sizes().at(1);
    m_moved.start();
  });
  connect(&m_moved, &QTimer::timeout, this, [this] {
    if (m_beside && m_extentChanged) m_extentChanged(m_extentPx);
  });
}

void ViewSplit::ShowBeside(QWidget* beside, BesideEdge edge, int extentPx) {
  if (m_beside && m_beside != beside) {
    m_aside->layout()->removeWidget(m_beside);
    ReleaseControl(*m_beside);
  }
  m_moved.stop();
  m_beside = beside;
  m_aside->setVisible(beside != nullptr);
  if (beside) {
    setOrientation(edge == BesideEdge::Right ? Qt::Horizontal : Qt::Vertical);
    m_aside->layout()->addWidget(beside);
    beside->show();
  }
  m_extentPx = extentPx;
  KeepLines();
  LayOut();
}

int ViewSplit::Room() const {
  const int all = orientation() == Qt::Horizontal ? width() : height();
  return std::max(all - handleWidth(), 0);
}

void ViewSplit::KeepLines() {
  const QFontMetrics metrics = fontMetrics();
  const int across = metrics.averageCharWidth() * kCharsKept;
  const int down = metrics.lineSpacing() * kLinesKept;
  const bool right = orientation() == Qt::Horizontal;
  m_views->setMinimumSize(m_beside && right ? across : 1, m_beside && !right ? down : 1);
}

void ViewSplit::LayOut() {
  if (!m_beside) return;
  const int room = Room();
  const int kept =
      orientation() == Qt::Horizontal ? m_views->minimumWidth() : m_views->minimumHeight();
  const int wanted = m_extentPx > 0 ? m_extentPx : room / 3;
  const int extent = std::clamp(wanted, 1, std::max(room - kept, 1));
  setSizes({room - extent, extent});
}

void ViewSplit::resizeEvent(QResizeEvent* event) {
  QSplitter::resizeEvent(event);
  LayOut();
}

void ViewSplit::changeEvent(QEvent* event) {
  QSplitter::changeEvent(event);
  if (event->type() != QEvent::FontChange && event->type() != QEvent::StyleChange) return;
  KeepLines();
  LayOut();
}
