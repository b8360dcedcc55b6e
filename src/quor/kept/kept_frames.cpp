#include "quor/kept/kept_frames.h"

#include <utility>

namespace {

// A frame without records costs its ledger and its place.
constexpr std::size_t kFrameBytes = 256;

std::size_t BytesOf(const Outgoing& frame) {
  return frame.records->size() + (frame.names ? frame.names->size() : 0) + kFrameBytes;
}

}  // namespace

const Outgoing& KeptFrames::Keep(Outgoing frame) {
  m_bytes += BytesOf(frame);
  return m_frames.emplace_back(std::move(frame));
}

bool KeptFrames::Take(std::uint64_t frames, const std::function<void(const Batch&)>& each) {
  if (frames < m_taken || frames > Sent()) return false;
  for (; m_taken < frames; ++m_taken) {
    m_bytes -= BytesOf(m_frames.front());
    if (each) each(*m_frames.front().batch);
    m_frames.pop_front();
  }
  return true;
}

std::uint64_t KeptFrames::Traces() const {
  std::uint64_t traces = 0;
  for (const Outgoing& frame : m_frames) traces += frame.batch->traces;
  return traces;
}

std::vector<SharedBatch> KeptFrames::Withdraw() {
  std::vector<SharedBatch> batches;
  for (const Outgoing& frame : std::exchange(m_frames, {})) batches.push_back(frame.batch);
  m_bytes = 0;
  return batches;
}
