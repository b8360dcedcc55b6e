// The base of the tests of the row list contract: a list made by a harness, and an owner that
// records.
#pragma once

#include <gtest/gtest.h>

#include <string>

#include "support/recording_row_list_owner.h"
#include "support/trace_columns.h"

template <class Harness>
class RowListFixture : public testing::Test {
 protected:
  static constexpr unsigned kBoth = kRowFocused | kRowSelected;

  RowListFixture() : m_harness(m_owner) { m_owner.list = &List(); }
  ~RowListFixture() override { m_owner.list = nullptr; }

  RowList& List() { return m_harness.List(); }
  ListHeader& Header() { return List().Header(); }
  void Fill(int rows, int page) {
    List().SetItemCount(rows);
    m_harness.ShowRows(page);
    m_owner.Reported();
  }
  // The states of the first rows, a digit each.
  std::string States(int rows) {
    std::string states;
    for (int row = 0; row < rows; ++row) states += std::to_string(List().GetItemState(row));
    return states;
  }
  void InsertColumns(int widthPx) { InsertTraceColumns(Header(), widthPx); }

  RecordingRowListOwner m_owner;
  Harness m_harness;
};
