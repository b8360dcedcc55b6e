// The report list on the screen.
//
// Ctrl+1 and following act like clicks on the headings. Enter goes to the window.
//
// Threads  Interface thread.
#pragma once

#include <QTreeView>

#include "controls/report/report_list.h"

class ReportModel;

class QtReportList final : public QTreeView, public ReportList {
 public:
  QtReportList(ReportListOwner& owner, const QString& spokenName, QWidget* parent = nullptr);

  void InsertColumn(const std::string& heading, ReportAlign align) override;
  int ColumnWidth(int column) const override { return columnWidth(column); }
  int WidthFor(const std::string& text) const override;
  void ShowSort(int column, bool descending) override;
  void SetItemCount(int rows) override;
  int ItemCount() const override;
  void Repaint() override;
  std::vector<int> SelectedRows() const override;
  bool HasSelection() const override;

  // The size that it opens with; it can become smaller.
  void SetWantedSize(const QSize& size) { m_wanted = size; }
  QSize sizeHint() const override { return m_wanted.isEmpty() ? QTreeView::sizeHint() : m_wanted; }

 protected:
  void selectionChanged(const QItemSelection& selected, const QItemSelection& deselected) override;
  void paintEvent(QPaintEvent* event) override;
  void resizeEvent(QResizeEvent* event) override;
  void mouseDoubleClickEvent(QMouseEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;

 private:
  void LayOutColumns();

  ReportListOwner& m_owner;
  ReportModel* m_model;
  QSize m_wanted;
  bool m_made = false;  // the owner may be called
  bool m_layingOut = false;
  bool m_dragged = false;  // the user has set a width
};
