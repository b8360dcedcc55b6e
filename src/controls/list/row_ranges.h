// A set of row numbers, stored as ranges: all rows are one range.
//
// Shape    Disjoint ranges that do not touch, in ascending order; ends belong to the range.
// Cost     By the number of ranges touched, never by the number of rows.
#pragma once

#include <cstdint>
#include <map>

class RowRanges {
 public:
  using Row = std::int64_t;

  bool Contains(Row row) const;
  Row Count() const { return m_count; }
  // The first row of the set that is not before `from`, -1 for none.
  Row FirstFrom(Row from) const;

  void Clear();
  void Add(Row first, Row last);
  void Remove(Row first, Row last);
  // Removes rows from the numbering: later rows move up by `count` with their membership.
  void Close(Row first, Row count);
  // The same rows with other numbers. REQUIRES: no number becomes negative.
  RowRanges MovedBy(Row rows) const;

 private:
  std::map<Row, Row> m_lastByFirst;
  Row m_count = 0;
};
