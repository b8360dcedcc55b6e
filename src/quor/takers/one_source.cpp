#include "quor/takers/one_source.h"

#include "quor/hub/batch_records.h"

namespace {

void Append(const SourceDelta& delta, const std::vector<Bytes>& records, BatchBuilder& builder) {
  for (const Bytes record : records) {
    const RawHubTrace raw(record.data());
    builder.Append(delta.source, record, raw.Ids(), raw.SequenceNumber());
  }
  builder.CountLost(delta.source, delta.lost);
}

}  // namespace

std::vector<SharedBatch> OneSource::Of(const SharedBatch& batch) const {
  if (batch->sources.size() <= 1) return {batch};
  std::vector<std::vector<Bytes>> records(batch->sources.size());
  SourceOfRecord sources(*batch);
  ForEachRecord(*batch, [&](Bytes record) { records[sources.Next()].push_back(record); });
  BatchBuilder builder(m_names, m_memory);
  std::vector<SharedBatch> parts;
  for (std::size_t i = 0; i < records.size(); ++i) {
    Append(batch->sources[i], records[i], builder);
    parts.push_back(builder.Seal());
  }
  for (const auto& source : batch->forgotten) builder.AppendForgotten(source);
  if (!builder.IsEmpty()) parts.push_back(builder.Seal());
  return parts;
}
