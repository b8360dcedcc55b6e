#include "quor/hub/batch.h"

#include <algorithm>
#include <chrono>
#include <cstring>

#include "quor/ring/trace_bytes.h"

namespace {

bool Same(const TraceIds& one, const TraceIds& other) {
  static_assert(sizeof(TraceIds) == 14);
  return std::memcmp(&one, &other, sizeof one) == 0;
}

void StoreIds(std::uint8_t* record, const TraceIds& ids, std::uint32_t number) {
  StoreBe32(record, number);
  StoreBe16(record + 4, ids.machine);
  StoreBe16(record + 6, ids.app);
  StoreBe16(record + 8, ids.component);
  StoreBe16(record + 10, ids.category);
  StoreBe16(record + 28, ids.pid);
  StoreBe16(record + 30, ids.tid);
  StoreBe16(record + 34, ids.file);
}

}  // namespace

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

BatchBuilder::BatchBuilder(HubNames& names, std::shared_ptr<BatchMemory> memory)
    : m_names(names), m_memory(std::move(memory)), m_batch(std::make_shared<Batch>(m_memory)) {}

void BatchBuilder::Append(const std::shared_ptr<Source>& source, Bytes record, const TraceIds& ids,
                          std::uint32_t number) {
  std::uint8_t* const to = m_batch->bytes.Append(1 + record.size());
  to[0] = kTagTrace;
  std::memcpy(to + 1, record.data(), record.size());
  StoreIds(to + 1, ids, number);
  if (!m_hasLastIds || !Same(ids, m_lastIds)) Use(ids);
  if (number == kNoSequenceNumber) return;
  ++DeltaOf(source).traces;
  ++m_batch->traces;
}

void BatchBuilder::AppendLoss(const std::shared_ptr<Source>& source, std::uint64_t lost,
                              const std::string& reason) {
  const ServiceStamp now = StampNow();
  RecordFields fields;
  fields.count = kNoSequenceNumber;
  fields.date = now.date;
  fields.time = now.time;
  fields.ticCount = now.ticPs;
  fields.attributes = kAttributeWarn;
  const std::string text = lost == 0 ? reason : std::to_string(lost) + " traces lost: " + reason;
  fields.text = text;
  std::vector<std::uint8_t> record;
  MakeRecord(fields, record);
  const TraceIds ids{m_names.IdOf(source->machine),
                     m_names.IdOf(source->app),
                     m_names.IdOf("Quor"),
                     m_names.IdOf("Loss"),
                     m_names.IdOf(source->pid),
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
  for (const NameId id : m_batch->names) m_used.reset(id);
  m_batch = std::make_shared<Batch>(m_memory);
  m_nameBytes = 0;
  m_lastDelta = 0;
  m_hasLastIds = false;
  return sealed;
}

SourceDelta& BatchBuilder::DeltaOf(const std::shared_ptr<Source>& source) {
  std::vector<SourceDelta>& deltas = m_batch->sources;
  if (m_lastDelta < deltas.size() && deltas[m_lastDelta].source == source)
    return deltas[m_lastDelta];
  const auto known = std::find_if(deltas.begin(), deltas.end(),
                                  [&source](const SourceDelta& d) { return d.source == source; });
  m_lastDelta = static_cast<std::size_t>(known - deltas.begin());
  if (known == deltas.end()) deltas.push_back({source, 0, 0});
  return deltas[m_lastDelta];
}

std::size_t BatchBuilder::NameBytes(const TraceIds& ids) const {
  if (m_hasLastIds && Same(ids, m_lastIds)) return 0;
  std::size_t bytes = 0;
  for (const NameId id :
       {ids.machine, ids.app, ids.component, ids.category, ids.pid, ids.tid, ids.file})
    if (!m_used.test(id)) bytes += m_names.RecordBytes(id);
  return bytes;
}

void BatchBuilder::Use(const TraceIds& ids) {
  m_lastIds = ids;
  m_hasLastIds = true;
  for (const NameId id :
       {ids.machine, ids.app, ids.component, ids.category, ids.pid, ids.tid, ids.file})
    UseName(id);
}

void BatchBuilder::UseName(NameId id) {
  if (m_used.test(id)) return;
  m_used.set(id);
  m_batch->names.push_back(id);
  m_nameBytes += m_names.RecordBytes(id);
}
