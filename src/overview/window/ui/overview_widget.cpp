#include "overview/window/ui/overview_widget.h"

#include <QAccessible>
#include <QHelpEvent>
#include <QKeyEvent>
#include <QThread>
#include <QToolTip>
#include <algorithm>

#include "docview/ui/plain_tool_tip.h"
#include "overview/window/ui/overview_accessible.h"

namespace {

constexpr int kNotch = QWheelEvent::DefaultDeltasPerStep;

}  // namespace

OverviewWidget::OverviewWidget(OverviewStrip& strip) : m_strip(&strip) {
  DescribeOverviews();
  setObjectName(QStringLiteral("overview"));
  setAccessibleName(QStringLiteral("Overview"));
  setFocusPolicy(Qt::StrongFocus);
  setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
  setAttribute(Qt::WA_OpaquePaintEvent);
}

QString OverviewWidget::Description() const {
  return m_strip ? QString::fromStdString(m_strip->Description()) : QString();
}

void OverviewWidget::Update() {
  m_image = QPixmap();
  update();
  if (!hasFocus()) return;
  QAccessibleEvent changed(this, QAccessible::DescriptionChanged);
  QAccessible::updateAccessibility(&changed);
}

// ---- sizes

QFont OverviewWidget::LabelFont() const {
  constexpr double kSmaller = 0.85;
  QFont smaller = font();
  if (smaller.pointSizeF() > 0)
    smaller.setPointSizeF(smaller.pointSizeF() * kSmaller);
  else
    smaller.setPixelSize(std::max(static_cast<int>(smaller.pixelSize() * kSmaller), 1));
  return smaller;
}

int OverviewWidget::SignPx() const {
  return std::max(fontMetrics().height() * 2 / 5, 4);
}

OverviewWidget::Rows OverviewWidget::RowsOf() const {
  const int labels = height() - QFontMetrics(LabelFont()).height() - 1;
  const int signs = 2;
  return {signs, signs + SignPx() + 1, labels - SignPx() - 1, labels};
}

QSize OverviewWidget::sizeHint() const {
  const int line = fontMetrics().height();
  return {40 * line, 2 * SignPx() + line * 2 + QFontMetrics(LabelFont()).height() + 5};
}

QSize OverviewWidget::minimumSizeHint() const {
  return {1, sizeHint().height()};
}

void OverviewWidget::TellSize() {
  const int unit = std::max(fontMetrics().averageCharWidth() * 2 / 3, 3);
  if (m_strip) m_strip->SetSize(width() - 2 * Margin(), unit, 4 * unit);
  m_image = QPixmap();
  update();
}

void OverviewWidget::resizeEvent(QResizeEvent* event) {
  QWidget::resizeEvent(event);
  TellSize();
}

void OverviewWidget::changeEvent(QEvent* event) {
  QWidget::changeEvent(event);
  if (event->type() == QEvent::FontChange) updateGeometry();
  TellSize();
}

// ---- the user

bool OverviewWidget::event(QEvent* event) {
  if (event->type() == QEvent::FocusIn || event->type() == QEvent::FocusOut) update();
  if (event->type() != QEvent::ToolTip || !m_strip) return QWidget::event(event);
  const auto* help = static_cast<const QHelpEvent*>(event);
  const QString text = QString::fromStdString(m_strip->TextAt(StripPx(help->pos().x())));
  QToolTip::showText(help->globalPos(), PlainToolTip(text), this);
  return true;
}

void OverviewWidget::mousePressEvent(QMouseEvent* event) {
  if (!m_strip || event->button() != Qt::LeftButton) return QWidget::mousePressEvent(event);
  m_strip->Press(StripPx(event->position().x()));
}

void OverviewWidget::mouseMoveEvent(QMouseEvent* event) {
  if (m_strip && (event->buttons() & Qt::LeftButton)) m_strip->Drag(StripPx(event->position().x()));
}

void OverviewWidget::mouseReleaseEvent(QMouseEvent* event) {
  if (m_strip && event->button() == Qt::LeftButton)
    m_strip->Release(StripPx(event->position().x()));
}

void OverviewWidget::mouseDoubleClickEvent(QMouseEvent* event) {
  if (m_strip && event->button() == Qt::LeftButton) m_strip->ZoomOut();
}

void OverviewWidget::wheelEvent(QWheelEvent* event) {
  event->accept();
  m_wheel += event->angleDelta().y();
  const int notches = m_wheel / kNotch;
  m_wheel %= kNotch;
  if (m_strip && notches != 0) m_strip->Wheel(StripPx(event->position().x()), notches);
}

void OverviewWidget::contextMenuEvent(QContextMenuEvent* event) {
  if (m_strip) m_strip->OpenMenu(event->globalPos().x(), event->globalPos().y());
}

void OverviewWidget::keyPressEvent(QKeyEvent* event) {
  using Key = OverviewStrip::Key;
  constexpr std::pair<int, Key> kKeys[] = {
      {Qt::Key_Left, Key::Left},     {Qt::Key_Right, Key::Right},  {Qt::Key_Home, Key::Home},
      {Qt::Key_End, Key::End},       {Qt::Key_Return, Key::Enter}, {Qt::Key_Enter, Key::Enter},
      {Qt::Key_Escape, Key::Escape}, {Qt::Key_Plus, Key::ZoomIn},  {Qt::Key_Equal, Key::ZoomIn},
      {Qt::Key_Minus, Key::ZoomOut}, {Qt::Key_A, Key::Far}};
  const auto* const found = std::find_if(std::begin(kKeys), std::end(kKeys), [&](const auto& key) {
    return key.first == event->key();
  });
  const bool shift = event->modifiers() & Qt::ShiftModifier;
  // Ctrl+A is a command of the window.
  const bool other = event->modifiers() & Qt::AltModifier ||
                     (event->key() == Qt::Key_A && event->modifiers() & Qt::ControlModifier);
  if (!m_strip || other || found == std::end(kKeys) || !m_strip->OnKey(found->second, shift))
    QWidget::keyPressEvent(event);
}

// ---- the face

// It may go while the widget handles an event.
QtOverview::~QtOverview() {
  if (!m_widget) return;
  m_widget->Detach();
  ReleaseControl(*m_widget);
  if (QThread::currentThread()->loopLevel() > 0)
    m_widget->deleteLater();
  else
    delete m_widget;
}
