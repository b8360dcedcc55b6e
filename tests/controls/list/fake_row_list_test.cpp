// The fake is a row list: it passes the contract that the control on the screen passes.
#include "support/fake_row_list.h"

#include "support/fake_row_sight.h"
#include "support/row_list_contract.h"

namespace {

class FakeHarness {
 public:
  explicit FakeHarness(RowListOwner& owner) : m_owner(owner), m_list(owner) {}
  RowList& List() { return m_list; }
  void ShowRows(int rows) { m_list.SetPage(rows); }
  void Hide() { m_painter.hidden = true; }
  void RightClickHeader(ListColumn column) { m_owner.OnHeaderContextMenu(column, 0, 0); }
  void ShowAgain(int rows) {
    m_painter.hidden = false;
    ShowRows(rows);
  }
  RowSight See(int row) {
    const std::map<int, RowSight> seen = m_painter.Paint();
    return seen.count(row) ? seen.at(row) : RowSight();
  }
  void Paint() { m_painter.Paint(); }
  bool PressDelete(bool shift) { return !shift && m_owner.OnRowListDelete(); }
  void SetLetters(int) {}  // a page is given in rows

 private:
  RowListOwner& m_owner;
  FakeRowList m_list;
  FakeRowPainter m_painter{m_list, m_owner};
};

INSTANTIATE_TYPED_TEST_SUITE_P(Fake, RowStateContract, FakeHarness);
INSTANTIATE_TYPED_TEST_SUITE_P(Fake, RowScrollContract, FakeHarness);
INSTANTIATE_TYPED_TEST_SUITE_P(Fake, RowColumnContract, FakeHarness);
INSTANTIATE_TYPED_TEST_SUITE_P(Fake, RowLookContract, FakeHarness);

}  // namespace
