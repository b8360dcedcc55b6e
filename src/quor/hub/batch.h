// A batch of traces on its way to every monitor. It is built once, shared by reference and never
// changed.
//
//   batches of the hub      [ 1 ]   [ 2 ]   [ 3 ]   [ 4, still open: BatchBuilder ]
//   queue of monitor A                        3     1 and 2 are sent
//   queue of a slow one    losses     2       3     1 was dropped, a batch of losses replaces it
//
// Shape    Tagged trace records end to end, about 64 KiB, with the hub's ids and numbers; the names
//          that they use; the counts of each source, and whose each record is. The name records are
//          not in the batch: each stream adds those that it has not sent yet (StreamQueue).
// Owner    Shared. A batch keeps its sources.
// Threads  One.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "quor/hub/batch_bytes.h"
#include "quor/hub/hub_names.h"
#include "quor/hub/source.h"
#include "quor/protocol/frames.h"
#include "records/raw_trace.h"

struct SourceDelta {
  std::shared_ptr<Source> source;
  std::uint64_t traces = 0, lost = 0;
  std::uint64_t withheld = 0;  // by the filter of the stream that the batch is for
  std::shared_ptr<const void> way = source->way;
};

// So many records, one behind the other, are of sources[source].
struct SourceRun {
  std::uint32_t source, records;
};

struct Batch {
  explicit Batch(std::shared_ptr<BatchMemory> memory) : bytes(std::move(memory)) {}
  BatchBytes bytes;
  Bytes records;  // all records, once the batch is sealed
  std::vector<HubNameId> names;
  std::vector<SourceDelta> sources;
  std::vector<SourceRun> runs;
  std::vector<std::shared_ptr<Source>> forgotten;  // by the hub: no more traces of them will come
  std::uint64_t traces = 0;                        // with a number, so without loss reports
};
using SharedBatch = std::shared_ptr<const Batch>;
// Of a batch that has only sources of one account: see HubBatches.
std::optional<uid_t> AccountOf(const Batch& batch);

using TraceIds = TraceIdsOf<HubNameId>;

class BatchBuilder {
 public:
  // Sources in a batch, including the forgotten ones, because its ledger is one frame.
  static constexpr std::size_t kSourcesMax = 4096;

  // `memory`: for a builder that makes many batches.
  explicit BatchBuilder(HubNames& names, std::shared_ptr<BatchMemory> memory = nullptr);

  bool IsEmpty() const { return m_batch->bytes.Size() == 0 && m_sources == 0; }
  bool IsFull() const { return m_batch->bytes.Size() >= kBatchBytes || m_sources >= kSourcesMax; }
  // Do the batch, this record and any seven names still fit into one data frame?
  bool HasRoom(std::size_t recordBytes, std::size_t nameBytes) const {
    return m_batch->bytes.Size() + m_nameBytes + recordBytes + nameBytes < kFrameRoom;
  }
  std::size_t NameBytes(const TraceIds& ids) const {  // of names that the batch does not use yet
    return m_hasLastIds && ids == m_lastIds ? 0 : NewNameBytes(ids);
  }
  // Appends a raw trace with these ids and this number.
  void Append(const std::shared_ptr<Source>& source, Bytes record, const TraceIds& ids,
              std::uint32_t number);
  // Appends "N traces lost: reason" and counts the loss. With none lost: only the reason.
  void AppendLoss(const std::shared_ptr<Source>& source, std::uint64_t lost,
                  const std::string& reason);
  // Counts a loss that some record reports already.
  void CountLost(const std::shared_ptr<Source>& source, std::uint64_t lost);
  void CountWithheld(const std::shared_ptr<Source>& source, std::uint64_t withheld) {
    DeltaOf(source).withheld += withheld;
  }
  void AppendForgotten(const std::shared_ptr<Source>& source) {
    m_batch->forgotten.push_back(source);
    ++m_sources;
  }
  SharedBatch Seal();

 private:
  static constexpr std::size_t kFrameRoom = kDataFrameBytesMax - 64;
  SourceDelta& DeltaOf(const std::shared_ptr<Source>& source) {
    if (!m_lastDelta || m_lastDelta->source != source) m_lastDelta = &FindDelta(source);
    return *m_lastDelta;
  }
  SourceDelta& FindDelta(const std::shared_ptr<Source>& source);
  void NoteRun(const SourceDelta& delta);
  std::size_t NewNameBytes(const TraceIds& ids) const;
  void Use(const TraceIds& ids);
  void UseName(HubNameId id);

  HubNames& m_names;
  const std::shared_ptr<BatchMemory> m_memory;
  std::shared_ptr<Batch> m_batch;
  IdSet<HubNameId> m_used;
  std::size_t m_nameBytes = 0;
  std::size_t m_sources = 0;           // sources, including the forgotten ones
  SourceDelta* m_lastDelta = nullptr;  // most traces come in runs of one source
  TraceIds m_lastIds{};
  bool m_hasLastIds = false;
};

// Date, time and tic count of now, in the form of a record.
struct ServiceStamp {
  std::uint32_t date, time;
  std::uint64_t ticPs;
};
ServiceStamp StampNow();
