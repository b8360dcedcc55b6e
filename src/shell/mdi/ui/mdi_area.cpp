#include "shell/mdi/ui/mdi_area.h"

#include <QEvent>
#include <QPainter>
#include <QTabBar>

#include "shell/mdi/ui/child_window.h"

namespace {

constexpr int kDarker = 108;  // percent: the area is a little darker than the bars
constexpr int kDarkerInDark = 130;
constexpr qreal kHintScale = 1.25;

}  // namespace

MdiArea::MdiArea(QWidget* parent) : QMdiArea(parent) {
  setHorizontalScrollBarPolicy(Qt::ScrollBarAsNeeded);
  setVerticalScrollBarPolicy(Qt::ScrollBarAsNeeded);
  setFrameShape(QFrame::NoFrame);
  setTabsClosable(true);
  setTabsMovable(true);
  setDocumentMode(true);
  setAccessibleName(tr("Documents"));
  TakePalette();
  connect(this, &QMdiArea::subWindowActivated, this,
          [this](QMdiSubWindow* window) { OnActivated(dynamic_cast<ChildWindow*>(window)); });
}

void MdiArea::OnActivated(ChildWindow* window) {
  if (!window || !window->Child() || window == m_active) return;
  m_active = window;     // the main frame notifies the frame that was active
  viewport()->update();  // a small window covers only a part of the text for an empty desk
  window->Child()->OnActivate(true);
  if (m_active == window) window->widget()->setFocus();
  if (m_changed) m_changed();
}

// By itself Qt restores all windows when a maximised one closes, and shows the one that was made
// first.
void MdiArea::Leave(ChildWindow* window) {
  if (m_active == window) {
    m_active = nullptr;
    if (ChildWindow* const next = UsedBefore(window)) {
      setActiveSubWindow(next);
      OnActivated(next);
    }
  }
  if (m_changed) m_changed();
}

// Null when there is no other window; a minimised one only if all others are minimised.
ChildWindow* MdiArea::UsedBefore(const ChildWindow* window) const {
  ChildWindow* icon = nullptr;
  const QList<QMdiSubWindow*> history = subWindowList(ActivationHistoryOrder);
  for (auto each = history.crbegin(); each != history.crend(); ++each) {
    auto* const other = dynamic_cast<ChildWindow*>(*each);
    if (!other || other == window || !other->Child() || other->isHidden()) continue;
    if (!other->isMinimized()) return other;
    if (!icon) icon = other;
  }
  return icon;
}

void MdiArea::ShowTabs(bool on) {
  if (on == (viewMode() == TabbedView)) return;
  if (on) m_maximisedWithoutTabs = m_active && m_active->isMaximized();
  setViewMode(on ? TabbedView : SubWindowView);
  if (QTabBar* const tabs = findChild<QTabBar*>(); on && tabs) {
    tabs->setAccessibleName(tr("Open windows"));
    tabs->setExpanding(false);
  }
  if (m_active && !on && !m_maximisedWithoutTabs) m_active->showNormal();
}

void MdiArea::TakePalette() {
  const QColor window = palette().color(QPalette::Window);
  setBackground(window.darker(window.lightness() < 128 ? kDarkerInDark : kDarker));
}

void MdiArea::changeEvent(QEvent* event) {
  QMdiArea::changeEvent(event);
  if (event->type() == QEvent::PaletteChange) TakePalette();
}

void MdiArea::paintEvent(QPaintEvent* event) {
  QMdiArea::paintEvent(event);
  if (!subWindowList().isEmpty()) return;
  QPainter p(viewport());
  QFont font = this->font();
  font.setPointSizeF(font.pointSizeF() * kHintScale);
  p.setFont(font);
  QColor ink = palette().color(QPalette::WindowText);
  ink.setAlphaF(0.6f);
  p.setPen(ink);
  p.drawText(viewport()->rect(), Qt::AlignCenter | Qt::TextWordWrap,
             tr("Open a trace file with Ctrl+O or drop one here\n"
                "Watch the live traces of a machine with Alt+M\n"
                "Choose what its applications trace with Alt+C"));
}
