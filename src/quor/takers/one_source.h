// A batch of several sources as batches of one source each, as takers get them.
//
// Shape    The records of a source keep their order. Between sources the order of a batch is lost,
//          which is the order of 20 ms. What the batch says of forgotten sources comes last.
// Threads  The service's one thread.
#pragma once

#include <memory>
#include <vector>

#include "quor/hub/batch.h"

class OneSource {
 public:
  explicit OneSource(HubNames& names) : m_names(names) {}
  // The batch itself if it is of one source.
  std::vector<SharedBatch> Of(const SharedBatch& batch) const;

 private:
  HubNames& m_names;
  std::shared_ptr<BatchMemory> m_memory = std::make_shared<BatchMemory>();
};
