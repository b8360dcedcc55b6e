#include "shell/ui/clear_fusion.h"

#include <QPainter>
#include <QStyleOption>

namespace {

constexpr int kFusionDarker = 140;  // percent: what Fusion makes of the window's colour for an edge
constexpr int kBrighterFocus = 170;
constexpr int kSeparatorGapPx = 6;
constexpr qreal kPale = 0.65;  // the title of a window without the focus

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

// Fusion edges a tool bar with lines of white: on dark colours they are the brightest thing.
void ClearFusion::drawControl(ControlElement element, const QStyleOption* option, QPainter* painter,
                              const QWidget* widget) const {
  if (element == CE_ToolBar && IsDark(option))
    painter->fillRect(option->rect, option->palette.window());
  else
    QProxyStyle::drawControl(element, option, painter, widget);
}

// Fusion writes a title in white over a shadow of the text's colour, here the same white; the
// buttons of a window without the focus are black. Such a window is drawn as one that has it, in
// the window's colour and paler.
void ClearFusion::drawComplexControl(ComplexControl control, const QStyleOptionComplex* option,
                                     QPainter* painter, const QWidget* widget) const {
  const auto* const given = qstyleoption_cast<const QStyleOptionTitleBar*>(option);
  if (control != CC_TitleBar || !given || !IsDark(option)) {
    QProxyStyle::drawComplexControl(control, option, painter, widget);
    return;
  }
  QStyleOptionTitleBar bar(*given);
  bar.palette.setColor(QPalette::Text, Qt::black);
  painter->save();
  if (!(bar.titleBarState & State_Active)) {
    bar.titleBarState |= State_Active;
    bar.palette.setColor(QPalette::Highlight, bar.palette.color(QPalette::Window));
    painter->fillRect(bar.rect, bar.palette.window());
    painter->setOpacity(kPale);
  }
  QProxyStyle::drawComplexControl(control, &bar, painter, widget);
  painter->restore();
}
