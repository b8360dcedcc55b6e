// What a fake list shows of its rows: it asks its owner as a list on the screen does when it
// paints.
#pragma once

#include <map>

#include "support/fake_row_list.h"
#include "support/row_sight.h"

class FakeRowPainter {
 public:
  // Any colours, as long as they differ.
  static constexpr std::uint32_t kGround = 0xfefefe, kSelected = 0x3070d0;
  static constexpr std::uint32_t kWarn = 0xfff0c0, kError = 0xffd0d0;

  FakeRowPainter(FakeRowList& list, RowListOwner& owner) : m_list(list), m_owner(owner) {}

  // The rows on view, none while the list is hidden or does not paint.
  std::map<int, RowSight> Paint() {
    std::map<int, RowSight> seen;
    if (hidden || !m_list.redraw) return seen;
    m_owner.OnRowListPaint(true);
    const int end = std::min(m_list.TopIndex() + m_list.CountPerPage(), m_list.ItemCount());
    for (int row = m_list.TopIndex(); row < end; ++row) seen[row] = SightOf(row);
    m_owner.OnRowListPaint(false);
    return seen;
  }

  bool hidden = false;

 private:
  RowSight SightOf(int row) {
    RowSight sight;
    sight.ground = kGround;
    if (m_list.GetItemState(row) & kRowSelected) {
      sight.ground = kSelected;
    } else if (const auto colours = m_owner.RowListColours(row)) {
      sight.ground = colours->ground;
    } else if (const RowTint tint = m_owner.RowListTint(row); tint != RowTint::None) {
      sight.ground = tint == RowTint::Warn ? kWarn : kError;
    }
    if (const auto mark = m_owner.RowListMark(row)) {
      if (mark->number != 0) sight.stripe = mark->colours.ground;
      sight.box = true;
    }
    return sight;
  }

  FakeRowList& m_list;
  RowListOwner& m_owner;
};
