#include "quor/monitors/monitor_stream.h"

#include <utility>

MonitorStream::MonitorStream(Hub& hub, Connection& connection, const StreamLimits& limits,
                             std::optional<uid_t> only)
    : m_hub(hub), m_connection(connection), m_queue(hub.Names(), limits), m_only(only) {}

MonitorStream::~MonitorStream() {
  m_hub.Remove(*this);
}

void MonitorStream::Start() {
  m_hub.Add(*this);
  m_queue.Begin(Sources());
  quor::wire::Ledger ledger = m_queue.WholeLedger();
  ledger.set_forgotten(m_hub.Forgotten(m_only));
  m_connection.Send(FrameType::Ledger, ledger);
}

std::vector<std::shared_ptr<Source>> MonitorStream::Sources() const {
  auto sources = m_hub.Sources();
  if (m_only)
    std::erase_if(sources, [this](const auto& source) { return source->account != m_only; });
  return sources;
}

void MonitorStream::SealNow() {
  m_hub.Seal();
  m_hub.Deliver();
}

void MonitorStream::Pause() {
  // Traces taken until now were taken before the pause.
  SealNow();
  m_queue.Pause();
}

void MonitorStream::Resume() {
  // Traces taken until now came during the pause, and count towards the limit of a pause.
  SealNow();
  m_queue.Resume();
  Pump();
}

void MonitorStream::SetFilter(std::shared_ptr<SourceFilter> filter) {
  // Traces taken until now are those of the filter before.
  SealNow();
  m_filter = std::move(filter);
}

void MonitorStream::OnBatch(const SharedBatch& batch) {
  if (m_only && AccountOf(*batch) != m_only) return;
  SharedBatch passed = m_filter ? m_filter->Of(batch) : batch;
  m_withheld += batch->traces - passed->traces;
  m_queue.Push(std::move(passed));
  Pump();
}

void MonitorStream::PumpUpTo(std::size_t bytes) {
  Outgoing out;
  while (m_connection.IsOpen() && m_connection.QueuedBytes() < bytes && m_queue.Next(out)) {
    // A batch may hold only a count of losses that were reported elsewhere.
    const bool hasData = !out.records->empty();
    if (hasData && !m_connection.SendData(out.names, out.records)) return;
    m_connection.Send(FrameType::Ledger, out.ledger);
  }
}

void MonitorStream::Flush() {
  m_queue.Resume();
  PumpUpTo(16u << 20);
}
