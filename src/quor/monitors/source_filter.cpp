#include "quor/monitors/source_filter.h"

#include <utility>

#include "base/thread_time.h"
#include "quor/hub/batch_records.h"
#include "quor/log/log.h"
#include "records/raw_trace.h"

namespace {

// The clock of the thread is a system call.
constexpr std::size_t kRecordsPerClock = 64;
// A client may hand over one text after the other.
constexpr std::chrono::minutes kReportAgain{10};

bool HasNumber(Bytes record) {
  return RawHubTrace(record.data()).SequenceNumber() != kNoSequenceNumber;
}

}  // namespace

void SourceFilterNames::Learn(const Batch& batch) {
  if (m_generation != m_names.Generation()) {
    Forget();
    m_generation = m_names.Generation();
  }
  for (const HubNameId id : batch.names) {
    if (m_known.Has(id)) continue;
    m_known.Add(id);
    m_map[IdNumber(id)] = {std::string(m_names.Text(id))};
  }
}

void SourceFilterNames::Forget() {
  m_map.clear();
  m_known.Clear();
}

void FilterAccount::ReportBusy(WorkShare::Clock::time_point now) {
  if (m_reportedAt && now - *m_reportedAt < kReportAgain) return;
  m_reportedAt = now;
  Log(LogLevel::Warning, "a filter text of " + m_label +
                             " takes too long: traces that it cannot be asked about are delivered");
}

SourceFilter::SourceFilter(WhereProgramPtr program, FilterMeans& means,
                           std::shared_ptr<FilterAccount> account, std::function<void()> onEnd)
    : m_program(std::move(program)),
      m_means(means),
      m_account(std::move(account)),
      m_onEnd(std::move(onEnd)) {}

SharedBatch SourceFilter::Of(const SharedBatch& batch) {
  if (m_asked != batch) {
    m_answer = Ask(batch);
    m_asked = batch;
  }
  return m_answer;
}

SharedBatch SourceFilter::Ask(const SharedBatch& batch) {
  if (batch->traces == 0) return batch;
  m_means.known.Learn(*batch);
  const auto now = WorkShare::Clock::now();
  const std::int64_t left = std::min(m_account->share.Left(now), m_means.all.Left(now));
  if (left <= 0) {
    m_unasked += batch->traces;
    ReportBusy();
    return batch;
  }
  if (!m_matcher || m_generation != m_means.known.Generation()) {
    m_generation = m_means.known.Generation();
    m_matcher = std::make_unique<WhereMatcher>(m_program, m_means.known.Map());
    m_matcher->Bound(kBounds);
  }
  const std::uint64_t began = ThreadNanoseconds();
  const std::uint64_t withheld = Judge(*batch, began + static_cast<std::uint64_t>(left));
  SharedBatch answer = withheld == 0 ? batch : Rest(*batch);
  const auto worked = static_cast<std::int64_t>(ThreadNanoseconds() - began);
  m_account->share.Worked(worked);
  m_means.all.Worked(worked);
  return answer;
}

std::uint64_t SourceFilter::Judge(const Batch& batch, std::uint64_t endNs) {
  m_matcher->EndSearchesAt(endNs);
  m_passes.clear();
  std::uint64_t withheld = 0;
  bool over = false;
  ForEachRecord(batch, [&](Bytes record) {
    if (m_passes.size() % kRecordsPerClock == kRecordsPerClock - 1 && !over) {
      over = ThreadNanoseconds() >= endNs;
      if (over) ReportBusy();
    }
    const bool hasNumber = HasNumber(record);
    const bool passes = !hasNumber || over || Passes(record.data());
    if (over && hasNumber) ++m_unasked;
    m_passes.push_back(passes);
    withheld += passes ? 0 : 1;
  });
  return withheld;
}

bool SourceFilter::Passes(const std::uint8_t* record) {
  const std::uint64_t before = m_matcher->LimitsReached();
  const bool matches = m_matcher->Matches(record);
  if (m_matcher->LimitsReached() == before) return matches;
  // A verdict that was given up is none: also not for a later trace, if this one passes anyway.
  m_matcher->NamesMayHaveChanged();
  return true;
}

SharedBatch SourceFilter::Rest(const Batch& batch) const {
  BatchBuilder builder(m_means.names);
  std::vector<std::uint64_t> withheld(batch.sources.size());
  SourceOfRecord sources(batch);
  std::size_t place = 0;
  ForEachRecord(batch, [&](Bytes record) {
    const RawHubTrace raw(record.data());
    const bool passes = m_passes[place++];
    const std::size_t source = sources.Next();
    if (passes)
      builder.Append(batch.sources[source].source, record, raw.Ids(), raw.SequenceNumber());
    else
      ++withheld[source];
  });
  for (std::size_t i = 0; i < withheld.size(); ++i) {
    builder.CountLost(batch.sources[i].source, batch.sources[i].lost);
    builder.CountWithheld(batch.sources[i].source, withheld[i]);
  }
  for (const auto& source : batch.forgotten) builder.AppendForgotten(source);
  return builder.Seal();
}
