// The tree on the screen: buttons, lines and labels, painted from the items. Only visible rows are
// painted.
//
// Shape    The vertical scroll bar counts rows, the horizontal one pixels. It is our own view,
//          because the library's lays out all shown rows again for each insertion, and in a live
//          stream a thread with hundreds of thousands of traces may be open.
// Threads  Interface thread.
#pragma once

#include <QAbstractScrollArea>

#include "controls/tree/tree_items.h"
#include "controls/tree/ui/tree_input.h"
#include "controls/tree/ui/tree_painter.h"
#include "docview/ui/qt_control.h"

class QtTreeControl final : public QAbstractScrollArea, public TreeControl, public QtControl {
  Q_OBJECT

 public:
  // `name` is its name for assistive technology.
  QtTreeControl(TreeControlOwner& owner, const QString& name, QWidget* parent = nullptr);
  ~QtTreeControl() override;

  QWidget* Widget() override { return this; }
  void SetFocus() override { setFocus(Qt::OtherFocusReason); }

  TreeItem InsertItem(TreeItem above, TreeItemData word, bool hasChildren) override;
  void DeleteItem(TreeItem item) override;
  TreeItemData ItemData(TreeItem item) const override { return m_items.ItemData(item); }
  unsigned ItemState(TreeItem item) const override { return m_items.ItemState(item); }
  TreeItem Walk(TreeItem from, TreeStep step) const override { return m_items.Walk(from, step); }
  void ItemTextChanged(TreeItem item) override;
  void Expand(TreeItem item, bool open) override;
  TreeItem SelectedItem() const override { return m_selected; }
  void SelectItem(TreeItem item) override;
  void EnsureVisible(TreeItem item) override;
  std::int64_t RowsOf(TreeItem item) const override { return m_items.RowsOf(item); }
  void ShowHit(TreeItem item) override;
  bool IsOnScreen(TreeItem item) const override;
  void SetRedraw(bool on) override;
  void Repaint() override { viewport()->update(); }

  // For the classes that paint, handle input and describe the tree.
  TreeControlOwner& Owner() const { return m_owner; }
  const TreeItems& Items() const { return m_items; }
  const TreePainter& Painter() const { return m_painter; }
  int RowHeight() const { return m_rowHeight; }
  std::int64_t TopRow() const { return m_top; }
  std::int64_t RowsPerPage() const;  // fully visible rows, at least one
  std::int64_t RowsOnView() const;   // rows with items, including one that is cut at the bottom
  int LeftPx() const { return m_leftPx; }
  TreeItem ItemAt(int yPx) const;  // 0 below the last row
  QRect RowRect(std::int64_t row) const;
  void ScrollTo(std::int64_t top);
  void ScrollAcrossTo(int leftPx);

 protected:
  bool viewportEvent(QEvent* event) override;
  void paintEvent(QPaintEvent* event) override;
  void resizeEvent(QResizeEvent* event) override;
  void changeEvent(QEvent* event) override;
  void scrollContentsBy(int dx, int dy) override;
  void keyPressEvent(QKeyEvent* event) override;
  void mousePressEvent(QMouseEvent* event) override;
  void mouseReleaseEvent(QMouseEvent* event) override;
  void mouseDoubleClickEvent(QMouseEvent* event) override;
  void contextMenuEvent(QContextMenuEvent* event) override;
  void focusInEvent(QFocusEvent* event) override;
  void focusOutEvent(QFocusEvent* event) override;

 private:
  bool OpenAbove(TreeItem item);
  TreeItem SelectionAfterDelete(TreeItem item) const;
  void MoveSelection(TreeItem item);
  void RowsChanged();
  void UpdateScrollBars();
  void RepaintFrom(std::int64_t row);

  TreeControlOwner& m_owner;
  TreeItems m_items;
  TreePainter m_painter;
  TreeInput m_input;
  TreeItem m_selected = 0;
  std::int64_t m_top = 0;  // the first visible row
  int m_leftPx = 0;
  int m_widthPx = 0;  // the greatest width of a visible row since an item was closed
  int m_rowHeight = 1;
  std::int64_t m_pageRows = 1;  // RowsPerPage() at the last layout
  bool m_barsWait = false;      // the scroll bars are updated after the current event
  bool m_setting = false;       // the scroll bars are being set
};
