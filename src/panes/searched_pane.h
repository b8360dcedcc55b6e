// All hits of the last search in a pane, as far as they are counted.
//
// Threads  Interface thread.
#pragma once

#include <functional>
#include <memory>

#include "tree/find/count/hit_count.h"

class SearchedPane {
 public:
  // Null: nothing was searched here.
  const HitCount* Hits() const { return m_hitCount.get(); }
  // Calls visit for the traces with a known hit, of very many for as many of them, evenly spread.
  static constexpr int kHitsVisited = 20'000;
  virtual void VisitHits(const std::function<void(const TraceEvent_i&)>& visit) const;

 protected:
  ~SearchedPane() = default;
  // Begins to count those of the pattern that was prepared last, unless they are counted already:
  // the next hit of the same search changes nothing in their number.
  void CountHits(CTraceDoc& document, std::unique_ptr<CountedRows> rows);

  std::unique_ptr<HitCount> m_hitCount;
};
