#include "quor/hub/batch.h"

#include <algorithm>
#include <chrono>
#include <cstring>

#include "records/record_fields.h"

ServiceStamp StampNow() {
  using namespace std::chrono;
  const auto now = floor<milliseconds>(system_clock::now());
  const auto day = floor<days>(now);
  const year_month_day date(day);
  const hh_mm_ss time(now - day);
  const auto tic = duration_cast<nanoseconds>(steady_clock::now().time_since_epoch()).count();
  return {PackDate(static_cast<unsigned>(int{date.year()}), unsigned{date.month()},
                   unsigned{date.day()}),
          PackTime(static_cast<unsigned>(time.hours().count()),
                   static_cast<unsigned>(time.minutes().count()),
                   static_cast<unsigned>(time.seconds().count()),
                   static_cast<unsigned>(time.subseconds().count())),
          static_cast<std::uint64_t>(tic) * 1000};
}

std::optional<uid_t> AccountOf(const Batch& batch) {
  if (!batch.sources.empty()) return batch.sources.front().source->account;
  return batch.forgotten.empty() ? std::nullopt : batch.forgotten.front()->account;
}

BatchBuilder::BatchBuilder(HubNames& names, std::shared_ptr<BatchMemory> memory)
    : m_names(names), m_memory(std::move(memory)), m_batch(std::make_shared<Batch>(m_memory)) {}

void BatchBuilder::Append(const std::shared_ptr<Source>& source, Bytes record, const TraceIds& ids,
                          std::uint32_t number) {
  std::uint8_t* const to = m_batch->bytes.Append(kTagBytes + record.size());
  to[0] = kTagTrace;
  std::uint8_t* const copy = to + kTagBytes;
  std::memcpy(copy, record.data(), record.size());
  StoreBe32(copy + TraceAt::kCount, number);
  StoreIds(copy, ids);
  if (!m_hasLastIds || ids != m_lastIds) Use(ids);
  SourceDelta& delta = DeltaOf(source);
  NoteRun(delta);
  if (number == kNoSequenceNumber) return;
  ++delta.traces;
  ++m_batch->traces;
}

void BatchBuilder::NoteRun(const SourceDelta& delta) {
  const auto place = static_cast<std::uint32_t>(&delta - m_batch->sources.data());
  std::vector<SourceRun>& runs = m_batch->runs;
  if (runs.empty() || runs.back().source != place) runs.push_back({place, 0});
  ++runs.back().records;
}

void BatchBuilder::AppendLoss(const std::shared_ptr<Source>& source, std::uint64_t lost,
                              const std::string& reason) {
  const ServiceStamp now = StampNow();
  RecordFieldsOf<HubNameId> fields;
  fields.count = kNoSequenceNumber;
  fields.date = now.date;
  fields.time = now.time;
  fields.ticCount = now.ticPs;
  fields.attributes = kAttributeWarn;
  const std::string text = lost == 0 ? reason : std::to_string(lost) + " traces lost: " + reason;
  fields.text = text;
  std::vector<std::uint8_t> record;
  MakeRecord(fields, record);
  // The program chooses these two texts, and may choose others as often as it likes.
  const auto share = source->account ? m_names.ShareOf(*source->account) : nullptr;
  const TraceIds ids{m_names.IdOf(source->machine),
                     m_names.IdOf(source->app, share.get()),
                     m_names.IdOf("Quor"),
                     m_names.IdOf("Loss"),
                     m_names.IdOf(source->pid, share.get()),
                     m_names.IdOf(""),
                     m_names.IdOf("")};
  Append(source, record, ids, kNoSequenceNumber);
  CountLost(source, lost);
}

void BatchBuilder::CountLost(const std::shared_ptr<Source>& source, std::uint64_t lost) {
  DeltaOf(source).lost += lost;
}

SharedBatch BatchBuilder::Seal() {
  m_batch->bytes.Fit();
  m_batch->records = m_batch->bytes.View();
  SharedBatch sealed = m_batch;
  for (const HubNameId id : m_batch->names) m_used.Remove(id);
  m_batch = std::make_shared<Batch>(m_memory);
  m_nameBytes = 0;
  m_sources = 0;
  m_lastDelta = nullptr;
  m_hasLastIds = false;
  return sealed;
}

SourceDelta& BatchBuilder::FindDelta(const std::shared_ptr<Source>& source) {
  std::vector<SourceDelta>& deltas = m_batch->sources;
  const auto known = std::find_if(deltas.begin(), deltas.end(),
                                  [&source](const SourceDelta& d) { return d.source == source; });
  if (known != deltas.end()) return *known;
  ++m_sources;
  return deltas.emplace_back(SourceDelta{source});
}

std::size_t BatchBuilder::NewNameBytes(const TraceIds& ids) const {
  std::size_t bytes = 0;
  for (const HubNameId id : ids.All())
    if (!m_used.Has(id)) bytes += m_names.RecordBytes(id);
  return bytes;
}

void BatchBuilder::Use(const TraceIds& ids) {
  m_lastIds = ids;
  m_hasLastIds = true;
  for (const HubNameId id : ids.All()) UseName(id);
}

void BatchBuilder::UseName(HubNameId id) {
  if (m_used.Has(id)) return;
  m_used.Add(id);
  m_batch->names.push_back(id);
  m_nameBytes += m_names.RecordBytes(id);
}
