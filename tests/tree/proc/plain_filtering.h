// The trees of a view whose filter texts are applied in the background, by the plain rules.
#pragma once

#include <algorithm>
#include <deque>
#include <optional>
#include <set>
#include <vector>

#include "tree/proc/model/plain_tree.h"

class PlainFiltering {
 public:
  using Event = const TraceEvent_i*;
  using Events = std::vector<Event>;

  explicit PlainFiltering(const NameMap& names)
      : m_names(names), m_shown(std::make_unique<PlainTree>(names)) {}

  // ---- what happens
  // A text begins: these it has among the traces that are held.
  void Begin(const Events& events) {
    m_pass.emplace(m_names);
    m_pass->left.assign(events.begin(), events.end());
  }
  // The new tree has so many traces by now, counted with those that were removed again.
  void File(int count) {
    for (; m_pass->filed < count; ++m_pass->filed) {
      const Event event = m_pass->left.front();
      m_pass->left.pop_front();
      m_pass->tree->AddTrace(event, false);
      m_pass->inTree.insert(event);
    }
  }
  // All of them. Gives their number.
  int Complete() {
    File(m_pass->filed + static_cast<int>(m_pass->left.size()));
    const int count = m_pass->filed;
    m_pass->tree->UpdateDurations();
    m_shown = std::move(m_pass->tree);
    m_pass.reset();
    return count;
  }
  void Cancel() { m_pass.reset(); }
  // All at once.
  void Replace(const Events& events) {
    m_pass.reset();
    m_shown->Clear();
    for (const Event event : events) m_shown->AddTrace(event, false);
    m_shown->UpdateDurations();
  }
  // `before`, `now`: those of the new traces that the text in force and the new one let through.
  void Add(const Events& before, const Events& now) {
    for (const Event event : before) m_shown->AddTrace(event, true);
    if (m_pass) m_pass->left.insert(m_pass->left.end(), now.begin(), now.end());
  }
  void Remove(Event event) {
    m_shown->RemoveTrace(event);
    if (!m_pass) return;
    if (m_pass->inTree.erase(event)) m_pass->tree->RemoveTrace(event);
    std::erase(m_pass->left, event);
  }
  void Removed() {
    m_shown->UpdateDurations();
    if (m_pass) m_pass->tree->UpdateDurations();
  }

  // ---- what must be seen
  bool IsUnderWay() const { return m_pass.has_value(); }
  PlainTree& Shown() { return *m_shown; }
  // The node of the trace, or the nearest one; null: none is near.
  PlainTree::Node* NodeOf(Event event) {
    const PlainTree::Place place = m_shown->FindNode(event);
    return place.in ? place.in->children[place.at] : nullptr;
  }

 private:
  struct Pass {
    explicit Pass(const NameMap& names) : tree(std::make_unique<PlainTree>(names)) {}
    std::unique_ptr<PlainTree> tree;
    std::deque<Event> left;  // not filed yet
    std::set<Event> inTree;
    int filed = 0;
  };

  const NameMap& m_names;
  std::unique_ptr<PlainTree> m_shown;
  std::optional<Pass> m_pass;
};
