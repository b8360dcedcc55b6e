// The search for a trace's place in the tree as long work. If the numbers of its threads have begun
// again more than once, all their nodes may have to be visited.
//
// Owner    Borrows model and trace. REQUIRES: neither changes until it is done.
// Threads  Interface thread.
#pragma once

#include <algorithm>

#include "docview/dialogs/long_work.h"
#include "tree/proc/model/proc_model.h"

class NodeSearch final : public LongWork {
 public:
  NodeSearch(ProcModel& model, const TraceEvent_i& event)
      : m_model(model), m_event(event), m_walks(event, ThreadWalks::Way::InParts) {}

  bool DoPart() override {
    m_walks.DoPart();
    if (!m_walks.AnyLeft()) m_place = m_model.FindNode(m_event, m_walks);
    return !m_walks.AnyLeft();
  }
  std::optional<int> Progress() const override {
    const auto all = static_cast<std::uint64_t>(m_model.TraceCount());
    return Thousandths(std::min<std::uint64_t>(m_walks.Visited(), all), all);
  }
  NodePosition Place() const { return m_place; }

 private:
  ProcModel& m_model;
  const TraceEvent_i& m_event;
  ThreadWalks m_walks;
  NodePosition m_place;
};
