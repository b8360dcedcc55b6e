// The traces of a document that pass a filter, for threads that count them.
//
// Owner    Shares the traces; has copies of the filter and of the names. Each reader has a filter
//          and a matcher of its own.
// Threads  Made on the interface thread; a reader is for one thread.
#pragma once

#include <memory>

#include "documents/trace_doc.h"
#include "statistics/trace_count.h"
#include "tree/filter/filter_pass.h"

class FilteredTraces final : public CountedTraces {
 public:
  FilteredTraces(std::shared_ptr<const LentTraces> lent, const CTraceFilter& filter,
                 const CTraceDoc& document);

  std::size_t Size() const override { return m_lent->traces.size(); }
  std::unique_ptr<Reader> MakeReader() const override;

 private:
  class Walk;

  const std::shared_ptr<const LentTraces> m_lent;
  const CTraceFilter m_filter;
  const NameMap m_names;
  const WhereClock m_clock;
};
