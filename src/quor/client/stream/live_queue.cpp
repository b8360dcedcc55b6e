#include "quor/client/stream/live_queue.h"

#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <algorithm>

namespace {

constexpr int kPauseWithoutDescriptor = 20;

}  // namespace

LiveQueue::LiveQueue(std::size_t bytesMax)
    : m_bytesMax(bytesMax), m_arrived(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {}

LiveQueue::~LiveQueue() {
  if (m_arrived >= 0) close(m_arrived);
  for (LiveBatch* const batch : m_batches) batch->Forget();
}

void LiveQueue::Append(LiveBatch* batch) {
  m_bytes += batch->Bytes();
  m_traces += batch->Traces();
  m_delivered += batch->Numbered();
  m_batches.push_back(batch);
  if (m_batches.size() == 1 && m_arrived >= 0) eventfd_write(m_arrived, 1);
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

void LiveQueue::Await(int milliseconds) {
  {
    const std::lock_guard lock(m_mutex);
    if (!m_batches.empty()) return;
  }
  if (m_arrived < 0) milliseconds = std::min(milliseconds, kPauseWithoutDescriptor);
  pollfd arrived{m_arrived, POLLIN, 0};
  eventfd_t ignored = 0;
  if (poll(&arrived, 1, milliseconds) > 0) eventfd_read(m_arrived, &ignored);
}

std::size_t LiveQueue::Traces() const {
  const std::lock_guard lock(m_mutex);
  return m_traces;
}

std::uint64_t LiveQueue::Delivered() const {
  const std::lock_guard lock(m_mutex);
  return m_delivered;
}
