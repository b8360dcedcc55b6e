// The rows, the focus and the selection of a list whose filter texts are applied in the background,
// by the plain rules.
#pragma once

#include <algorithm>
#include <functional>
#include <optional>
#include <set>
#include <vector>

#include "records/trace_event.h"

class PlainRows {
 public:
  using Event = const TraceEvent_i*;
  using Events = std::vector<Event>;

  // ---- what happens
  // A text begins: these rows it has among the traces that are held.
  void Begin(Events rows) {
    if (!m_pass) m_pass.emplace();
    // What is shown of the text before stays until there is a page of this one.
    m_pass->rows = std::move(rows);
    m_pass->late.clear();
    m_pass->isShown = false;
  }
  // The list was emptied and filled anew, with this many rows of the pass, or with all.
  void Show(std::size_t count) {
    if (m_pass && !m_pass->isKept && (m_focus || !m_wanted))
      m_pass->before = States{m_focus, m_selected};
    ForgetStates();
    if (!m_pass) return;
    m_pass->isKept = m_pass->isShown = true;
    m_shown.assign(m_pass->rows.begin(), m_pass->rows.begin() + Place(count));
  }
  void Grow(std::size_t count) {
    m_shown.assign(m_pass->rows.begin(), m_pass->rows.begin() + Place(count));
  }
  void Complete() {
    if (!m_pass) return;
    m_complete = m_pass->rows;
    m_complete.insert(m_complete.end(), m_pass->late.begin(), m_pass->late.end());
    m_pass.reset();
    m_shown = m_complete;
  }
  void Cancel() {
    if (!m_pass) return;
    if (m_pass->isKept) ForgetStates();
    if (m_pass->isKept && m_pass->before) {
      m_focus = m_pass->before->focus;
      m_selected = m_pass->before->selected;
      m_wanted = nullptr;
    }
    m_pass.reset();
    m_shown = m_complete;
  }
  // All at once.
  void Replace(Events rows) {
    ForgetStates();
    m_complete = m_shown = std::move(rows);
    Decide();
  }
  void Clear() {
    m_pass.reset();
    m_complete.clear();
    m_shown.clear();
    m_focus = m_wanted = nullptr;
    m_selected.clear();
  }
  // `before`, `now`: those of the new traces that the text in force and the new one let through.
  void Add(const Events& before, const Events& now) {
    Append(m_complete, before);
    if (m_pass) Append(m_pass->late, now);
    if (!m_pass || !m_pass->isKept) m_shown = m_complete;
  }
  void Remove(Event event) {
    for (Events* const rows : {&m_complete, &m_shown}) std::erase(*rows, event);
    if (m_pass) std::erase(m_pass->rows, event);
    if (m_pass) std::erase(m_pass->late, event);
    if (m_pass && m_pass->before) {
      m_pass->before->selected.erase(event);
      if (m_pass->before->focus == event) m_pass->before->focus = nullptr;
    }
    if (m_focus == event) m_focus = nullptr;
    if (m_wanted == event) m_wanted = nullptr;
    m_selected.erase(event);
  }
  void Click(std::size_t row, bool adds) {
    m_focus = m_shown[row];
    if (!adds) m_selected.clear();
    m_selected.insert(m_focus);
    m_wanted = nullptr;
    if (m_pass) m_pass->before.reset();
  }
  void Follow(Event target) {
    m_wanted = target;
    if (m_pass) m_pass->before.reset();
    Decide();
  }
  // The wanted trace, or the nearest by number, once the rows tell which. None of all rows: none.
  void Decide() {
    if (!m_wanted) return;
    const std::optional<std::size_t> row = Nearest();
    if (!row && m_pass && m_pass->isKept) return;
    m_focus = row ? m_shown[*row] : nullptr;
    m_selected.clear();
    if (row) m_selected.insert(m_focus);
    m_wanted = nullptr;
  }
  void EndSearch() { m_wanted = nullptr; }

  // ---- what must be seen
  const Events& Shown() const { return m_shown; }
  bool IsUnderWay() const { return m_pass.has_value(); }
  bool IsShown() const { return m_pass && m_pass->isShown; }
  // Of the pass, without those that came late.
  const Events& Coming() const { return m_pass->rows; }
  Event Focus() const { return m_focus; }
  bool IsSelected(Event event) const { return m_selected.contains(event); }

 private:
  struct States {
    Event focus;
    std::set<Event> selected;
  };
  struct Pass {
    Events rows, late;
    bool isKept = false;   // other rows are shown than those that are in force
    bool isShown = false;  // and they are those of this pass
    std::optional<States> before =
        {};  // of the rows that are in force, unless the user chose since
  };

  static std::ptrdiff_t Place(std::size_t count) { return static_cast<std::ptrdiff_t>(count); }
  static void Append(Events& rows, const Events& more) {
    rows.insert(rows.end(), more.begin(), more.end());
  }
  void ForgetStates() {
    if (m_focus) m_wanted = m_focus;
    m_focus = nullptr;
    m_selected.clear();
  }
  std::optional<std::size_t> Nearest() const {
    const std::uint32_t wanted = m_wanted->GetSequenceNumber();
    for (std::size_t row = 0; row < m_shown.size(); ++row) {
      if (m_shown[row] == m_wanted) return row;
      const std::uint32_t number = m_shown[row]->GetSequenceNumber();
      if (number <= wanted) continue;
      const bool before =
          row > 0 && wanted - m_shown[row - 1]->GetSequenceNumber() <= number - wanted;
      return before ? row - 1 : row;
    }
    return std::nullopt;
  }

  Events m_complete, m_shown;
  std::optional<Pass> m_pass;
  Event m_focus = nullptr, m_wanted = nullptr;
  std::set<Event> m_selected;
};
