// The fake is a list box: it passes the contract that the control on the screen passes.
#include "support/fake_list_box.h"

#include "support/list_box_contract.h"

namespace {

class FakeHarness {
 public:
  FakeHarness(ListBoxOwner& owner, ListBoxMode mode) : m_box(owner, mode) {}
  ListBox& Box() { return m_box; }
  void SetPage(int items) { m_box.SetPage(items); }
  void Click(int item, bool control = false) { m_box.Click(item, control); }
  void DoubleClick(int item) { m_box.DoubleClick(item); }
  void RightClick(int item) { m_box.RightClick(item); }
  bool Press(ListBoxKey key) { return m_box.Press(key); }

 private:
  FakeListBox m_box;
};

INSTANTIATE_TYPED_TEST_SUITE_P(Fake, ListBoxContract, FakeHarness);

}  // namespace
