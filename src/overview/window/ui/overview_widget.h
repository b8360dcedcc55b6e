// The Qt class of the overview: one widget that paints bars, ticks and times.
//
// Shape    From the top: a row of signs (errors, losses), the bars, a base line with the ticks of
//          marks and hits, and times in small letters. All this is painted once for each change,
//          into an image; page, choice and cursor are painted over it.
// Owner    Owned by its QtOverview; borrows the strip until Detach.
// Threads  Interface thread.
#pragma once

#include <QPixmap>
#include <QPointer>
#include <QWidget>

#include "docview/ui/qt_control.h"
#include "overview/window/overview_strip.h"
#include "overview/window/ui/overview_colours.h"

class OverviewWidget : public QWidget {
 public:
  explicit OverviewWidget(OverviewStrip& strip);
  // The strip is about to go.
  void Detach() { m_strip = nullptr; }
  void Update();
  QSize sizeHint() const override;
  QSize minimumSizeHint() const override;
  // What assistive technology reads.
  QString Description() const;

 protected:
  void paintEvent(QPaintEvent* event) override;
  void resizeEvent(QResizeEvent* event) override;
  void changeEvent(QEvent* event) override;
  bool event(QEvent* event) override;
  void mousePressEvent(QMouseEvent* event) override;
  void mouseMoveEvent(QMouseEvent* event) override;
  void mouseReleaseEvent(QMouseEvent* event) override;
  void mouseDoubleClickEvent(QMouseEvent* event) override;
  void wheelEvent(QWheelEvent* event) override;
  void contextMenuEvent(QContextMenuEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;

 private:
  struct Rows {
    int signs, bars, base, labels;  // the upper edges
  };
  Rows RowsOf() const;
  QFont LabelFont() const;
  int SignPx() const;
  int Margin() const { return fontMetrics().averageCharWidth(); }
  int StripPx(double x) const { return static_cast<int>(x) - Margin(); }
  QRect RectOf(const TimeLimits& time) const;
  void TellSize();
  void PaintImage();
  void PaintBars(QPainter& painter, const OverviewColours& colours) const;
  void PaintSigns(QPainter& painter, const OverviewColours& colours) const;
  void PaintTicks(QPainter& painter, const OverviewColours& colours) const;
  void PaintLabels(QPainter& painter, const OverviewColours& colours) const;
  void PaintOver(QPainter& painter, const OverviewColours& colours) const;
  OverviewColours Colours() const;

  OverviewStrip* m_strip;
  QPixmap m_image;  // null: to be painted anew
  int m_wheel = 0;  // in eighths of a degree, less than a notch
};

class QtOverview : public OverviewFace, public QtControl {
 public:
  explicit QtOverview(OverviewStrip& strip) : m_widget(new OverviewWidget(strip)) {}
  ~QtOverview() override;

  QWidget* Widget() override { return m_widget; }
  void SetFocus() override {
    if (m_widget) m_widget->setFocus(Qt::ShortcutFocusReason);
  }
  bool HasFocus() const override { return m_widget && m_widget->hasFocus(); }
  void Update() override {
    if (m_widget) m_widget->Update();
  }

 private:
  QPointer<OverviewWidget> m_widget;
};
