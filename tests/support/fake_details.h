// The details of a trace without a window.
//
// Owner    The slot belongs to the test and outlives the face.
#pragma once

#include <string>

#include "shell/details/details_pane.h"

class FakeDetails final : public DetailsFace {
 public:
  // `slot` points to this face while it exists and no other was made.
  FakeDetails(DetailsPane& pane, FakeDetails*& slot) : m_pane(pane), m_slot(slot) { m_slot = this; }
  ~FakeDetails() override {
    if (m_slot == this) m_slot = nullptr;
  }
  void SetFocus() override { ++m_focused; }
  void Update() override {
    ++m_updates;
    UpdateRows();
    m_message = m_pane.Message();
    m_text = m_pane.Body().Shown();
    m_hidden = m_pane.Body().HiddenBytes();
    m_hits = m_pane.Body().Hits();
  }
  void UpdateRows() override {
    m_rows.clear();
    for (const DetailRow& row : m_pane.Rows()) m_rows += row.caption + "=" + row.value + "\n";
  }

  DetailsPane& m_pane;
  int m_updates = 0, m_focused = 0;
  std::string m_message, m_text, m_rows;  // as shown last
  std::size_t m_hidden = 0;
  std::vector<HitRange> m_hits;

 private:
  FakeDetails*& m_slot;
};
