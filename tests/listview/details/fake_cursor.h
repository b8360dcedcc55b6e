// A cursor over traces of its own that records its steps.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "listview/details/trace_iterator.h"
#include "support/make_event.h"

class FakeCursor final : public CTraceIterator {
 public:
  void Add(const TraceFields& fields) { m_traces.push_back(MakeEvent(fields)); }
  void AddNothing() { m_traces.emplace_back(); }
  void StandAt(std::size_t place) {
    m_place = static_cast<std::ptrdiff_t>(place);
    Look();
  }
  void Clear() { m_traces.clear(); }
  std::string TakeSteps() { return std::exchange(m_steps, {}); }

  void Next() override { Step(1, "next"); }
  void Prev() override { Step(-1, "prev"); }
  bool HasNext() const override {
    return m_place + 1 < static_cast<std::ptrdiff_t>(m_traces.size());
  }
  bool HasPrev() const override { return m_place > 0; }

 private:
  void Step(std::ptrdiff_t by, const char* word) {
    m_place += by;
    m_steps += (m_steps.empty() ? "" : " ") + std::string(word);
    Look();
  }
  void Look() {
    const bool there = m_place >= 0 && m_place < static_cast<std::ptrdiff_t>(m_traces.size());
    current = there ? m_traces[static_cast<std::size_t>(m_place)].get() : nullptr;
  }

  std::vector<EventPtr> m_traces;
  std::ptrdiff_t m_place = 0;
  std::string m_steps;
};
