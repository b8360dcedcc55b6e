#include "workers/piece_threads.h"

#include <algorithm>
#include <system_error>
#include <thread>

std::size_t PieceThreads::Processors() {
  return std::max(std::thread::hardware_concurrency(), 1U);
}

std::size_t PieceThreads::Start(const std::shared_ptr<PieceThreads>& work, std::size_t threads) {
  std::size_t begun = 0;
  for (threads = std::min(threads, work->m_pieces); begun < threads; ++begun) {
    {
      const std::lock_guard lock(work->m_mutex);
      ++work->m_running;
    }
    try {
      std::thread([work] { work->Run(); }).detach();
    } catch (const std::system_error&) {
      const std::lock_guard lock(work->m_mutex);
      --work->m_running;
      break;
    }
  }
  return begun;
}

void PieceThreads::Run() {
  try {
    const std::unique_ptr<Hand> hand = MakeHand();
    while (!IsStopped()) {
      const std::size_t piece = m_next.fetch_add(1, std::memory_order_relaxed);
      if (piece >= m_pieces) break;
      hand->Do(piece);
    }
  } catch (...) {
    Stop();
    m_failed.store(true, std::memory_order_release);
    OnFailure();
  }
  const std::lock_guard lock(m_mutex);
  --m_running;
  m_ended.notify_all();
}

bool PieceThreads::WaitForEnd(std::chrono::milliseconds time) {
  std::unique_lock lock(m_mutex);
  return m_ended.wait_for(lock, time, [this] { return m_running == 0; });
}
