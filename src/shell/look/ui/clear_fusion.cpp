#include "shell/look/ui/clear_fusion.h"

#include <QApplication>
#include <QPainter>
#include <QStyleOption>
#include <algorithm>

namespace {

constexpr int kFusionDarker = 140;  // percent: Fusion makes edges this much darker than the window
constexpr int kBrighterFocus = 170;
constexpr int kSeparatorGapPx = 6;
constexpr qreal kCrossShare = 0.45;  // of a tab's button
constexpr int kTitleRoomPx = 4, kTitlePxMin = 18, kTitleGapPx = 4;
constexpr qreal kPale = 0.65;  // the title of a window without the focus
constexpr float kSliderInk = 0.15f, kSliderEdgeInk = 0.5f;

bool IsDark(const QStyleOption* option) {
  return option && option->palette.color(QPalette::Window).lightness() < 128;
}

QColor Between(const QColor& a, const QColor& b) {
  return QColor((a.red() + b.red()) / 2, (a.green() + b.green()) / 2, (a.blue() + b.blue()) / 2);
}

// Colours from which Fusion mixes an edge halfway between the window and its text.
QPalette WithEdges(QPalette palette) {
  const QColor edge = Between(palette.color(QPalette::Window), palette.color(QPalette::WindowText));
  palette.setColor(QPalette::Window, edge.lighter(kFusionDarker));
  palette.setColor(QPalette::Highlight, palette.color(QPalette::Highlight).lighter(kBrighterFocus));
  return palette;
}

// A cross in the text's colour, on a pale background under the mouse. Fusion's orange picture draws
// attention to every tab.
void DrawTabClose(const QStyleOption& option, QPainter& painter) {
  QColor ink = option.palette.color(QPalette::WindowText);
  const QRectF room(option.rect);
  const qreal side = std::min(room.width(), room.height());
  QRectF cross(0, 0, side * kCrossShare, side * kCrossShare);
  cross.moveCenter(room.center());
  painter.save();
  painter.setRenderHint(QPainter::Antialiasing);
  if (option.state & QStyle::State_MouseOver) {
    QColor ground = ink;
    ground.setAlphaF(0.15f);
    painter.setPen(Qt::NoPen);
    painter.setBrush(ground);
    painter.drawRoundedRect(room, 3, 3);
  } else {
    ink.setAlphaF(0.65f);
  }
  painter.setPen(QPen(ink, 1.4, Qt::SolidLine, Qt::RoundCap));
  painter.drawLine(cross.topLeft(), cross.bottomRight());
  painter.drawLine(cross.topRight(), cross.bottomLeft());
  painter.restore();
}

void DrawSlider(const QStyleOptionSlider& bar, const QRect& slider, QPainter& painter) {
  QColor edge = bar.palette.color(QPalette::WindowText), ground = edge;
  edge.setAlphaF(kSliderEdgeInk);
  ground.setAlphaF(kSliderInk);
  painter.save();
  painter.setPen(QPen(edge, 1));
  painter.setBrush(ground);
  painter.drawRect(slider.adjusted(0, 0, -1, -1));
  painter.restore();
}

template <class Option>
const Option* Edged(const QStyleOption* option, Option& copy) {
  const auto* const given = qstyleoption_cast<const Option*>(option);
  if (!given) return nullptr;
  copy = *given;
  copy.palette = WithEdges(given->palette);
  return &copy;
}

}  // namespace

ClearFusion::ClearFusion() : QProxyStyle(QStringLiteral("Fusion")) {}

int ClearFusion::styleHint(StyleHint hint, const QStyleOption* option, const QWidget* widget,
                           QStyleHintReturn* data) const {
  if (hint == SH_DialogButtonBox_ButtonsHaveIcons) return 0;
  return QProxyStyle::styleHint(hint, option, widget, data);
}

void ClearFusion::drawPrimitive(PrimitiveElement element, const QStyleOption* option,
                                QPainter* painter, const QWidget* widget) const {
  if (element == PE_IndicatorTabClose) return DrawTabClose(*option, *painter);
  const QStyleOption* drawn = nullptr;
  QStyleOptionButton box;
  QStyleOptionFrame field;
  if (IsDark(option)) {
    if (element == PE_IndicatorCheckBox || element == PE_IndicatorRadioButton) {
      drawn = Edged(option, box);
    } else if (element == PE_FrameLineEdit) {
      drawn = Edged(option, field);
    } else if (element == PE_IndicatorToolBarSeparator && (option->state & State_Horizontal)) {
      const QRect room = option->rect.adjusted(0, kSeparatorGapPx, 0, -kSeparatorGapPx);
      painter->fillRect(QRect(room.center().x(), room.top(), 1, room.height()),
                        option->palette.light());
      return;
    }
  }
  QProxyStyle::drawPrimitive(element, drawn ? drawn : option, painter, widget);
}

// Fusion draws white lines at the edges of a tool bar, which are too bright on dark colours.
void ClearFusion::drawControl(ControlElement element, const QStyleOption* option, QPainter* painter,
                              const QWidget* widget) const {
  if (element == CE_ToolBar && IsDark(option))
    painter->fillRect(option->rect, option->palette.window());
  else
    QProxyStyle::drawControl(element, option, painter, widget);
}

int ClearFusion::pixelMetric(PixelMetric metric, const QStyleOption* option,
                             const QWidget* widget) const {
  const int given = QProxyStyle::pixelMetric(metric, option, widget);
  if (metric != PM_TitleBarHeight) return given;
  const QFontMetrics metrics(widget ? widget->font() : QApplication::font());
  return std::min(given, std::max(metrics.height() + kTitleRoomPx, kTitlePxMin));
}

// Fusion centres the title and draws the buttons of a window without the focus black, which is
// black on black with dark colours. Here such a window is drawn like one with the focus, but paler
// and in the window's colour.
void ClearFusion::drawComplexControl(ComplexControl control, const QStyleOptionComplex* option,
                                     QPainter* painter, const QWidget* widget) const {
  const auto* const given = qstyleoption_cast<const QStyleOptionTitleBar*>(option);
  if (control != CC_TitleBar || !given) {
    QProxyStyle::drawComplexControl(control, option, painter, widget);
    const auto* const bar = qstyleoption_cast<const QStyleOptionSlider*>(option);
    if (control == CC_ScrollBar && bar && bar->maximum > bar->minimum)
      DrawSlider(*bar, proxy()->subControlRect(control, bar, SC_ScrollBarSlider, widget), *painter);
    return;
  }
  QStyleOptionTitleBar bar(*given);
  bar.text.clear();
  const bool active = bar.titleBarState & State_Active;
  const bool dark = IsDark(option);
  painter->save();
  if (!active && dark) {
    bar.titleBarState |= State_Active;
    bar.palette.setColor(QPalette::Highlight, bar.palette.color(QPalette::Window));
    painter->fillRect(bar.rect, bar.palette.window());
    painter->setOpacity(kPale);
  }
  QProxyStyle::drawComplexControl(control, &bar, painter, widget);
  QRect room = proxy()->subControlRect(CC_TitleBar, &bar, SC_TitleBarLabel, widget);
  // The label begins below the icon's last pixels.
  const QRect icon = proxy()->subControlRect(CC_TitleBar, &bar, SC_TitleBarSysMenu, widget);
  room.setLeft(std::max(room.left(), icon.right() + 1));
  painter->setPen(active || dark ? Qt::white : bar.palette.color(QPalette::WindowText));
  painter->drawText(room.adjusted(kTitleGapPx, 0, -kTitleGapPx, 0),
                    Qt::AlignLeft | Qt::AlignVCenter,
                    painter->fontMetrics().elidedText(given->text, Qt::ElideRight,
                                                      room.width() - 2 * kTitleGapPx));
  painter->restore();
}
