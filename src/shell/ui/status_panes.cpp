#include "shell/ui/status_panes.h"

#include <QEvent>
#include <QPainter>

#include "docview/ui/plain_tool_tip.h"
#include "shell/menus/menu_resources.h"

namespace {

constexpr int kSidePx = 8;  // between a pane's text and its border

// The description of a pane for screen readers, besides its text, which may be empty.
QString Description(unsigned pane) {
  switch (pane) {
    case kPaneZone:
      return StatusPanes::tr("Time zone");
    case kPaneCaps:
      return StatusPanes::tr("Caps Lock");
    case kPaneNum:
      return StatusPanes::tr("Num Lock");
    case kPaneScroll:
      return StatusPanes::tr("Scroll Lock");
    case kPaneFiltered:
      return StatusPanes::tr("Filter");
    case kPaneRowCount:
      return StatusPanes::tr("Rows");
    default:
      return StatusPanes::tr("Message");
  }
}

// A text with a thin line between it and the pane on its left.
class Pane : public QLabel {
 public:
  using QLabel::QLabel;

 protected:
  void paintEvent(QPaintEvent* event) override {
    QPainter p(this);
    QColor line = palette().color(QPalette::WindowText);
    line.setAlphaF(0.25f);
    p.fillRect(QRect(0, 3, 1, height() - 6), line);
    QLabel::paintEvent(event);
  }
};

// A text that uses the available space: a long one is cut at its end.
class MessagePane : public QLabel {
 public:
  using QLabel::QLabel;
  QSize minimumSizeHint() const override { return QSize(1, QLabel::minimumSizeHint().height()); }
  QSize sizeHint() const override { return minimumSizeHint(); }

 protected:
  void paintEvent(QPaintEvent*) override {
    QPainter p(this);
    const QRect room = contentsRect();
    p.drawText(room, Qt::AlignVCenter | Qt::AlignLeft,
               fontMetrics().elidedText(text(), Qt::ElideRight, room.width()));
  }
};

}  // namespace

StatusPanes::StatusPanes(QWidget* parent) : QStatusBar(parent) {
  setSizeGripEnabled(true);
  for (const StatusIndicator& indicator : StatusIndicators()) {
    const bool message = indicator.id == kPaneMessage;
    QLabel* pane = message ? static_cast<QLabel*>(new MessagePane(this)) : new Pane(this);
    pane->setTextFormat(Qt::PlainText);
    pane->setAccessibleDescription(Description(indicator.id));
    m_panes[indicator.id] = pane;
    pane->setContentsMargins(kSidePx, 0, kSidePx, 0);
    if (message) {
      addWidget(pane, 1);
    } else {
      pane->setAlignment(Qt::AlignCenter);
      addPermanentWidget(pane);
    }
  }
  m_panes[kPaneRowCount]->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
  SizePanes();
}

void StatusPanes::SizePanes() {
  for (const StatusIndicator& indicator : StatusIndicators()) {
    if (indicator.id == kPaneMessage) continue;
    QLabel* pane = m_panes[indicator.id];
    const QString text = QString::fromLatin1(indicator.text);
    pane->setMinimumWidth(pane->fontMetrics().horizontalAdvance(text) + 2 * kSidePx);
    pane->setMinimumHeight(pane->fontMetrics().height() + 4);
  }
}

void StatusPanes::changeEvent(QEvent* event) {
  QStatusBar::changeEvent(event);
  if (event->type() == QEvent::FontChange && !m_panes.empty()) SizePanes();
}

void StatusPanes::SetPaneText(unsigned pane, const QString& text) {
  const auto found = m_panes.find(pane);
  if (found != m_panes.end() && found->second->text() != text) found->second->setText(text);
}

QString StatusPanes::PaneText(unsigned pane) const {
  const auto found = m_panes.find(pane);
  return found == m_panes.end() ? QString() : found->second->text();
}

void StatusPanes::SetPaneToolTip(unsigned pane, const QString& text) {
  const auto found = m_panes.find(pane);
  if (found == m_panes.end()) return;
  const QString tip = PlainToolTip(text);
  if (found->second->toolTip() != tip) found->second->setToolTip(tip);
}

void StatusPanes::ShowLocks(const KeyboardLocks& locks) {
  const auto text = [](bool on, const char* word) { return QString::fromLatin1(on ? word : ""); };
  SetPaneText(kPaneCaps, text(locks.caps, "CAP"));
  SetPaneText(kPaneNum, text(locks.num, "NUM"));
  SetPaneText(kPaneScroll, text(locks.scroll, "SCRL"));
}
