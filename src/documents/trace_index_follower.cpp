#include "documents/trace_index_follower.h"

#include <algorithm>
#include <system_error>
#include <utility>

#include "records/trc_walk.h"

namespace {

constexpr std::size_t kBytesMin = 1024 * 1024;

struct Noting {
  TraceIndexes& indexes;

  void OnName(NameId, std::string_view) {}
  void OnTrace(const std::uint8_t* record) { indexes.Note(RawTrace(record)); }
  void OnUnknownTag(std::uint64_t) {}
  bool OnProgress(std::uint64_t) { return true; }
};

}  // namespace

std::unique_ptr<TraceIndexFollower> TraceIndexFollower::Start(Bytes file, TraceIndexes& indexes) {
  if (file.size() < kBytesMin || std::thread::hardware_concurrency() < 2) return nullptr;
  try {
    return std::make_unique<TraceIndexFollower>(file, indexes);
  } catch (const std::system_error&) {
    return nullptr;
  }
}

TraceIndexFollower::TraceIndexFollower(Bytes file, TraceIndexes& indexes)
    : m_file(file), m_indexes(indexes), m_reached(kTrcHeaderBytes), m_thread([this] { Run(); }) {}

TraceIndexFollower::~TraceIndexFollower() {
  if (!m_thread.joinable()) return;
  Wake(kLast);  // nothing before it, and the last
  m_thread.join();
}

void TraceIndexFollower::Wake(std::uint64_t position) {
  m_wakeAt = position + kBytesPerWake;
  m_reached.store(position, std::memory_order_release);
  m_reached.notify_one();
}

void TraceIndexFollower::Finish(std::uint64_t position) {
  Wake(position | kLast);
  m_thread.join();
  if (m_error) std::rethrow_exception(std::exchange(m_error, nullptr));
}

void TraceIndexFollower::Run() noexcept {
  try {
    std::uint64_t position = kTrcHeaderBytes, reached = kTrcHeaderBytes;
    while ((reached & kLast) == 0) {
      m_reached.wait(reached, std::memory_order_acquire);
      reached = m_reached.load(std::memory_order_acquire);
      const std::uint64_t end = std::min<std::uint64_t>(reached & ~kLast, m_file.size());
      position = WalkTrc(m_file.first(end), Noting{m_indexes}, position);
    }
  } catch (...) {
    m_error = std::current_exception();
  }
}
