// A batch of traces on its way to every monitor: built once, shared by reference, never changed.
//
// Shape    Tagged trace records end to end, about 64 KiB, with the hub's ids and numbers; which
//          names they use; and what each source has in it. The name records themselves are put in
//          front per stream, because each stream has been sent others.
// Owner    Shared. A batch keeps its sources.
// Threads  One.
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "quor/hub/batch_bytes.h"
#include "quor/hub/hub_names.h"
#include "quor/protocol/frames.h"
#include "records/raw_trace.h"

// One instance of an application, here or on a machine that forwards to this one.
struct Source {
  std::array<std::uint8_t, 16> instance{};  // the same over restarts of the service
  std::string machine, app, pid;
  std::uint64_t firstSerial = 0;  // when this service met it, last
  std::uint64_t serial = 0;       // traces that it has ever produced, delivered or lost
  bool ended = false;
  // Shared by all that some stream has still to be given.
  std::shared_ptr<const void> way = std::make_shared<char>();
  bool IsUnderWay() const { return way.use_count() > 1; }
  // Of one that traces to another machine: how many that one is known to have, and who writes that
  // down for a successor of this service.
  std::uint64_t handedOn = 0;
  std::function<void(std::uint64_t)> noteHandedOn;
};

struct SourceDelta {
  std::shared_ptr<Source> source;
  std::uint64_t traces = 0, lost = 0;
  std::shared_ptr<const void> way = source->way;
};

struct Batch {
  explicit Batch(std::shared_ptr<BatchMemory> memory) : bytes(std::move(memory)) {}
  BatchBytes bytes;
  Bytes records;  // all of them, once it is sealed
  std::vector<HubNameId> names;
  std::vector<SourceDelta> sources;
  std::vector<std::shared_ptr<Source>> forgotten;  // by the hub: nothing comes of them any more
  std::uint64_t traces = 0;                        // with a number: not the words on losses
};
using SharedBatch = std::shared_ptr<const Batch>;

using TraceIds = TraceIdsOf<HubNameId>;

class BatchBuilder {
 public:
  // Sources in a batch, those that are forgotten among them: its ledger is one frame.
  static constexpr std::size_t kWordsMax = 4096;

  // `memory`: of one that makes many.
  explicit BatchBuilder(HubNames& names, std::shared_ptr<BatchMemory> memory = nullptr);

  bool IsEmpty() const {
    return m_batch->bytes.Size() == 0 && m_batch->sources.empty() && m_batch->forgotten.empty();
  }
  bool IsFull() const {
    return m_batch->bytes.Size() >= kBatchBytes ||
           m_batch->sources.size() + m_batch->forgotten.size() >= kWordsMax;
  }
  // Would a record of so many bytes with any seven names still make one data frame?
  bool HasRoom(std::size_t recordBytes, std::size_t nameBytes) const {
    return m_batch->bytes.Size() + m_nameBytes + recordBytes + nameBytes < kFrameRoom;
  }
  std::size_t NameBytes(const TraceIds& ids) const;  // of those that the batch has not yet
  // Appends a raw trace with other ids and another number.
  void Append(const std::shared_ptr<Source>& source, Bytes record, const TraceIds& ids,
              std::uint32_t number);
  // "N traces lost: reason", and the count of it. None lost: only the reason.
  void AppendLoss(const std::shared_ptr<Source>& source, std::uint64_t lost,
                  const std::string& reason);
  // A loss that some record tells already.
  void CountLost(const std::shared_ptr<Source>& source, std::uint64_t lost);
  void AppendForgotten(const std::shared_ptr<Source>& source) {
    m_batch->forgotten.push_back(source);
  }
  SharedBatch Seal();

 private:
  static constexpr std::size_t kFrameRoom = kDataFrameBytesMax - 64;
  SourceDelta& DeltaOf(const std::shared_ptr<Source>& source);
  void Use(const TraceIds& ids);
  void UseName(HubNameId id);

  HubNames& m_names;
  const std::shared_ptr<BatchMemory> m_memory;
  std::shared_ptr<Batch> m_batch;
  IdSet<HubNameId> m_used;
  std::size_t m_nameBytes = 0;
  std::size_t m_lastDelta = 0;
  TraceIds m_lastIds{};
  bool m_hasLastIds = false;
};

// Date, time and tic count of now, as a record has them.
struct ServiceStamp {
  std::uint32_t date, time;
  std::uint64_t ticPs;
};
ServiceStamp StampNow();
