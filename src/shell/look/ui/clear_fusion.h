// The Fusion style, with edges that are visible on dark colours and without pictures on the buttons
// of dialogs.
//
// Fusion makes every outline darker than the window. On a dark window check boxes and fields lose
// their edges, and the buttons of a child window without the focus are black on black. On light
// colours they stay as they are.
//
// The slider of a scroll bar is clearly different from its groove. Fusion's slider has nearly the
// colour of the groove, and the rest of the groove looks like a small slider.
//
// The title of a child window is at the left, where it stays visible in a cascade, in a slightly
// lower bar.
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
  // Some dialogs have buttons of the program, others those of the library: all should look alike.
  int styleHint(StyleHint hint, const QStyleOption* option, const QWidget* widget,
                QStyleHintReturn* data) const override;
  int pixelMetric(PixelMetric metric, const QStyleOption* option,
                  const QWidget* widget) const override;
  void drawComplexControl(ComplexControl control, const QStyleOptionComplex* option,
                          QPainter* painter, const QWidget* widget) const override;
};
