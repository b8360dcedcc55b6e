#include "quor/client/stream/live_queue.h"

LiveQueue::~LiveQueue() {
  for (LiveBatch* const batch : m_batches) batch->Forget();
}

void LiveQueue::Append(LiveBatch* batch) {
  m_bytes += batch->Bytes();
  m_traces += batch->Traces();
  m_delivered += batch->Numbered();
  m_batches.push_back(batch);
}

bool LiveQueue::Push(LiveBatch* batch) {
  const std::lock_guard lock(m_mutex);
  if (m_bytes + batch->Bytes() > m_bytesMax) return false;
  Append(batch);
  return true;
}

void LiveQueue::PushAlways(LiveBatch* batch) {
  const std::lock_guard lock(m_mutex);
  Append(batch);
}

bool LiveQueue::IsHalfEmpty() const {
  const std::lock_guard lock(m_mutex);
  return m_bytes <= m_bytesMax / 2;
}

std::deque<LiveBatch*> LiveQueue::Take(std::size_t traces) {
  std::deque<LiveBatch*> taken;
  const std::lock_guard lock(m_mutex);
  for (std::size_t count = 0; !m_batches.empty() && count < traces; m_batches.pop_front()) {
    LiveBatch* const batch = m_batches.front();
    count += batch->Traces();
    m_bytes -= batch->Bytes();
    m_traces -= batch->Traces();
    taken.push_back(batch);
  }
  return taken;
}

std::size_t LiveQueue::Traces() const {
  const std::lock_guard lock(m_mutex);
  return m_traces;
}

std::uint64_t LiveQueue::Delivered() const {
  const std::lock_guard lock(m_mutex);
  return m_delivered;
}
