// The point where all traces of a machine meet. It numbers them, gives their names ids of one
// space, and passes them in batches to every stream.
//
// Shape    "Count" goes up by one with each trace, in the order of Take, and skips 0xFFFFFFFF,
//          which loss reports have. Traces go into an open batch. Seal closes it, Deliver passes
//          closed batches to the streams. Between the two the caller tells the ring what it took.
//          So a restart of the service loses what was not delivered, counted, and repeats nothing.
// Owner    Streams must be removed (Remove) before they are destroyed. Sources are shared.
// Errors   A record must be whole (IsWholeTrace). An id that its source never named gets a name
//          that says so.
// Threads  One.
#pragma once

#include <functional>
#include <map>

#include "quor/hub/batch.h"
#include "quor/hub/ended_sources.h"

class HubStream {
 public:
  virtual void OnBatch(const SharedBatch& batch) = 0;
  virtual void OnDelivered() {}  // all sealed batches have come
  // The source is new, or it had been forgotten.
  virtual void OnSource(const std::shared_ptr<Source>&) {}

 protected:
  ~HubStream() = default;
};

// OfOneSource: no batch holds traces of two sources, as forwarding needs it. OfOneAccount: none
// holds anything of two accounts, so that a stream of one account leaves out whole batches.
enum class HubBatches { Mixed, OfOneSource, OfOneAccount };

class Hub {
 public:
  explicit Hub(HubBatches batches = HubBatches::Mixed, std::string machine = {})
      : m_machine(std::move(machine)),
        m_builder(m_names, std::make_shared<BatchMemory>()),
        m_batches(batches) {}
  // The machine whose monitors the hub serves; empty: the monitors of this service.
  const std::string& Machine() const { return m_machine; }

  // A source that comes again, after a break or a restart, keeps its instance: it is the same
  // source, and its traces of the meantime count as lost.
  std::shared_ptr<Source> AddSource(Source source);
  void EndSource(const std::shared_ptr<Source>& source);
  // The live sources, and the last that ended, so that a monitor that was away learns their counts.
  // Of forgotten sources only the sum of their serials is kept; every stream receives, in order,
  // the news that a source was added to that sum.
  std::vector<std::shared_ptr<Source>> Sources() const;
  std::uint64_t Forgotten(std::optional<uid_t> ofAccount = {}) const {
    return m_ended.Forgotten(ofAccount);
  }

  // Takes one raw trace whose ids are the source's own. Calls `learn`, if there is one, once for
  // names that are not known yet.
  using Learn = std::function<void()>;
  void Take(const std::shared_ptr<Source>& source, SourceNames& names, Bytes record,
            const Learn& learn);
  // Traces were lost here: reports the loss in the stream and counts it.
  void Lose(const std::shared_ptr<Source>& source, std::uint64_t lost, const std::string& reason);
  // Counts a loss that is reported elsewhere.
  void CountLost(const std::shared_ptr<Source>& source, std::uint64_t lost);

  // `call` is called for the first trace of a batch. It should seal and deliver a little later.
  void OnBatchOpened(std::function<void()> call) { m_onOpened = std::move(call); }
  bool HasOpenBatch() const { return !m_builder.IsEmpty(); }
  bool HasSources() const { return !m_sources.empty(); }  // that have not ended
  void Seal();
  void Deliver();
  // The stream gets what is taken from now on. What was taken before goes to the other streams.
  void Add(HubStream& stream);
  // When the last stream is removed, the names are cleared.
  void Remove(HubStream& stream);
  bool HasOthers(const HubStream& than) const;

  HubNames& Names() { return m_names; }
  std::uint64_t Taken() const { return m_taken; }
  std::uint64_t Lost() const { return m_lost; }
  void SetNextNumber(std::uint32_t number) { m_number = number; }

 private:
  bool IsAnothers(const Source& source) const;
  std::shared_ptr<Source> Revive(const Source& source);
  void Forget(const std::shared_ptr<Source>& source);
  HubNameId Translate(AppNameId own, SourceNames& names, const Learn& learn);
  HubNameId TranslatePid(AppNameId own, SourceNames& names, const Learn& learn);
  const TraceIds& TranslateAll(const std::uint8_t* record, SourceNames& names, const Learn& learn);
  // Ends the open batch if this source must not be in it.
  void SealBefore(const std::shared_ptr<Source>& source) {
    if (m_batches != HubBatches::Mixed && m_builderSource != source) SealForSource(source);
  }
  void SealForSource(const std::shared_ptr<Source>& source);
  void Open() {
    if (m_onOpened && m_builder.IsEmpty()) m_onOpened();
  }
  void ReportFullNames(const std::shared_ptr<Source>& source);
  std::uint32_t NextNumber();

  const std::string m_machine;
  HubNames m_names;
  BatchBuilder m_builder;
  std::function<void()> m_onOpened;
  const HubBatches m_batches;
  std::shared_ptr<Source> m_builderSource;
  std::vector<SharedBatch> m_sealed;
  std::vector<HubStream*> m_streams;
  std::map<std::array<std::uint8_t, 16>, std::shared_ptr<Source>> m_sources;
  EndedSources m_ended;
  std::uint32_t m_number = 1;
  std::uint64_t m_taken = 0, m_lost = 0;
  bool m_reportedFull = false;
  // The last translation: an application traces mostly from a few points.
  struct {
    std::uint64_t version = 0;
    TraceIdBytes own;
    TraceIds ids{};
  } m_last;
};
