// The cells of a table on the screen.
#pragma once

#include <QAbstractItemModel>
#include <QStringList>
#include <string>

// "Net|Open|Off" for each row, separated by blanks.
inline std::string RowTexts(const QAbstractItemModel& rows) {
  QStringList texts;
  for (int row = 0; row < rows.rowCount(); ++row) {
    QStringList cells;
    for (int column = 0; column < rows.columnCount(); ++column)
      cells << rows.index(row, column).data().toString();
    texts << cells.join('|');
  }
  return texts.join(' ').toStdString();
}
