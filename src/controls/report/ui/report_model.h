// The rows of a report list as a model that asks the list's owner.
#pragma once

#include <QAbstractTableModel>
#include <QStringList>

#include "controls/report/report_list.h"

class ReportModel final : public QAbstractTableModel {
 public:
  ReportModel(ReportListOwner& owner, QObject* parent)
      : QAbstractTableModel(parent), m_owner(owner) {}

  void AddColumn(const QString& heading, ReportAlign align);
  void SetRows(int rows);
  void RowsChanged();
  std::vector<ReportMark> MarksOf(const QModelIndex& index) const {
    return m_owner.ReportMarks(index.row(), index.column());
  }

  int rowCount(const QModelIndex& parent = {}) const override;
  int columnCount(const QModelIndex& parent = {}) const override;
  QVariant data(const QModelIndex& index, int role) const override;
  QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

 private:
  int AlignmentOf(int column) const;  // for the roles of Qt

  ReportListOwner& m_owner;
  QStringList m_headings;
  std::vector<ReportAlign> m_aligns;
  int m_rows = 0;
};
