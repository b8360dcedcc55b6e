#include "quor/client/stream/live_batch.h"

#include "quor/protocol/frames.h"

class LiveBatch::Filler final : public DataSink {
 public:
  explicit Filler(LiveBatch& batch) : m_batch(batch) {}
  void OnName(HubNameId id, std::string_view utf8) override {
    m_batch.m_names.push_back({m_batch.m_events.size(), id, utf8});
  }
  void OnTrace(const std::uint8_t* record, std::size_t) override {
    m_batch.m_events.emplace_back(record, m_batch);
    if (RawTrace(record).SequenceNumber() != kNoSequenceNumber) ++m_batch.m_numbered;
  }

 private:
  LiveBatch& m_batch;
};

void LiveTraceEvent_t::Release() {
  m_batch->Drop();
}

LiveBatch* LiveBatch::Read(::Bytes body, std::string* why) {
  auto* const batch = new LiveBatch;
  batch->m_bytes.assign(body.begin(), body.end());
  Filler filler(*batch);
  if (ReadDataBody(batch->m_bytes, filler, why)) return batch;
  delete batch;
  return nullptr;
}

LiveBatch* LiveBatch::Own(const std::vector<std::uint8_t>& body) {
  LiveBatch* const batch = Read(body, nullptr);
  if (batch) batch->MarkOwn();
  return batch;
}

std::uint8_t* LiveBatch::Record(std::size_t index) {
  return m_bytes.data() + (m_events[index].Record() - m_bytes.data());
}

TraceEvent_i* LiveBatch::Give(std::size_t index) {
  ++m_holders;
  return &m_events[index];
}
