// The area of the panes beside the rows, without a window.
//
// Owner    The slot belongs to the test and outlives the area.
#pragma once

#include <algorithm>
#include <string>
#include <vector>

#include "shell/beside/beside_area.h"

class FakeBesideArea final : public BesideArea {
 public:
  // `slot` points to this area while it exists and no other was made.
  FakeBesideArea(BesideAreaOwner& owner, FakeBesideArea*& slot) : m_owner(owner), m_slot(slot) {
    m_slot = this;
  }
  ~FakeBesideArea() override {
    if (m_slot == this) m_slot = nullptr;
  }

  void SetFocus() override {
    if (m_tabs.empty()) return;
    m_focus = true;
    m_tabs[m_front].control->SetFocus();
  }
  void InsertTab(std::size_t place, const std::string& title, ViewControl& control) override {
    place = std::min(place, m_tabs.size());
    m_tabs.insert(m_tabs.begin() + static_cast<std::ptrdiff_t>(place), {title, &control});
    if (m_tabs.size() > 1 && place <= m_front) ++m_front;
  }
  void RemoveTab(std::size_t place) override {
    if (place >= m_tabs.size()) return;
    m_tabs.erase(m_tabs.begin() + static_cast<std::ptrdiff_t>(place));
    if (place < m_front || m_front == m_tabs.size()) m_front -= m_front > 0 ? 1 : 0;
    if (m_tabs.empty()) m_focus = false;
  }
  void SetTabTitle(std::size_t place, const std::string& title) override {
    if (place < m_tabs.size()) m_tabs[place].title = title;
  }
  void SetFront(std::size_t place) override {
    if (place < m_tabs.size()) m_front = place;
  }
  std::size_t Front() const override { return m_front; }
  bool HasFocus() const override { return m_focus; }

  // "Details *Marks": the one in front has the star.
  std::string Tabs() const {
    std::string all;
    for (std::size_t at = 0; at < m_tabs.size(); ++at)
      all += (at ? " " : "") + std::string(at == m_front ? "*" : "") + m_tabs[at].title;
    return all;
  }

  struct Tab {
    std::string title;
    ViewControl* control;
  };
  BesideAreaOwner& m_owner;
  std::vector<Tab> m_tabs;
  std::size_t m_front = 0;
  bool m_focus = false;  // a test takes it away as a user does

 private:
  FakeBesideArea*& m_slot;
};
