#include "shell/look/ui/tool_pictures.h"

#include <QPainter>
#include <QPainterPath>
#include <map>

#include "docview/commands/command_ids.h"

namespace {

QPen Pen(const QColor& colour, qreal width = 1.3) {
  return QPen(colour, width, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin);
}

// A bin with its lid.
void DrawClear(QPainter& p, const PictureInk& ink) {
  QPainterPath bin;
  bin.moveTo(3.6, 5.2);
  bin.lineTo(4.4, 14);
  bin.lineTo(11.6, 14);
  bin.lineTo(12.4, 5.2);
  p.setPen(Pen(ink.line));
  p.drawPath(bin);
  p.drawLine(QPointF(2, 4.2), QPointF(14, 4.2));
  p.drawPolyline(QPolygonF({{5.9, 4}, {6.4, 2}, {9.6, 2}, {10.1, 4}}));
  p.setPen(Pen(ink.accent, 1.2));
  for (const qreal x : {6.5, 9.5}) p.drawLine(QPointF(x, 6.8), QPointF(x, 11.8));
}

void DrawOpen(QPainter& p, const PictureInk& ink) {
  QPainterPath back;
  back.moveTo(1.8, 13);
  back.lineTo(1.8, 3.2);
  back.lineTo(6, 3.2);
  back.lineTo(7.5, 5);
  back.lineTo(12.7, 5);
  back.lineTo(12.7, 7);
  QPainterPath flap;
  flap.moveTo(4.2, 7.2);
  flap.lineTo(15, 7.2);
  flap.lineTo(12.6, 13.2);
  flap.lineTo(1.8, 13.2);
  flap.closeSubpath();
  QColor fill = ink.accent;
  fill.setAlphaF(fill.alphaF() * 0.35f);
  p.fillPath(flap, fill);
  p.setPen(Pen(ink.line));
  p.drawPath(back);
  p.drawPath(flap);
}

void DrawSave(QPainter& p, const PictureInk& ink) {
  QPainterPath disk;
  disk.moveTo(2.5, 2.5);
  disk.lineTo(11.3, 2.5);
  disk.lineTo(13.5, 4.7);
  disk.lineTo(13.5, 13.5);
  disk.lineTo(2.5, 13.5);
  disk.closeSubpath();
  p.fillRect(QRectF(4.7, 8.7, 6.6, 4.8), ink.accent);
  p.setPen(Pen(ink.line));
  p.drawPath(disk);
  p.drawLine(QPointF(5.2, 2.8), QPointF(5.2, 5.8));
  p.drawLine(QPointF(5.2, 5.8), QPointF(10, 5.8));
  p.drawLine(QPointF(10, 5.8), QPointF(10, 2.8));
}

// Three sliders at different positions.
void DrawOptions(QPainter& p, const PictureInk& ink) {
  const qreal knobs[] = {10.5, 5, 9};
  for (int row = 0; row < 3; ++row) {
    const qreal y = 3.5 + 4.5 * row;
    p.setPen(Pen(ink.line));
    p.drawLine(QPointF(1.8, y), QPointF(knobs[row] - 2.2, y));
    p.drawLine(QPointF(knobs[row] + 2.2, y), QPointF(14.2, y));
    p.setPen(Pen(ink.accent, 1.5));
    p.drawEllipse(QPointF(knobs[row], y), 1.6, 1.6);
  }
}

// A root and its branches.
void DrawTree(QPainter& p, const PictureInk& ink) {
  p.setPen(Pen(ink.line));
  p.drawLine(QPointF(4, 5), QPointF(4, 12.5));
  p.drawLine(QPointF(4, 7.8), QPointF(8, 7.8));
  p.drawLine(QPointF(4, 12.5), QPointF(8, 12.5));
  p.fillRect(QRectF(2, 1.5, 4, 4), ink.accent);
  p.drawLine(QPointF(9, 3.5), QPointF(14, 3.5));
  p.fillRect(QRectF(8, 6.2, 3.2, 3.2), ink.line);
  p.drawLine(QPointF(13.2, 7.8), QPointF(14.4, 7.8));
  p.fillRect(QRectF(8, 10.9, 3.2, 3.2), ink.line);
  p.drawLine(QPointF(13.2, 12.5), QPointF(14.4, 12.5));
}

// Two rows, and an arrow from each to the other.
void DrawSynchronize(QPainter& p, const PictureInk& ink) {
  QColor fill = ink.accent;
  fill.setAlphaF(fill.alphaF() * 0.35f);
  for (const QRectF& row : {QRectF(1.6, 1.8, 9, 3.6), QRectF(5.4, 10.6, 9, 3.6)}) {
    p.fillRect(row, fill);
    p.setPen(Pen(ink.line));
    p.drawRect(row);
  }
  p.setPen(Pen(ink.accent, 1.4));
  p.drawPolyline(QPolygonF({{10.9, 3.6}, {13, 3.6}, {13, 8.6}}));
  p.drawPolyline(QPolygonF({{11.2, 7}, {13, 8.8}, {14.8, 7}}));
  p.drawPolyline(QPolygonF({{5.1, 12.4}, {3, 12.4}, {3, 7.4}}));
  p.drawPolyline(QPolygonF({{1.2, 9}, {3, 7.2}, {4.8, 9}}));
}

void DrawPause(QPainter& p, const PictureInk& ink) {
  p.setPen(Qt::NoPen);
  p.setBrush(ink.accent);
  p.drawRoundedRect(QRectF(3.6, 2.6, 3.2, 10.8), 0.8, 0.8);
  p.drawRoundedRect(QRectF(9.2, 2.6, 3.2, 10.8), 0.8, 0.8);
}

void DrawCopy(QPainter& p, const PictureInk& ink) {
  QPainterPath back;
  back.moveTo(4, 11);
  back.lineTo(2.5, 11);
  back.lineTo(2.5, 2.2);
  back.lineTo(9.5, 2.2);
  back.lineTo(9.5, 4);
  p.setPen(Pen(ink.line));
  p.drawPath(back);
  p.drawRoundedRect(QRectF(6, 5, 7.5, 9), 0.6, 0.6);
  p.setPen(Pen(ink.accent, 1.2));
  p.drawLine(QPointF(8, 8), QPointF(11.5, 8));
  p.drawLine(QPointF(8, 11), QPointF(11.5, 11));
}

void DrawFind(QPainter& p, const PictureInk& ink) {
  p.setPen(Pen(ink.line, 1.5));
  p.drawEllipse(QPointF(6.8, 6.6), 4.2, 4.2);
  p.setPen(Pen(ink.accent, 2.2));
  p.drawLine(QPointF(10.4, 10.2), QPointF(13.6, 13.4));
}

const std::map<unsigned, DrawPicture>& Pictures() {
  static const std::map<unsigned, DrawPicture> pictures = {
      {ID_EDIT_CLEAR_ALL, DrawClear}, {ID_FILE_OPEN, DrawOpen},
      {ID_FILE_SAVE, DrawSave},       {ID_VIEW_OPTIONS, DrawOptions},
      {ID_VIEW_PROC, DrawTree},       {ID_VIEW_SYNCHRONIZE, DrawSynchronize},
      {ID_VIEW_PAUSE, DrawPause},     {ID_EDIT_COPY, DrawCopy},
      {ID_EDIT_FIND, DrawFind},
  };
  return pictures;
}

}  // namespace

DrawPicture PictureOf(unsigned command) {
  const auto found = Pictures().find(command);
  return found == Pictures().end() ? nullptr : found->second;
}
