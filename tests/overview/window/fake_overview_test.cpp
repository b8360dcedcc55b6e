#include "support/fake_overview.h"

#include "support/overview_contract.h"

namespace {

class FakeHarness : public OverviewOnShow {
 public:
  FakeHarness() { m_strip.SetFace(&m_face); }
  FakeOverview& Face() { return m_face; }
  void ShowAt(int width) {
    m_strip.SetSize(width, FakeOverview::kLeastBarPx, FakeOverview::kMostBarPx);
  }
  void Click(int px) { Drag(px, px); }
  void Drag(int from, int to) {
    m_strip.Press(from);
    m_strip.Drag(to);
    m_strip.Release(to);
  }
  void DoubleClick(int px) {
    Click(px);
    m_strip.ZoomOut();
  }
  void Turn(int px, int notches) { m_strip.Wheel(px, notches); }
  void OpenMenu() { m_strip.OpenMenu(0, 0); }
  void Press(OverviewStrip::Key key, bool shift) { m_strip.OnKey(key, shift); }

 private:
  FakeOverview* m_slot = nullptr;
  FakeOverview m_face{m_strip, m_slot};
};

INSTANTIATE_TYPED_TEST_SUITE_P(Fake, OverviewContract, FakeHarness);

}  // namespace
