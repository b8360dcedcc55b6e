#include "shell/beside/ui/beside_area_widget.h"

#include <QApplication>
#include <QScopedValueRollback>
#include <QTabBar>
#include <algorithm>

namespace {

// An ampersand of a title is no mnemonic.
QString Shown(const std::string& title) {
  return QString::fromStdString(title).replace(QLatin1Char('&'), QLatin1String("&&"));
}

}  // namespace

QtBesideArea::QtBesideArea(BesideAreaOwner& owner) : m_owner(owner) {
  setObjectName(QStringLiteral("beside"));
  setDocumentMode(true);
  setTabsClosable(true);
  setUsesScrollButtons(true);
  tabBar()->setExpanding(false);
  connect(this, &QTabWidget::currentChanged, this, [this](int place) {
    if (!m_calling && place >= 0) m_owner.OnTab(static_cast<std::size_t>(place));
  });
  connect(this, &QTabWidget::tabCloseRequested, this,
          [this](int place) { m_owner.OnCloseTab(static_cast<std::size_t>(place)); });
}

QtBesideArea::~QtBesideArea() {
  while (count() > 0) RemoveTab(0);
}

void QtBesideArea::SetFocus() {
  if (QWidget* const front = currentWidget()) front->setFocus(Qt::OtherFocusReason);
}

void QtBesideArea::InsertTab(std::size_t place, const std::string& title, ViewControl& control) {
  const QScopedValueRollback calling(m_calling, true);
  QWidget* const widget = WidgetOf(&control);
  if (!widget) return;
  const int at = insertTab(static_cast<int>(std::min(place, static_cast<std::size_t>(count()))),
                           widget, Shown(title));
  NameButton(at, title);
}

// To assistive technology: the buttons of all tabs are alike.
void QtBesideArea::NameButton(int place, const std::string& title) {
  for (const QTabBar::ButtonPosition side : {QTabBar::LeftSide, QTabBar::RightSide})
    if (QWidget* const button = tabBar()->tabButton(place, side))
      button->setAccessibleName("Close " + QString::fromStdString(title));
}

// Without its parent: a widget that is deleted with the area would be deleted twice.
void QtBesideArea::RemoveTab(std::size_t place) {
  if (!Has(place)) return;
  const QScopedValueRollback calling(m_calling, true);
  QWidget* const control = widget(static_cast<int>(place));
  removeTab(static_cast<int>(place));
  ReleaseControl(*control);
}

void QtBesideArea::SetTabTitle(std::size_t place, const std::string& title) {
  if (!Has(place)) return;
  setTabText(static_cast<int>(place), Shown(title));
  NameButton(static_cast<int>(place), title);
}

void QtBesideArea::SetFront(std::size_t place) {
  const QScopedValueRollback calling(m_calling, true);
  if (Has(place)) setCurrentIndex(static_cast<int>(place));
}

std::size_t QtBesideArea::Front() const {
  return static_cast<std::size_t>(std::max(currentIndex(), 0));
}

bool QtBesideArea::HasFocus() const {
  const QWidget* const focus = QApplication::focusWidget();
  return focus && (focus == this || isAncestorOf(focus));
}
