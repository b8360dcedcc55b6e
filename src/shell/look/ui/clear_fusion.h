// The Fusion style, with edges that can be seen on dark colours and without pictures on the buttons
// of dialogs.
//
// Fusion makes every outline darker than the window: on a dark window check boxes and fields lose
// their edges, and the buttons of a child window without the focus are black on black. On light
// colours they stay as they are.
//
// The slider of a scroll bar stands out of its groove. Fusion's is nearly the groove's colour, and
// the rest of the groove passes for a small slider.
//
// The title of a child window stands at the left, where the others of a cascade leave it to be
// seen, in a bar that is a little lower.
//
// Threads  Interface thread.
#pragma once

#include <QProxyStyle>

class ClearFusion : public QProxyStyle {
 public:
  ClearFusion();
  void drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
                     const QWidget* widget) const override;
  void drawControl(ControlElement element, const QStyleOption* option, QPainter* painter,
                   const QWidget* widget) const override;
  // The buttons of some dialogs are the program's own, of others the library's: all look alike.
  int styleHint(StyleHint hint, const QStyleOption* option, const QWidget* widget,
                QStyleHintReturn* data) const override;
  int pixelMetric(PixelMetric metric, const QStyleOption* option,
                  const QWidget* widget) const override;
  void drawComplexControl(ComplexControl control, const QStyleOptionComplex* option,
                          QPainter* painter, const QWidget* widget) const override;
};
