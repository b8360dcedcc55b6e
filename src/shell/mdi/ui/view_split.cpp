#include "shell/mdi/ui/view_split.h"

#include <QEvent>
#include <QShortcut>
#include <algorithm>

#include "docview/ui/qt_control.h"

namespace {

constexpr int kLinesKept = 7;  // three rows, which are higher, a heading and a scroll bar
constexpr int kCharsKept = 24;
constexpr int kStepLines = 2, kStepChars = 4;
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
  AddKey(QKeySequence(Qt::Key_F8), 1);
  AddKey(QKeySequence(Qt::SHIFT | Qt::Key_F8), -1);
}

void ViewSplit::AddKey(const QKeySequence& key, int steps) {
  auto* const shortcut = new QShortcut(key, this);
  shortcut->setContext(Qt::WidgetWithChildrenShortcut);
  connect(shortcut, &QShortcut::activated, this, [this, steps] { MoveBorder(steps); });
}

// As a drag does: within the room, and told when it stands.
void ViewSplit::MoveBorder(int steps) {
  if (!m_beside) return;
  const bool right = orientation() == Qt::Horizontal;
  const QFontMetrics metrics = fontMetrics();
  const int step =
      right ? kStepChars * metrics.averageCharWidth() : kStepLines * metrics.lineSpacing();
  const int kept = right ? m_views->minimumWidth() : m_views->minimumHeight();
  m_extentPx = std::max(std::min(sizes().at(1) + steps * step, Room() - kept), step);
  LayOut();
  m_moved.start();
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
