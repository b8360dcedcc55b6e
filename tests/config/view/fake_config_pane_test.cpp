#include "support/fake_config_pane.h"

#include "support/config_pane_contract.h"

namespace {

struct FakeConfigPaneHarness {
  explicit FakeConfigPaneHarness(ListBoxOwner& owner) : pane(owner) {}
  ConfigPane& Pane() { return pane; }
  std::string Note() const { return pane.Note(); }
  bool ListHasFocus() { return pane.List().HasFocus(); }
  FakeConfigPane pane;
};

}  // namespace

INSTANTIATE_TYPED_TEST_SUITE_P(Fake, ConfigPaneContract, FakeConfigPaneHarness);
