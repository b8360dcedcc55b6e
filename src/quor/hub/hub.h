// The place where all traces of a machine meet: numbers them, gives their names ids of one space,
// and hands them in batches to every stream.
//
// Shape    "Count" goes up by one with each trace in the order of taking, and skips 0xFFFFFFFF,
//          which losses have. What is taken goes into an open batch; Seal closes it, Deliver hands
//          the closed ones out. Between the two the taker says to the ring what it took, so that a
//          restart of the service loses what was not delivered, counted, and doubles nothing.
// Owner    Streams outlive their entry: Remove before they go. Sources are shared.
// Errors   A record must be whole (IsWholeTrace); ids that its source never named become a name
//          that says so.
// Threads  One.
#pragma once

#include <deque>
#include <functional>
#include <map>

#include "quor/hub/batch.h"

class HubStream {
 public:
  virtual void OnBatch(const SharedBatch& batch) = 0;
  // It was not here before, or has been forgotten.
  virtual void OnSource(const std::shared_ptr<Source>&) {}

 protected:
  ~HubStream() = default;
};

class Hub {
 public:
  // `oneSourceEach`: no batch holds traces of two sources, as forwarding needs it.
  explicit Hub(bool oneSourceEach = false, std::string machine = {})
      : m_machine(std::move(machine)),
        m_builder(m_names, std::make_shared<BatchMemory>()),
        m_oneSourceEach(oneSourceEach) {}
  // Whose monitors all is for; empty: those of this service.
  const std::string& Machine() const { return m_machine; }

  // A source that comes again, over a break or a restart, keeps its instance: it is the same source
  // again, and what it produced meanwhile is lost.
  std::shared_ptr<Source> AddSource(Source source);
  void EndSource(const std::shared_ptr<Source>& source);
  // Those that live, and the last that ended: a monitor that was away then learns how far they
  // came. Of those that are forgotten only the sum of their serials is kept; the streams are told
  // in their order that it took one in.
  std::vector<std::shared_ptr<Source>> Sources() const;
  std::uint64_t Forgotten() const { return m_forgotten; }

  // Takes one raw trace whose ids are the source's own.
  // `learn` is asked once for names that are not known yet; may be empty.
  using Learn = std::function<void()>;
  void Take(const std::shared_ptr<Source>& source, SourceNames& names, Bytes record,
            const Learn& learn);
  // Something was lost here: told in the stream and counted.
  void Lose(const std::shared_ptr<Source>& source, std::uint64_t lost, const std::string& reason);
  // A loss that was told elsewhere: only counted.
  void CountLost(const std::shared_ptr<Source>& source, std::uint64_t lost);

  // Called when the first of a batch comes: it is to be sealed and delivered a little later.
  void OnBatchOpened(std::function<void()> call) { m_onOpened = std::move(call); }
  bool HasOpenBatch() const { return !m_builder.IsEmpty(); }
  bool HasSources() const { return !m_sources.empty(); }  // that have not ended
  void Seal();
  void Deliver();

  // The stream gets what is taken from now on; what was taken before goes to the others.
  void Add(HubStream& stream);
  // With the last stream the names are begun anew.
  void Remove(HubStream& stream);
  bool HasStreams() const { return !m_streams.empty(); }

  HubNames& Names() { return m_names; }
  std::uint64_t Taken() const { return m_taken; }
  void SetNextNumber(std::uint32_t number) { m_number = number; }

 private:
  // Monitors may have heard of a source from an earlier service, and then its serial is no count of
  // what they missed of this one: such sources are kept apart, and longer.
  static constexpr std::size_t kEndedKept = 256, kEarlierKept = 8192;

  std::shared_ptr<Source> Revive(const Source& source);
  std::shared_ptr<Source> TakeEnded(const Source& source);
  void Forget(const std::shared_ptr<Source>& source);
  HubNameId Translate(AppNameId own, SourceNames& names, const Learn& learn);
  const TraceIds& TranslateAll(const std::uint8_t* record, SourceNames& names, const Learn& learn);
  void SealBefore(const std::shared_ptr<Source>& source);
  void Open() {
    if (m_onOpened && m_builder.IsEmpty()) m_onOpened();
  }
  void TellFullNames(const std::shared_ptr<Source>& source);
  std::uint32_t NextNumber();

  const std::string m_machine;
  HubNames m_names;
  BatchBuilder m_builder;
  std::function<void()> m_onOpened;
  const bool m_oneSourceEach;
  std::shared_ptr<Source> m_builderSource;
  std::vector<SharedBatch> m_sealed;
  std::vector<HubStream*> m_streams;
  std::map<std::array<std::uint8_t, 16>, std::shared_ptr<Source>> m_sources;
  std::deque<std::shared_ptr<Source>> m_ended, m_endedEarlier;
  std::uint64_t m_forgotten = 0;
  std::uint32_t m_number = 1;
  std::uint64_t m_taken = 0;
  bool m_toldFull = false;
  // The last translation: an application's traces mostly come from a few places.
  struct {
    std::uint64_t version = 0;
    TraceIdBytes own;
    TraceIds ids{};
  } m_last;
};
