#include "controls/report/ui/report_model.h"

#include "controls/text/ui/row_text.h"
#include "docview/ui/plain_tool_tip.h"

namespace {

constexpr std::size_t kTextBytes = 4096;  // names come from other machines

}  // namespace

void ReportModel::AddColumn(const QString& heading, ReportAlign align) {
  const int place = static_cast<int>(m_headings.size());
  beginInsertColumns({}, place, place);
  m_headings << heading;
  m_aligns.push_back(align);
  endInsertColumns();
}

void ReportModel::SetRows(int rows) {
  beginResetModel();
  m_rows = rows;
  endResetModel();
}

void ReportModel::RowsChanged() {
  if (m_rows == 0 || m_headings.empty()) return;
  emit dataChanged(index(0, 0), index(m_rows - 1, columnCount() - 1));
}

int ReportModel::rowCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : m_rows;
}

int ReportModel::columnCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : static_cast<int>(m_headings.size());
}

int ReportModel::AlignmentOf(int column) const {
  const bool right = m_aligns[static_cast<std::size_t>(column)] == ReportAlign::Right;
  return (right ? Qt::AlignRight : Qt::AlignLeft) | Qt::AlignVCenter;
}

QVariant ReportModel::data(const QModelIndex& index, int role) const {
  if (!index.isValid()) return {};
  if (role == Qt::TextAlignmentRole) return AlignmentOf(index.column());
  if (role != Qt::DisplayRole) return {};
  return CellLine(m_owner.ReportText(index.row(), index.column()), kTextBytes);
}

QVariant ReportModel::headerData(int section, Qt::Orientation orientation, int role) const {
  if (orientation != Qt::Horizontal || section >= m_headings.size()) return {};
  if (role == Qt::DisplayRole) return m_headings[section];
  if (role == Qt::TextAlignmentRole) return AlignmentOf(section);
  if (role == Qt::ToolTipRole)
    return PlainToolTip(
        QStringLiteral("Sorts by %1 (Ctrl+%2)").arg(m_headings[section]).arg(section + 1));
  return {};
}
