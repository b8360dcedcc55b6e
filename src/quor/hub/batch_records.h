// The records of a batch, one after the other, and whose each is.
//
// Threads  One, that of the hub.
#pragma once

#include "quor/hub/batch.h"

// Calls `take(record)` for each record, without its tag.
template <class Take>
void ForEachRecord(const Batch& batch, Take&& take) {
  const std::uint8_t* at = batch.records.data();
  const std::uint8_t* const end = at + batch.records.size();
  while (at != end) {
    at += kTagBytes;
    const std::size_t bytes = RawHubTrace(at).Size();
    take(Bytes(at, bytes));
    at += bytes;
  }
}

// Call Next once for each record, in order.
class SourceOfRecord {
 public:
  explicit SourceOfRecord(const Batch& batch) : m_batch(batch) {}
  // The place of its source in the batch's sources.
  std::size_t Next() {
    const SourceRun& run = m_batch.runs[m_run];
    if (++m_taken == run.records) {
      ++m_run;
      m_taken = 0;
    }
    return run.source;
  }

 private:
  const Batch& m_batch;
  std::size_t m_run = 0;
  std::uint32_t m_taken = 0;
};
