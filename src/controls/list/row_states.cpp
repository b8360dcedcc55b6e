#include "controls/list/row_states.h"

#include <algorithm>
#include <limits>
#include <utility>

RowStates::RowStates(Notify notify, Repaint repaint)
    : m_notify(std::move(notify)), m_repaint(std::move(repaint)) {}

void RowStates::SetCount(int count) {
  m_count = std::max(count, 0);
  const Row end = m_base + m_count;
  for (RowRanges* rows : {&m_selected, &m_besides})
    rows->Remove(end, std::numeric_limits<Row>::max() - 1);
  if (m_focus >= end) m_focus = -1;
  if (m_anchor >= end) m_anchor = -1;
}

void RowStates::Delete(int first, int count) {
  const Row begin = m_base + first;
  for (Row* mark : {&m_focus, &m_anchor})
    if (*mark >= begin && *mark < begin + count) *mark = -1;
  m_count -= count;
  if (first == 0) {
    m_base += count;
    for (RowRanges* rows : {&m_selected, &m_besides}) rows->Remove(0, m_base - 1);
    return;
  }
  for (Row* mark : {&m_focus, &m_anchor})
    if (*mark >= begin + count) *mark -= count;
  for (RowRanges* rows : {&m_selected, &m_besides}) rows->Close(begin, count);
}

unsigned RowStates::StateOf(int row) const {
  if (!Exists(row)) return 0;
  const Row absolute = m_base + row;
  return (absolute == m_focus ? kRowFocused : 0u) |
         (m_selected.Contains(absolute) ? kRowSelected : 0u);
}

int RowStates::Next(int after, unsigned states) const {
  const Row from = m_base + std::max(after, -1) + 1;
  const Row selected = states & kRowSelected ? m_selected.FirstFrom(from) : -1;
  const Row focused = states & kRowFocused && m_focus >= from ? m_focus : -1;
  if (selected == -1 || focused == -1) return Relative(std::max(selected, focused));
  return Relative(std::min(selected, focused));
}

void RowStates::Set(int row, unsigned state, unsigned mask) {
  if (!Exists(row)) return;
  const Row absolute = m_base + row;
  Row focus = m_focus;
  if (mask & kRowFocused) {
    if (state & kRowFocused)
      focus = absolute;
    else if (focus == absolute)
      focus = -1;
  }
  const bool gainsFocus = focus != m_focus && focus != -1;
  Change(focus, row, [&] {
    if (!(mask & kRowSelected)) return;
    if (state & kRowSelected)
      m_selected.Add(absolute, absolute);
    else
      m_selected.Remove(absolute, absolute);
    if (gainsFocus) SetAnchor(row);
  });
}

void RowStates::SetAll(unsigned state, unsigned mask) {
  // All rows can be selected, but only one focused.
  const Row focus = mask & kRowFocused && !(state & kRowFocused) ? -1 : m_focus;
  Change(focus, -1, [&] {
    if (!(mask & kRowSelected)) return;
    m_selected.Clear();
    if (state & kRowSelected) m_selected.Add(m_base, m_base + m_count - 1);
  });
  m_repaint(0, m_count - 1);
}

void RowStates::Select(const RowRanges& rows) {
  Change(m_focus, -1, [&] {
    m_selected = rows.MovedBy(m_base);
    m_selected.Remove(m_base + m_count, std::numeric_limits<Row>::max() - 1);
  });
  m_repaint(0, m_count - 1);
}

void RowStates::Pick(int row) {
  Change(m_base + row, row, [&] {
    m_selected.Clear();
    m_selected.Add(m_base + row, m_base + row);
    SetAnchor(row);
  });
  m_repaint(0, m_count - 1);
}

void RowStates::Toggle(int row) {
  const Row absolute = m_base + row;
  Change(absolute, row, [&] {
    if (m_selected.Contains(absolute))
      m_selected.Remove(absolute, absolute);
    else
      m_selected.Add(absolute, absolute);
    SetAnchor(row);
  });
}

void RowStates::Extend(int row, bool adding) {
  const Row absolute = m_base + row;
  if (m_anchor == -1) SetAnchor(m_focus == -1 ? row : Focus());
  Change(absolute, row, [&] {
    if (adding)
      m_selected = m_besides;
    else
      m_selected.Clear();
    m_selected.Add(std::min(m_anchor, absolute), std::max(m_anchor, absolute));
  });
  m_repaint(0, m_count - 1);
}

void RowStates::MoveFocus(int row) {
  Change(m_base + row, row, [] {});
}

void RowStates::ClearSelection() {
  SetAll(0, kRowSelected);
}

void RowStates::Change(Row focus, int row, const std::function<void()>& select) {
  const int oldFocus = Focus();
  const unsigned oldFocusState = StateOf(oldFocus), oldState = StateOf(row);
  select();
  m_focus = focus;
  if (oldFocus != row) NotifyChange(oldFocus, oldFocusState);
  NotifyChange(row, oldState);
}

void RowStates::NotifyChange(int row, unsigned oldState) {
  const unsigned newState = StateOf(row);
  if (newState == oldState) return;
  m_repaint(row, row);
  m_notify(row, oldState, newState);
}

void RowStates::SetAnchor(int row) {
  m_anchor = m_base + row;
  m_besides = m_selected;
}
