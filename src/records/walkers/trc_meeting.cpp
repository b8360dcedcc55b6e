#include "records/walkers/trc_meeting.h"

#include <algorithm>
#include <utility>

#include "records/trc_walk.h"
#include "records/walkers/trc_guess.h"

TrcMeeting::TrcMeeting(Bytes file, const TrcWalkers& walkers, TrcParts& parts)
    : m_file(file),
      m_parts(parts),
      m_ahead(2 * std::size_t{walkers.count}),
      m_front(kTrcHeaderBytes),
      m_walked(kTrcHeaderBytes) {
  const std::uint64_t size = std::max<std::uint64_t>(file.size(), kTrcHeaderBytes);
  const std::uint64_t left = size - kTrcHeaderBytes;
  const std::uint64_t chunks = left == 0 ? 1 : (left - 1) / walkers.chunkBytes + 1;
  m_chunks = std::vector<Chunk>(static_cast<std::size_t>(chunks));
  for (std::size_t i = 0; i < m_chunks.size(); ++i)
    m_chunks[i].limit =
        i + 1 == m_chunks.size() ? file.size() : kTrcHeaderBytes + (i + 1) * walkers.chunkBytes;
}

std::uint64_t TrcMeeting::StartOf(std::size_t chunk) const {
  return chunk == 0 ? kTrcHeaderBytes : m_chunks[chunk - 1].limit;
}

void TrcMeeting::Work() noexcept {
  try {
    WorkOn();
  } catch (...) {
    const Lock lock(m_mutex);
    m_over = m_cancelled = true;
    if (!m_error) m_error = std::current_exception();
  }
  m_changed.notify_all();
}

std::uint64_t TrcMeeting::Reached() {
  if (m_error) std::rethrow_exception(m_error);
  return m_front;
}

void TrcMeeting::WorkOn() {
  Lock lock(m_mutex);
  while (!m_over) {
    if (IsGapOpen()) {
      WalkGap(lock);
    } else if (MayBegin()) {
      WalkChunk(m_next++, lock);
    } else {
      m_changed.wait(lock);
      continue;
    }
    TakeParts();
    m_changed.notify_all();
  }
}

bool TrcMeeting::MayBegin() const {
  return !m_cancelled && m_next < m_chunks.size() && m_next < m_frontChunk + m_ahead;
}

// Is there something to walk between the front and the chunk's part?
bool TrcMeeting::IsGapOpen() const {
  const Chunk& chunk = m_chunks[m_frontChunk];
  const bool hasBegun = chunk.state == State::Walking || chunk.state == State::Done;
  return !m_cancelled && !m_inGap && hasBegun && chunk.begin != m_front;
}

void TrcMeeting::WalkGap(Lock& lock) {
  m_inGap = true;
  Chunk& chunk = m_chunks[m_frontChunk];
  const bool passed = chunk.begin < m_front;
  if (passed) chunk.isVoid = true;
  const std::uint64_t from = m_front,
                      limit = passed ? chunk.limit : std::min(chunk.begin, chunk.limit);
  lock.unlock();
  const std::unique_ptr<TrcPart> part = m_parts.NewPart(from, limit);
  const std::uint64_t reached = Walk(*part, from, limit, nullptr);
  lock.lock();
  m_inGap = false;
  if (m_over) return;
  m_parts.Take(*part);
  m_front = reached;
}

void TrcMeeting::WalkChunk(std::size_t number, Lock& lock) {
  Chunk& chunk = m_chunks[number];
  const std::uint64_t limit = chunk.limit;
  std::uint64_t begin = m_front;
  if (number != m_frontChunk) {
    chunk.state = State::Guessing;
    lock.unlock();
    begin = GuessTrcRecord(m_file, StartOf(number), limit).value_or(kNowhere);
    lock.lock();
  }
  chunk.begin = begin;
  chunk.state = begin == kNowhere ? State::Done : State::Walking;
  if (begin == kNowhere || chunk.isVoid || m_over) return;
  // The front may have come meanwhile, and there may be a gap to walk.
  m_changed.notify_all();
  lock.unlock();
  std::unique_ptr<TrcPart> part = m_parts.NewPart(begin, limit);
  const std::uint64_t end = Walk(*part, begin, limit, &chunk.isVoid);
  lock.lock();
  chunk.end = end;
  chunk.state = State::Done;
  if (!chunk.isVoid) chunk.part = std::move(part);
}

std::uint64_t TrcMeeting::Walk(TrcPart& part, std::uint64_t from, std::uint64_t limit,
                               const std::atomic<bool>* isVoid) {
  std::uint64_t counted = from;
  const auto look = [&](std::uint64_t position) {
    const std::uint64_t more = position - std::exchange(counted, position);
    const std::uint64_t walked = m_walked.fetch_add(more, std::memory_order_relaxed) + more;
    if (!m_parts.OnProgress(std::min<std::uint64_t>(walked, m_file.size()))) m_cancelled = true;
    return !m_cancelled.load(std::memory_order_relaxed) &&
           !(isVoid && isVoid->load(std::memory_order_relaxed));
  };
  return part.Walk(m_file, from, limit, look);
}

// Moves the front over all that follows it.
void TrcMeeting::TakeParts() {
  while (!m_over && !m_inGap) {
    Chunk& chunk = m_chunks[m_frontChunk];
    if (chunk.part && chunk.begin == m_front) {
      m_parts.Take(*chunk.part);
      m_front = chunk.end;
      chunk.part.reset();
      chunk.begin = kNowhere;
    }
    const bool comes = chunk.state == State::Walking && chunk.begin == m_front;
    const bool isLast = m_frontChunk + 1 == m_chunks.size();
    if (m_cancelled ? !comes : m_front >= chunk.limit && isLast) {
      m_over = true;
    } else if (m_front >= chunk.limit && !isLast) {
      chunk.isVoid = true;
      chunk.part.reset();
      ++m_frontChunk;
      m_next = std::max(m_next, m_frontChunk);
    } else {
      return;
    }
  }
}
