// The base of the tests of the row list contract: a list made by a rig, and an owner that records.
#pragma once

#include <gtest/gtest.h>

#include <string>

#include "support/recording_row_list_owner.h"
#include "support/trace_columns.h"

template <class Rig>
class RowListFixture : public testing::Test {
 protected:
  static constexpr unsigned kBoth = kRowFocused | kRowSelected;

  RowListFixture() : m_rig(m_owner) { m_owner.list = &List(); }
  ~RowListFixture() override { m_owner.list = nullptr; }

  RowList& List() { return m_rig.List(); }
  ListHeader& Header() { return List().Header(); }
  void Fill(int rows, int page) {
    List().SetItemCount(rows);
    m_rig.ShowRows(page);
    m_owner.Told();
  }
  // The states of the first rows, a digit each.
  std::string States(int rows) {
    std::string states;
    for (int row = 0; row < rows; ++row) states += std::to_string(List().GetItemState(row));
    return states;
  }
  void InsertColumns(int widthPx) { InsertTraceColumns(Header(), widthPx); }

  RecordingRowListOwner m_owner;
  Rig m_rig;
};
