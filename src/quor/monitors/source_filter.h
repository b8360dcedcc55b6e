// The filter text of one or more monitors of an account: what it lets through of each batch.
//
//   batch of the hub     a b c d e f      shared by all monitors
//   with the filter      b e              "withheld 4", shared by the monitors with this text
//
// Shape    A batch is asked about once, however many monitors have the text. Records without a
//          number, which report losses, always pass. So does what cannot be judged: a text or a
//          search beyond the bounds, and all while the account has used its share of the thread.
// Owner    Shared by its monitors. SourceFilters outlives it.
// Errors   None: in doubt a trace is delivered.
// Threads  The service's one thread.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "quor/hub/batch.h"
#include "quor/monitors/work_share.h"
#include "records/name_map.h"
#include "where/where_matcher.h"

// The names of a hub as the programs ask for them. The ids are the hub's.
class SourceFilterNames {
 public:
  explicit SourceFilterNames(const HubNames& names) : m_names(names) {}
  // Enters those of the batch.
  void Learn(const Batch& batch);
  // Nobody asks any more. REQUIRES: no filter is left.
  void Forget();
  const NameMap& Map() const { return m_map; }
  std::uint32_t Generation() const { return m_generation; }

 private:
  const HubNames& m_names;
  NameMap m_map;
  IdSet<HubNameId> m_known;
  std::uint32_t m_generation = 0;
};

// What all filters share.
struct FilterMeans {
  HubNames& names;
  SourceFilterNames known{names};
  WorkShare all{2}, making{2};
};

// What the filters of an account share.
class FilterAccount {
 public:
  // `label`: "a monitor of account alice"
  explicit FilterAccount(std::string label) : m_label(std::move(label)) {}
  // Says in the log that a text takes too long, and not again for a while.
  void ReportBusy(WorkShare::Clock::time_point now);

  WorkShare share{4};

 private:
  const std::string m_label;
  std::optional<WorkShare::Clock::time_point> m_reportedAt;
};

class SourceFilter {
 public:
  // PCRE2 counts the steps anew at each place of a text: together some milliseconds at most.
  static constexpr WhereBounds kBounds{.steps = 5'000, .textBytes = 1024};

  // `onEnd`: at the end of the last monitor with this text.
  SourceFilter(WhereProgramPtr program, FilterMeans& means, std::shared_ptr<FilterAccount> account,
               std::function<void()> onEnd);
  ~SourceFilter() { m_onEnd(); }
  SourceFilter(const SourceFilter&) = delete;
  SourceFilter& operator=(const SourceFilter&) = delete;

  // What the monitors get instead of the batch.
  SharedBatch Of(const SharedBatch& batch);
  // No more batches come for the moment: a source is under way as long as anything holds a batch.
  void ForgetBatch() { m_asked = m_answer = nullptr; }
  // Traces that passed because there was no time to ask about them.
  std::uint64_t Unasked() const { return m_unasked; }

 private:
  SharedBatch Ask(const SharedBatch& batch);
  // Sets a verdict for each record. Gives how many are withheld.
  std::uint64_t Judge(const Batch& batch, std::uint64_t endNs);
  bool Passes(const std::uint8_t* record);
  SharedBatch Rest(const Batch& batch) const;
  void ReportBusy() const { m_account->ReportBusy(WorkShare::Clock::now()); }

  const WhereProgramPtr m_program;
  FilterMeans& m_means;
  const std::shared_ptr<FilterAccount> m_account;
  const std::function<void()> m_onEnd;
  std::unique_ptr<WhereMatcher> m_matcher;  // of the current generation of names
  std::uint32_t m_generation = 0;
  std::vector<bool> m_passes;  // by record, of the batch that is judged
  SharedBatch m_asked, m_answer;
  std::uint64_t m_unasked = 0;
};
