// The fake is a row list: it passes the contract that the control on the screen passes.
#include "support/fake_row_list.h"

#include "support/row_list_contract.h"

namespace {

class FakeHarness {
 public:
  explicit FakeHarness(RowListOwner& owner) : m_owner(owner), m_list(owner) {}
  RowList& List() { return m_list; }
  void ShowRows(int rows) { m_list.SetPage(rows); }
  void Hide() {}
  void RightClickHeader(ListColumn column) { m_owner.OnHeaderContextMenu(column, 0, 0); }
  void ShowAgain(int rows) { ShowRows(rows); }

 private:
  RowListOwner& m_owner;
  FakeRowList m_list;
};

INSTANTIATE_TYPED_TEST_SUITE_P(Fake, RowStateContract, FakeHarness);
INSTANTIATE_TYPED_TEST_SUITE_P(Fake, RowScrollContract, FakeHarness);
INSTANTIATE_TYPED_TEST_SUITE_P(Fake, RowColumnContract, FakeHarness);

}  // namespace
