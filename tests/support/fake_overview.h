// An overview without a window.
//
// Owner    The slot belongs to the test and outlives the face.
#pragma once

#include "overview/window/overview_strip.h"

class FakeOverview : public OverviewFace {
 public:
  static constexpr int kWidthPx = 1000, kLeastBarPx = 4, kMostBarPx = 16;

  // `slot` points to this face while it exists and no other was made.
  FakeOverview(OverviewStrip& strip, FakeOverview*& slot) : m_strip(strip), m_slot(slot) {
    m_slot = this;
    m_strip.SetSize(kWidthPx, kLeastBarPx, kMostBarPx);
  }
  ~FakeOverview() override {
    if (m_slot == this) m_slot = nullptr;
  }
  void SetFocus() override { m_focus = true; }
  bool HasFocus() const override { return m_focus; }
  void Update() override { ++m_updates; }

  OverviewStrip& m_strip;
  bool m_focus = false;
  int m_updates = 0;

 private:
  FakeOverview*& m_slot;
};
