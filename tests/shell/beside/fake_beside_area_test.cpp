#include "support/fake_beside_area.h"

#include "support/beside_area_contract.h"
#include "support/plain_trace_pane.h"

namespace {

class FakeAreaHarness {
 public:
  BesideArea& Area() { return m_area; }
  RecordingAreaOwner& Owner() { return m_owner; }
  ViewControl& Control(std::size_t i) { return m_controls[i]; }
  std::string Tabs() const { return m_area.Tabs(); }
  bool IsSeen(std::size_t i) const {
    return m_area.m_tabs.at(m_area.m_front).control == &m_controls[i];
  }
  bool ControlHasFocus(std::size_t i) const { return m_controls[i].m_focused > 0; }
  void ClickTab(std::size_t place) {
    m_area.SetFront(place);
    m_owner.OnTab(place);
  }
  void ClickClose(std::size_t place) { m_owner.OnCloseTab(place); }

 private:
  RecordingAreaOwner m_owner;
  PlainControl m_controls[3];
  FakeBesideArea* m_slot = nullptr;
  FakeBesideArea m_area{m_owner, m_slot};
};

INSTANTIATE_TYPED_TEST_SUITE_P(Fake, BesideAreaContract, FakeAreaHarness);

}  // namespace
