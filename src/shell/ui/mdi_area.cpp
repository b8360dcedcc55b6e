#include "shell/ui/mdi_area.h"

#include <QEvent>
#include <QPainter>

#include "shell/ui/child_window.h"

namespace {

constexpr int kDarker = 108;  // percent: the room lies a little deeper than the bars
constexpr int kDarkerInDark = 130;
constexpr qreal kHintScale = 1.25;

}  // namespace

MdiArea::MdiArea(QWidget* parent) : QMdiArea(parent) {
  setHorizontalScrollBarPolicy(Qt::ScrollBarAsNeeded);
  setVerticalScrollBarPolicy(Qt::ScrollBarAsNeeded);
  setFrameShape(QFrame::NoFrame);
  setAccessibleName(tr("Documents"));
  TakePalette();
  connect(this, &QMdiArea::subWindowActivated, this,
          [this](QMdiSubWindow* window) { OnActivated(dynamic_cast<ChildWindow*>(window)); });
}

void MdiArea::OnActivated(ChildWindow* window) {
  if (!window || !window->Child() || window == m_active) return;
  m_active = window;  // the frame that was active is told by the main frame
  window->Child()->OnActivate(true);
  if (m_active == window) window->widget()->setFocus();
  if (m_changed) m_changed();
}

void MdiArea::Forget(ChildWindow* window) {
  if (m_active == window) m_active = nullptr;
  if (m_changed) m_changed();
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
                "Watch the live traces of a machine with Alt+M"));
}
