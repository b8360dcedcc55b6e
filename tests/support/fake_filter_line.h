// A line of filter text without a window.
//
// Owner    The slot belongs to the test and outlives the face.
#pragma once

#include "shell/filterline/filter_line.h"

class FakeFilterLine : public FilterLineFace {
 public:
  // `slot` points to this face while it exists and no other was made.
  FakeFilterLine(FilterLine& line, FakeFilterLine*& slot) : m_line(line), m_slot(slot) {
    m_slot = this;
  }
  ~FakeFilterLine() override {
    if (m_slot == this) m_slot = nullptr;
  }
  void SetFocus() override { m_focus = true; }
  bool HasFocus() const override { return m_focus; }
  void Update() override {
    ++m_updates;
    m_text = m_line.Text();
    m_message = m_line.Message();
    m_percent = m_line.Percent();
  }

  FilterLine& m_line;
  bool m_focus = false;
  int m_updates = 0;
  std::string m_text, m_message;  // as shown last
  std::optional<int> m_percent;

 private:
  FakeFilterLine*& m_slot;
};
