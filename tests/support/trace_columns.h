// A list with the columns of traces.
#pragma once

#include "controls/list/row_list.h"
#include "listview/columns/columns.h"

inline ListColumnInfo ListColumnOf(const ColumnInfo& column) {
  return {column.header, column.align, column.column == Column::Sev};
}

inline void InsertTraceColumns(ListHeader& header, int widthPx) {
  for (const ColumnInfo& column : kColumns) header.InsertColumn(ListColumnOf(column), widthPx);
}
