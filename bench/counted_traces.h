// All traces of a list as those that are counted.
#pragma once

#include <memory>

#include "records/trace_list.h"
#include "statistics/trace_count.h"

class AllTraces final : public CountedTraces {
 public:
  explicit AllTraces(const TraceList_t& list) : m_list(list) {}
  std::size_t Size() const override { return m_list.size(); }
  std::unique_ptr<Reader> MakeReader() const override { return std::make_unique<Walk>(m_list); }

 private:
  class Walk final : public Reader {
   public:
    explicit Walk(const TraceList_t::Reader& list) : m_list(list) {}
    void Take(std::size_t from, std::size_t end, Events& events) override {
      m_list.ForEachIn(from, end, [&](const TraceEvent_i* event) { events.push_back(event); });
    }

   private:
    const TraceList_t::Reader& m_list;
  };
  const TraceList_t::Reader m_list;
};
