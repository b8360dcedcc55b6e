#include "controls/report/ui/report_cells.h"

#include <QAbstractItemView>
#include <QApplication>
#include <QHelpEvent>
#include <QPainter>
#include <QToolTip>
#include <algorithm>

#include "controls/report/ui/report_model.h"
#include "docview/ui/mixed_color.h"
#include "docview/ui/plain_tool_tip.h"

namespace {

constexpr int kRowMarginPx = 4, kGapPx = 3, kBehindMarksPx = 6;
constexpr qreal kRound = 1.5;
constexpr double kFocusAccent = 0.35;

std::vector<ReportMark> MarksOf(const QModelIndex& index) {
  const auto* const model = dynamic_cast<const ReportModel*>(index.model());
  return model ? model->MarksOf(index) : std::vector<ReportMark>();
}

int MarkPx(const QStyleOptionViewItem& option) {
  return option.fontMetrics.ascent() * 3 / 4;
}

int MarksPx(const QStyleOptionViewItem& option, std::size_t marks) {
  return marks == 0 ? 0 : static_cast<int>(marks) * (MarkPx(option) + kGapPx) + kBehindMarksPx;
}

// The tones are those of the severities in the lists of traces. Plain ones are grey.
QColor ToneColor(ReportMark::Tone tone, const QColor& text, const QColor& paper) {
  switch (tone) {
    case ReportMark::Tone::Info:
      return QColor(0x2f, 0x7d, 0xe1);
    case ReportMark::Tone::Warn:
      return QColor(0xe8, 0xa3, 0x1a);
    case ReportMark::Tone::Error:
      return QColor(0xd6, 0x3a, 0x3a);
    default:
      return Mixed(paper, text, 0.6);
  }
}

struct CellColors {
  QColor text, paper;
  bool selected;
};

CellColors ColorsOf(const QStyleOptionViewItem& option) {
  const bool selected = option.state & QStyle::State_Selected;
  const QPalette::ColorGroup group =
      option.state & QStyle::State_Active ? QPalette::Active : QPalette::Inactive;
  return {option.palette.color(group, selected ? QPalette::HighlightedText : QPalette::Text),
          option.palette.color(group, selected ? QPalette::Highlight : QPalette::Base), selected};
}

// On a selected row the tones would not stand out: all marks have the colour of the text.
void PaintMark(QPainter& painter, const QRectF& square, const ReportMark& mark,
               const CellColors& colors) {
  const QColor on = colors.selected ? colors.text : ToneColor(mark.tone, colors.text, colors.paper);
  painter.setPen(mark.on ? on : Mixed(colors.paper, colors.text, 0.35));
  painter.setBrush(mark.on ? QBrush(on) : QBrush(Qt::NoBrush));
  painter.drawRoundedRect(square, kRound, kRound);
}

void PaintMarks(QPainter& painter, const QStyleOptionViewItem& option, const QRect& rect,
                const std::vector<ReportMark>& marks) {
  const CellColors colors = ColorsOf(option);
  const int side = MarkPx(option);
  painter.save();
  painter.setClipRect(rect);
  painter.setRenderHint(QPainter::Antialiasing);
  const int topPx = rect.top() + (rect.height() - side) / 2;
  QRectF square(rect.left() + 0.5, topPx + 0.5, side - 1, side - 1);
  for (const ReportMark& mark : marks) {
    PaintMark(painter, square, mark, colors);
    square.translate(side + kGapPx, 0);
  }
  painter.restore();
}

// A row without a mark that is on is quieter than the others.
bool IsQuiet(const std::vector<ReportMark>& marks) {
  return std::none_of(marks.begin(), marks.end(), [](const ReportMark& mark) { return mark.on; });
}

// The row that the keys move from, while the list has the keyboard.
bool IsFocusedRow(const QStyleOptionViewItem& option, const QModelIndex& index) {
  const auto* const view = qobject_cast<const QAbstractItemView*>(option.widget);
  return view && view->hasFocus() && view->currentIndex().row() == index.row();
}

// A frame around the focused row: the style's own would look like a selection.
void PaintFocus(QPainter& painter, const QStyleOptionViewItem& option, const QModelIndex& index) {
  const QRect rect = option.rect.adjusted(0, 0, -1, -1);
  painter.setPen(Mixed(option.palette.color(QPalette::Highlight),
                       option.palette.color(QPalette::Text), kFocusAccent));
  painter.drawLine(rect.topLeft(), rect.topRight());
  painter.drawLine(rect.bottomLeft(), rect.bottomRight());
  if (index.column() == 0) painter.drawLine(rect.topLeft(), rect.bottomLeft());
  if (index.column() == index.model()->columnCount() - 1)
    painter.drawLine(rect.topRight(), rect.bottomRight());
}

const QStyle& StyleOf(const QStyleOptionViewItem& option) {
  return option.widget ? *option.widget->style() : *QApplication::style();
}

}  // namespace

void ReportCells::paint(QPainter* painter, const QStyleOptionViewItem& option,
                        const QModelIndex& index) const {
  const std::vector<ReportMark> marks = MarksOf(index);
  QStyleOptionViewItem cell = option;
  cell.state &= ~(QStyle::State_HasFocus | QStyle::State_MouseOver);
  if (marks.empty())
    QStyledItemDelegate::paint(painter, cell, index);
  else
    PaintMarked(*painter, cell, index, marks);
  if (IsFocusedRow(option, index)) PaintFocus(*painter, option, index);
}

void ReportCells::PaintMarked(QPainter& painter, QStyleOptionViewItem cell,
                              const QModelIndex& index,
                              const std::vector<ReportMark>& marks) const {
  initStyleOption(&cell, index);
  const QString text = cell.text;
  const QStyle& style = StyleOf(cell);
  const QRect all = style.subElementRect(QStyle::SE_ItemViewItemText, &cell, cell.widget);
  cell.text.clear();
  style.drawControl(QStyle::CE_ItemViewItem, &cell, &painter, cell.widget);
  const int margin = style.pixelMetric(QStyle::PM_FocusFrameHMargin, nullptr, cell.widget) + 1;
  const QRect inside = all.adjusted(margin, 0, -margin, 0);
  PaintMarks(painter, cell, inside, marks);
  const QRect rest = inside.adjusted(MarksPx(cell, marks.size()), 0, 0, 0);
  if (rest.width() <= 0) return;
  const CellColors colors = ColorsOf(cell);
  painter.setPen(IsQuiet(marks) ? Mixed(colors.paper, colors.text, 0.65) : colors.text);
  painter.drawText(rest, Qt::AlignVCenter | Qt::TextSingleLine,
                   cell.fontMetrics.elidedText(text, Qt::ElideRight, rest.width()));
}

QSize ReportCells::sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const {
  const QSize size = QStyledItemDelegate::sizeHint(option, index);
  return {size.width() + MarksPx(option, MarksOf(index).size()), size.height() + kRowMarginPx};
}

bool ReportCells::helpEvent(QHelpEvent* event, QAbstractItemView* view,
                            const QStyleOptionViewItem& option, const QModelIndex& index) {
  if (event->type() != QEvent::ToolTip) return false;
  if (!index.isValid() || sizeHint(option, index).width() <= option.rect.width()) {
    QToolTip::hideText();
    return true;
  }
  QToolTip::showText(event->globalPos(), PlainToolTip(index.data().toString()), view);
  return true;
}
