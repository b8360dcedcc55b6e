// The row list on the screen: a real header, and below it rows that are painted from their owner's
// data. Only visible rows are painted.
//
// Shape    The vertical scroll bar counts rows, the horizontal one pixels. The number of rows is
//          any int; no cost depends on it.
// Threads  Interface thread.
#pragma once

#include <QAbstractScrollArea>
#include <memory>
#include <optional>

#include "controls/list/row_list.h"
#include "controls/list/row_states.h"
#include "controls/list/ui/row_header.h"
#include "controls/list/ui/row_icons.h"
#include "controls/list/ui/row_input.h"
#include "controls/list/ui/row_painter.h"
#include "controls/list/ui/to_end_button.h"
#include "docview/ui/qt_control.h"

class QtRowList final : public QAbstractScrollArea, public RowList, public QtControl {
  Q_OBJECT

 public:
  // `name` is its name for assistive technology.
  QtRowList(RowListOwner& owner, std::unique_ptr<RowIcons> icons, const QString& name,
            QWidget* parent = nullptr);
  ~QtRowList() override;

  QWidget* Widget() override { return this; }
  void SetFocus() override { setFocus(Qt::OtherFocusReason); }

  void SetItemCount(int rows) override;
  int ItemCount() const override { return m_states.Count(); }
  void DeleteRows(int first, int count) override;
  void SetItemState(int row, unsigned state, unsigned mask) override;
  unsigned GetItemState(int row) const override { return m_states.StateOf(row); }
  int NextItem(int after, unsigned states) const override { return m_states.Next(after, states); }
  int SelectedCount() const override { return m_states.SelectedCount(); }
  RowRanges Selection() const override { return m_states.Selection(); }
  void Select(const RowRanges& rows) override { m_states.Select(rows); }
  int TopIndex() const override;
  int CountPerPage() const override { return m_pageRows; }
  void EnsureVisible(int row) override;
  void ShowHit(int row, ListColumn column) override;
  void SetRedraw(bool on) override;
  void Repaint() override { viewport()->update(); }
  void ShowEndMark(bool on) override;
  ListHeader& Header() override { return m_header; }
  std::optional<ListColumn> ColumnAtScreen(int screenXPx) const override {
    return ColumnAt(viewport()->mapFromGlobal(QPoint(screenXPx, 0)).x());
  }

  // For the classes that paint, handle input and describe the list.
  RowListOwner& Owner() const { return m_owner; }
  RowStates& States() { return m_states; }
  const RowStates& States() const { return m_states; }
  const RowHeader& Columns() const { return m_header; }
  RowIcons& Icons() const { return *m_icons; }
  int RowHeight() const { return m_rowHeight; }
  void ScrollTo(int topRow);
  bool IsAtEnd() const { return TopIndex() + m_pageRows >= ItemCount(); }
  bool ShowsEndMark() const { return m_endMark; }
  // The button that leads to the end; null while the list is there.
  QWidget* ToEnd() { return m_toEnd.isVisibleTo(this) ? &m_toEnd : nullptr; }
  QString CellText(int row, ListColumn column) const;  // in one line
  int IconOf(int row) const;                           // -1: none
  // In the viewport; -1 for a point outside the rows, none for one outside the columns.
  int RowAt(int yPx) const;
  std::optional<ListColumn> ColumnAt(int xPx) const;
  QRect RowRect(int row) const;
  QRect CellRect(int row, ListColumn column) const;

 protected:
  bool viewportEvent(QEvent* event) override;
  void paintEvent(QPaintEvent* event) override;
  void resizeEvent(QResizeEvent* event) override;
  void changeEvent(QEvent* event) override;
  void scrollContentsBy(int dx, int dy) override;
  void keyPressEvent(QKeyEvent* event) override;
  void mousePressEvent(QMouseEvent* event) override;
  void mouseMoveEvent(QMouseEvent* event) override;
  void mouseReleaseEvent(QMouseEvent* event) override;
  void mouseDoubleClickEvent(QMouseEvent* event) override;
  void contextMenuEvent(QContextMenuEvent* event) override;
  void focusInEvent(QFocusEvent* event) override;
  void focusOutEvent(QFocusEvent* event) override;

 private:
  int FitWidth(ListColumn column) const;
  void LayOut();
  void UpdateToEnd();
  void UpdateScrollBars();
  void RepaintRows(int first, int last);

  RowListOwner& m_owner;
  const std::unique_ptr<RowIcons> m_icons;
  RowStates m_states;
  RowHeader m_header;
  RowPainter m_painter;
  RowInput m_input;
  ToEndButton m_toEnd;
  int m_rowHeight = 1;
  // As of the last layout. The viewport may be newer: a hidden one changes without an event, and
  // its next event no longer has the earlier size.
  int m_pageRows = 1;
  bool m_endMark = false;
  bool m_holdPicture = false;  // the visible rows stay while the scroll bar moves
};
