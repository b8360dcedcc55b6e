#include "quor/hub/stream_queue.h"

#include <utility>

namespace {

// A batch also costs its lists of names and sources.
std::size_t Cost(const Batch& batch) {
  return batch.records.size() + batch.names.size() * sizeof(HubNameId) +
         batch.sources.size() * sizeof(SourceDelta) + batch.runs.size() * sizeof(SourceRun) +
         batch.forgotten.size() * sizeof(std::shared_ptr<Source>) + sizeof(Batch);
}

}  // namespace

void StreamQueue::PutLine(const Entry& entry, quor::wire::Ledger::Source* line) {
  line->set_instance(entry.source->instance.data(), entry.source->instance.size());
  line->set_serial(entry.began + entry.delivered + entry.withheld + entry.lost);
  line->set_delivered(entry.delivered);
  line->set_withheld(entry.withheld);
  line->set_lost(entry.lost);
}

void StreamQueue::Begin(const std::vector<std::shared_ptr<Source>>& sources) {
  for (const auto& source : sources)
    m_ledger.insert_or_assign(source.get(), Entry{source, source->serial});
}

StreamQueue::Entry& StreamQueue::EntryOf(const std::shared_ptr<Source>& source) {
  // A source that was not there at the beginning came later, with its first serial.
  return m_ledger.try_emplace(source.get(), Entry{source, source->firstSerial}).first->second;
}

quor::wire::Ledger StreamQueue::WholeLedger() const {
  quor::wire::Ledger ledger;
  for (const auto& [key, entry] : m_ledger) PutLine(entry, ledger.add_sources());
  return ledger;
}

void StreamQueue::Push(SharedBatch batch) {
  m_bytes += Cost(*batch);
  m_traces += batch->traces;
  m_batches.push_back(std::move(batch));
  while (m_batches.size() > 1 &&
         (m_bytes > m_limits.queueBytes || (m_paused && m_traces > m_limits.pausedTraces)))
    DropOldest();
}

void StreamQueue::DropOldest() {
  const SharedBatch oldest = std::move(m_batches.front());
  m_batches.pop_front();
  m_bytes -= Cost(*oldest);
  m_traces -= oldest->traces;
  m_dropped += oldest->traces;
  m_gapReason = m_paused ? "the monitor is paused" : m_limits.tooSlow;
  for (const SourceDelta& delta : oldest->sources)
    m_losses.Add(delta.source, delta.traces + delta.lost, delta.withheld);
  for (const auto& source : oldest->forgotten)
    m_losses.Forget(source, m_ledger.contains(source.get()));
}

SharedBatch StreamQueue::TakeNext() {
  if (!m_again.empty()) {
    SharedBatch first = std::move(m_again.front());
    m_again.pop_front();
    m_traces -= first->traces;
    return first;
  }
  if (!m_losses.IsEmpty()) return m_losses.Take(m_names, m_limits.oneSourceEach, m_gapReason);
  SharedBatch batch = std::move(m_batches.front());
  m_batches.pop_front();
  m_bytes -= Cost(*batch);
  m_traces -= batch->traces;
  return batch;
}

SharedBytes StreamQueue::NamesFor(const Batch& batch) {
  std::vector<std::uint8_t> names;
  for (const HubNameId id : batch.names) {
    if (m_sent.Has(id)) continue;
    m_sent.Add(id);
    m_names.AppendRecord(id, names);
  }
  return names.empty() ? nullptr : ShareBytes(std::move(names));
}

bool StreamQueue::Next(Outgoing& out) {
  if (m_paused || IsEmpty()) return false;
  const SharedBatch batch = TakeNext();
  out.batch = batch;
  out.names = NamesFor(*batch);
  out.records = SharedBytes(batch, &batch->records);
  PutLines(*batch, out.ledger);
  return true;
}

void StreamQueue::PutLines(const Batch& batch, quor::wire::Ledger& ledger) {
  ledger.Clear();
  for (const SourceDelta& delta : batch.sources) {
    Entry& entry = EntryOf(delta.source);
    entry.delivered += delta.traces;
    entry.lost += delta.lost;
    entry.withheld += delta.withheld;
    PutLine(entry, ledger.add_sources());
  }
  for (const auto& source : batch.forgotten) {
    PutLine({source, source->serial}, ledger.add_forgotten_sources());
    m_ledger.erase(source.get());
  }
}

void StreamQueue::Restart(const std::vector<SharedBatch>& again) {
  m_sent.Clear();
  for (auto& [key, entry] : m_ledger) {
    entry.began += entry.delivered + entry.withheld + entry.lost;
    entry.delivered = entry.withheld = entry.lost = 0;
  }
  for (auto batch = again.rbegin(); batch != again.rend(); ++batch) {
    for (const SourceDelta& delta : (*batch)->sources) {
      // A source without an entry was forgotten since: nothing of it waits in the queue.
      const Entry whole{delta.source, delta.source->serial};
      m_ledger.try_emplace(delta.source.get(), whole).first->second.began -=
          delta.traces + delta.withheld + delta.lost;
    }
    m_traces += (*batch)->traces;
    m_again.push_front(*batch);
  }
}
