#include "docview/ui/dialog_place.h"

#include <QAccessible>
#include <QApplication>
#include <QDialogButtonBox>
#include <QPushButton>
#include <QScreen>
#include <QScrollArea>
#include <QStyle>
#include <QTimer>
#include <QVBoxLayout>
#include <QWindow>
#include <algorithm>
#include <utility>

#include "docview/ui/screen_fit.h"

namespace {

constexpr int kGapPx = 8;
constexpr int kDecorationPx = 12;  // of a window manager, beside the title
constexpr int kFramedMs = 100;     // by then the window manager has reported its decoration
constexpr int kEarlyLooks = 50;    // a slow machine takes seconds to place the first window

QSize Decoration(const QWidget& window) {
  return {kDecorationPx,
          kDecorationPx + window.style()->pixelMetric(QStyle::PM_TitleBarHeight, nullptr, nullptr)};
}

bool HoldsButtons(QLayoutItem& item) {
  QLayout* const row = item.layout();
  if (!row) return qobject_cast<QDialogButtonBox*>(item.widget()) != nullptr;
  for (int i = 0; i < row->count(); ++i)
    if (qobject_cast<QPushButton*>(row->itemAt(i)->widget())) return true;
  return false;
}

// Removes the row of buttons at the end of a column and returns it; null when there is none.
QLayoutItem* TakeButtons(QLayout& layout) {
  auto* const column = qobject_cast<QVBoxLayout*>(&layout);
  const int last = column ? column->count() - 1 : -1;
  return last > 0 && HoldsButtons(*column->itemAt(last)) ? column->takeAt(last) : nullptr;
}

QPoint Inside(QPoint at, QSize size, const QRect& room) {
  return {std::max(std::min(at.x(), room.right() + 1 - size.width()), room.left()),
          std::max(std::min(at.y(), room.bottom() + 1 - size.height()), room.top())};
}

}  // namespace

QRect FocusedRowOnScreen() {
  QWidget* const control = QApplication::focusWidget();
  QAccessibleInterface* const described =
      control ? QAccessible::queryAccessibleInterface(control) : nullptr;
  QAccessibleInterface* const row = described ? described->focusChild() : nullptr;
  if (!row || row->object() == control) return {};
  const QRect whole(control->mapToGlobal(QPoint(0, 0)), control->size());
  QRect line = row->rect().intersected(whole);
  if (line.isEmpty()) return {};
  line.setLeft(whole.left());  // a cell or a label is part of a row
  line.setRight(whole.right());
  return line;
}

QPoint BesideRow(const QRect& wanted, const QRect& row, const QRect& room) {
  const QPoint first = Inside(wanted.topLeft(), wanted.size(), room);
  const QRect clear = row.adjusted(-kGapPx, -kGapPx, kGapPx, kGapPx);
  for (const QPoint& at :
       {first, QPoint(first.x(), clear.bottom() + 1),
        QPoint(first.x(), clear.top() - wanted.height()), QPoint(clear.right() + 1, first.y()),
        QPoint(clear.left() - wanted.width(), first.y())}) {
    const QRect place(at, wanted.size());
    if (room.contains(place) && !place.intersects(clear)) return at;
  }
  return first;
}

// A widget that gets another parent loses the focus.
void MakeScrollable(QDialog& dialog) {
  QLayout* const layout = dialog.layout();
  if (!layout) return;
  QWidget* const focus = dialog.focusWidget();
  QLayoutItem* const buttons = TakeButtons(*layout);
  const QMargins margins = layout->contentsMargins();
  layout->setSizeConstraint(QLayout::SetDefaultConstraint);
  auto* const content = new QWidget;
  content->setLayout(layout);
  auto* const area = new QScrollArea(&dialog);
  area->setFrameShape(QFrame::NoFrame);
  area->setWidgetResizable(true);
  area->setWidget(content);
  auto* const column = new QVBoxLayout(&dialog);
  column->setContentsMargins(0, 0, 0, 0);
  column->addWidget(area);
  if (buttons) {
    auto* const row = new QVBoxLayout;
    row->setContentsMargins(margins.left(), 0, margins.right(), margins.bottom());
    row->addItem(buttons);
    column->addLayout(row);
  }
  if (focus) focus->setFocus();
}

void DialogPlace::Remember(DialogPlaces* places, std::string name) {
  m_places = places;
  m_name = std::move(name);
}

void DialogPlace::BeforeShow() {
  if (m_shown) return;
  m_dialog.ensurePolished();
  const std::optional<QRect> kept = m_places ? m_places->PlaceOf(m_name) : std::nullopt;
  QScreen* const screen = kept ? QGuiApplication::screenAt(kept->center()) : nullptr;
  const QRect room = screen ? screen->availableGeometry() : ScreenRoom(m_dialog);
  const QSize largest = room.size() - Decoration(m_dialog);
  if (m_dialog.layout()) m_dialog.layout()->activate();
  if (m_dialog.minimumSizeHint().height() > largest.height()) MakeScrollable(m_dialog);
  if (!m_dialog.testAttribute(Qt::WA_Resized)) m_dialog.adjustSize();
  m_dialog.resize((screen ? kept->size() : m_dialog.size()).boundedTo(largest));
  if (screen)
    m_dialog.move(Inside(kept->topLeft(), m_dialog.size() + Decoration(m_dialog), room));
  else
    TakeFirstPlace();
}

// Without a row the dialog opens where Qt puts it, over the middle of its parent.
void DialogPlace::TakeFirstPlace() {
  const QWidget* const parent = m_dialog.parentWidget();
  const QRect row = FocusedRowOnScreen();
  m_early = ParentHasNoPlace() ? kEarlyLooks : 0;
  if (!parent || row.isEmpty()) return;
  QRect wanted(QPoint(0, 0), m_dialog.size() + Decoration(m_dialog));
  wanted.moveCenter(parent->window()->geometry().center());
  m_dialog.move(BesideRow(wanted, row, ScreenRoom(*parent->window())));
}

// The window manager has not placed the parent's window yet.
bool DialogPlace::ParentHasNoPlace() const {
  const QWidget* const parent = m_dialog.parentWidget();
  const QWindow* const window = parent ? parent->window()->windowHandle() : nullptr;
  return window && window->isVisible() && !window->isExposed();
}

void DialogPlace::CentreOverParent() {
  QRect place = m_dialog.frameGeometry();
  place.moveCenter(m_dialog.parentWidget()->window()->frameGeometry().center());
  m_dialog.move(place.topLeft());
}

void DialogPlace::AfterShow() {
  QTimer::singleShot(kFramedMs, &m_dialog, [this] {
    if (!m_dialog.isVisible()) return;
    if (m_early > 1 && ParentHasNoPlace()) {
      --m_early;
      return AfterShow();
    }
    if (std::exchange(m_early, 0) > 0) CentreOverParent();
    KeepOnScreen(m_dialog);
    m_shown = Place();
  });
}

void DialogPlace::BeforeHide() {
  if (m_places && m_shown && m_dialog.isVisible() && Place() != *m_shown)
    m_places->Keep(m_name, Place());
}
